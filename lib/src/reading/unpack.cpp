#include <vorl/reading/unpack.hpp>

#include "space.hpp"

#include <vorl/reading/input_error.hpp>
#include <vorl/reading/wording.hpp>
#include <vorl/types/progress.hpp>

#include <dlfcn.h>
#include <algorithm>
#include <bit>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>
#if __has_include(<zlib.h>)
#include <zlib.h>
#endif
#if __has_include(<zstd.h>)
#include <zstd.h>
#include <zstd_errors.h>
#endif

namespace vorl {

namespace {

constexpr std::size_t BLOCK = 1 << 18;

InputError damaged(const std::string& file, const char* packing, const std::string& what) {
    return InputError(file + ": the " + packing + " data " + what);
}

/// Gathers the unpacked text.
class Gatherer {
public:
    Gatherer(const std::string& file, const char* packing, std::size_t most)
        : m_file(file), m_packing(packing), m_most(most) {
        reserveSpace(m_text, most);
    }

    void append(const char* data, std::size_t size) {
        if (size > m_most - m_text.size())
            throw MemoryLimitError(m_file + ": the " + m_packing + " data unpacks to more than " +
                                   bytes(m_most) + ", which is too much here");
        m_text.append(data, size);
    }
    std::string take() { return std::move(m_text); }

private:
    const std::string& m_file;
    const char* m_packing;
    std::size_t m_most;
    std::string m_text;
};

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

InputError missing(const std::string& file, const char* packing, const std::string& what) {
    return InputError(file + ": " + packing + " data can't be unpacked here, " + what);
}

template <class LibraryT>
const LibraryT& loaded(const std::string& file, const char* packing) {
    try {
        static const LibraryT library;
        return library;
    } catch (const std::runtime_error& err) {
        throw missing(file, packing, err.what());
    }
}

#ifdef ZLIB_VERSION
struct Zlib {
    SystemLibrary library{"libz.so.1"};
    decltype(inflateInit2_)* init = library.function<decltype(inflateInit2_)>("inflateInit2_");
    decltype(inflateReset)* reset = library.function<decltype(inflateReset)>("inflateReset");
    decltype(inflate)* run = library.function<decltype(inflate)>("inflate");
    decltype(inflateEnd)* end = library.function<decltype(inflateEnd)>("inflateEnd");
};

std::string unpackGzip(std::string_view data, const std::string& file, std::size_t most) {
    const Zlib& zlib = loaded<Zlib>(file, "gzip");
    z_stream stream{};
    constexpr int gzipWindow = 15 + 16;
    if (zlib.init(&stream, gzipWindow, ZLIB_VERSION, sizeof stream) != Z_OK) throw std::bad_alloc();
    const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&stream, zlib.end);
    const auto block = std::make_unique<Bytef[]>(BLOCK);
    Gatherer text(file, "gzip", most);
    const ProgressReporter report;
    report.begin("unpacking", data.size());
    bool complete = false;
    while (!complete || !data.empty()) {
        // Zeros may follow that fill up a block.
        if (complete && data.find_first_not_of('\0') == std::string_view::npos) break;
        // A further member follows.
        if (complete && zlib.reset(&stream) != Z_OK) throw std::bad_alloc();
        complete = false;
        const std::size_t piece =
            std::min<std::size_t>(data.size(), std::numeric_limits<uInt>::max());
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
        stream.avail_in = static_cast<uInt>(piece);
        stream.next_out = block.get();
        stream.avail_out = BLOCK;
        const int result = zlib.run(&stream, Z_NO_FLUSH);
        report.advance(piece - stream.avail_in);
        data.remove_prefix(piece - stream.avail_in);
        text.append(reinterpret_cast<const char*>(block.get()), BLOCK - stream.avail_out);
        if (result == Z_STREAM_END)
            complete = true;
        else if (result == Z_BUF_ERROR)
            throw damaged(file, "gzip", "ends early");
        else if (result == Z_MEM_ERROR)
            throw std::bad_alloc();
        else if (result != Z_OK)
            throw damaged(file, "gzip",
                          std::string("is damaged: ") + (stream.msg ? stream.msg : "unreadable"));
    }
    return text.take();
}

#else
std::string unpackGzip(std::string_view, const std::string& file, std::size_t) {
    throw missing(file, "gzip", "the library was built without zlib");
}
#endif

#ifdef ZSTD_VERSION_NUMBER
struct Zstd {
    SystemLibrary library{"libzstd.so.1"};
    decltype(ZSTD_createDStream)* create =
        library.function<decltype(ZSTD_createDStream)>("ZSTD_createDStream");
    decltype(ZSTD_decompressStream)* run =
        library.function<decltype(ZSTD_decompressStream)>("ZSTD_decompressStream");
    decltype(ZSTD_freeDStream)* end =
        library.function<decltype(ZSTD_freeDStream)>("ZSTD_freeDStream");
    decltype(ZSTD_isError)* isError = library.function<decltype(ZSTD_isError)>("ZSTD_isError");
    decltype(ZSTD_DCtx_setParameter)* set =
        library.function<decltype(ZSTD_DCtx_setParameter)>("ZSTD_DCtx_setParameter");
    decltype(ZSTD_getErrorCode)* errorCode =
        library.function<decltype(ZSTD_getErrorCode)>("ZSTD_getErrorCode");
    decltype(ZSTD_getErrorName)* errorName =
        library.function<decltype(ZSTD_getErrorName)>("ZSTD_getErrorName");
};

std::string unpackZstd(std::string_view data, const std::string& file, std::size_t most) {
    const Zstd& zstd = loaded<Zstd>(file, "zstd");
    const std::unique_ptr<ZSTD_DStream, std::size_t (*)(ZSTD_DStream*)> stream(zstd.create(),
                                                                               zstd.end);
    if (!stream) throw std::bad_alloc();
    // The window that a file asks for is in memory beside the text.
    constexpr int windowMin = 27;
    constexpr int windowMax = 31;
    const int window = std::clamp(static_cast<int>(std::bit_width(most)) - 1, windowMin, windowMax);
    zstd.set(stream.get(), ZSTD_d_windowLogMax, window);
    const auto block = std::make_unique<char[]>(BLOCK);
    Gatherer text(file, "zstd", most);
    ZSTD_inBuffer in{data.data(), data.size(), 0};
    const ProgressReporter report;
    report.begin("unpacking", data.size());
    std::size_t rest = 1;
    while (in.pos < in.size || rest != 0) {
        ZSTD_outBuffer out{block.get(), BLOCK, 0};
        const std::size_t before = in.pos;
        rest = zstd.run(stream.get(), &out, &in);
        if (zstd.isError(rest) && zstd.errorCode(rest) == ZSTD_error_memory_allocation)
            throw std::bad_alloc();
        if (zstd.isError(rest) && zstd.errorCode(rest) == ZSTD_error_frameParameter_windowTooLarge)
            throw damaged(file, "zstd",
                          "needs a window of more than " + bytes(Size{1} << window) +
                              ", which is too much here");
        if (zstd.isError(rest))
            throw damaged(file, "zstd", std::string("is damaged: ") + zstd.errorName(rest));
        report.advance(in.pos - before);
        text.append(block.get(), out.pos);
        if (rest != 0 && in.pos == before && out.pos == 0)
            throw damaged(file, "zstd", "ends early");
    }
    return text.take();
}
#else
std::string unpackZstd(std::string_view, const std::string& file, std::size_t) {
    throw missing(file, "zstd", "the library was built without zstd");
}
#endif

}  // namespace

Packing packingOf(std::string_view data) {
    if (data.starts_with("\x1F\x8B")) return Packing::GZIP;
    if (data.starts_with("\x28\xB5\x2F\xFD")) return Packing::ZSTD;
    return Packing::NONE;
}

std::string unpack(std::string_view data, Packing packing, const std::string& file,
                   std::size_t most) {
    switch (packing) {
        case Packing::GZIP: return unpackGzip(data, file, most);
        case Packing::ZSTD: return unpackZstd(data, file, most);
        case Packing::NONE: break;
    }
    return std::string(data);
}

}  // namespace vorl
