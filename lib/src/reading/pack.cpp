#include <vorl/reading/pack.hpp>

#include "system_library.hpp"

#include <limits>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace vorl {

namespace {

constexpr std::string_view GZIP = ".gz";
constexpr std::string_view ZSTD = ".zst";

#ifdef ZLIB_VERSION
struct Deflate {
    SystemLibrary library{"libz.so.1"};
    decltype(deflateInit2_)* init = library.function<decltype(deflateInit2_)>("deflateInit2_");
    decltype(deflate)* run = library.function<decltype(deflate)>("deflate");
    decltype(deflateEnd)* end = library.function<decltype(deflateEnd)>("deflateEnd");
};

std::string gzipped(std::string_view text, const std::string& file) {
    const Deflate& zlib = loadedFor<Deflate>(file, "gzip", "packed");
    z_stream stream{};
    constexpr int window = 15 + 16;  // of gzip, whose header has no time
    constexpr int memory = 8;
    if (zlib.init(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, window, memory, Z_DEFAULT_STRATEGY,
                  ZLIB_VERSION, sizeof stream) != Z_OK)
        throw std::bad_alloc();
    const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&stream, zlib.end);
    constexpr std::size_t block = 1 << 18;
    std::string result;
    int state = Z_OK;
    while (state != Z_STREAM_END) {
        if (stream.avail_in == 0) {
            const std::string_view piece = text.substr(0, std::numeric_limits<uInt>::max());
            stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
            stream.avail_in = static_cast<uInt>(piece.size());
            text.remove_prefix(piece.size());
        }
        const std::size_t size = result.size();
        result.resize(size + block);
        stream.next_out = reinterpret_cast<Bytef*>(result.data() + size);
        stream.avail_out = block;
        state = zlib.run(&stream, text.empty() ? Z_FINISH : Z_NO_FLUSH);
        if (state == Z_STREAM_ERROR) throw std::bad_alloc();
        result.resize(size + block - stream.avail_out);
    }
    return result;
}
#else
std::string gzipped(std::string_view, const std::string& file) {
    throw lackOf(file, "gzip", "packed", "the library was built without zlib");
}
#endif

#ifdef ZSTD_VERSION_NUMBER
struct Compress {
    SystemLibrary library{"libzstd.so.1"};
    decltype(ZSTD_compressBound)* bound =
        library.function<decltype(ZSTD_compressBound)>("ZSTD_compressBound");
    decltype(ZSTD_compress)* run = library.function<decltype(ZSTD_compress)>("ZSTD_compress");
    decltype(ZSTD_isError)* isError = library.function<decltype(ZSTD_isError)>("ZSTD_isError");
};

std::string zstandard(std::string_view text, const std::string& file) {
    const Compress& zstd = loadedFor<Compress>(file, "zstd", "packed");
    constexpr int level = 3;  // that of the zstd program
    std::string result(zstd.bound(text.size()), '\0');
    const std::size_t size =
        zstd.run(result.data(), result.size(), text.data(), text.size(), level);
    if (zstd.isError(size)) throw std::bad_alloc();
    result.resize(size);
    return result;
}
#else
std::string zstandard(std::string_view, const std::string& file) {
    throw lackOf(file, "zstd", "packed", "the library was built without zstd");
}
#endif

}  // namespace

bool asksForPacking(const std::string& file) {
    return file.ends_with(GZIP) || file.ends_with(ZSTD);
}

std::string plainName(const std::string& file) {
    return asksForPacking(file) ? file.substr(0, file.rfind('.')) : file;
}

std::string packed(std::string text, const std::string& file) {
    if (file.ends_with(GZIP)) return gzipped(text, file);
    if (file.ends_with(ZSTD)) return zstandard(text, file);
    return text;
}

}  // namespace vorl
