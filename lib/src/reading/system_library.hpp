// Libraries of the system, which are loaded when they are needed.
#pragma once

#include <vorl/reading/input_error.hpp>

#include <dlfcn.h>
#include <stdexcept>
#include <string>
#if __has_include(<zlib.h>)
#include <zlib.h>
#endif
#if __has_include(<zstd.h>)
#include <zstd.h>
#include <zstd_errors.h>
#endif

namespace vorl {

/// A library of the system. It is loaded when a file first asks for it, so that whoever links this
/// library needs no other one.
class SystemLibrary {
public:
    explicit SystemLibrary(const char* name) : m_library(dlopen(name, RTLD_NOW | RTLD_LOCAL)) {
        if (!m_library) throw std::runtime_error(dlerror());
    }

    template <class FunctionT>
    FunctionT* function(const char* name) const {
        void* const address = dlsym(m_library, name);
        if (!address) throw std::runtime_error(dlerror());
        return reinterpret_cast<FunctionT*>(address);
    }

private:
    void* m_library;
};

/// That data can't be worked on for the lack of a library.
inline InputError lackOf(const std::string& file, const char* kind, const char* done,
                         const std::string& what) {
    return InputError(InputError::Parts{
        .file = file, .wrong = std::string(kind) + " data can't be " + done + " here, " + what});
}

/// The functions of a library, all of one process.
/// @param kind of the data, such as "gzip"
/// @param done  such as "unpacked"
/// @throws InputError if the system hasn't got it
template <class LibraryT>
const LibraryT& loadedFor(const std::string& file, const char* kind, const char* done) {
    try {
        static const LibraryT library;
        return library;
    } catch (const std::runtime_error& err) {
        throw lackOf(file, kind, done, err.what());
    }
}

}  // namespace vorl
