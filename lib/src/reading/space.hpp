// Room for texts whose size isn't known beforehand.
#pragma once

#include <new>
#include <string>

namespace vorl {

/// Reserves addresses for the most that a text may become, so that it never moves while it grows.
/// The system gives memory only to what is written.
inline void reserveSpace(std::string& text, std::size_t most) {
    try {
        text.reserve(most);
    } catch (const std::bad_alloc&) {
        // It moves, then.
    }
}

}  // namespace vorl
