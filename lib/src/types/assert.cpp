#include <vorl/types/assert.hpp>

#include <cstdio>
#include <cstdlib>

namespace vorl {

void assertionFailed(const char* condition, const char* text, const char* file, int line) noexcept {
    std::fprintf(stderr, "%s:%d: %s [%s]\n", file, line, text, condition);
    std::abort();
}

}  // namespace vorl
