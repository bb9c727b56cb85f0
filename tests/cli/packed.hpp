/// @file
/// Compresses texts.
#pragma once

#include <zlib.h>
#include <zstd.h>
#include <stdexcept>
#include <string>

namespace vorl::test {

inline std::string gzip(const std::string& text) {
    z_stream stream{};
    constexpr int gzipWindow = 15 + 16;
    if (deflateInit2(&stream, 9, Z_DEFLATED, gzipWindow, 9, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::runtime_error("deflateInit2");
    std::string packed(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    const int result = deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    if (result != Z_STREAM_END) throw std::runtime_error("deflate");
    return packed;
}

/// With a checksum at its end.
inline std::string zstd(const std::string& text) {
    ZSTD_CCtx* const context = ZSTD_createCCtx();
    ZSTD_CCtx_setParameter(context, ZSTD_c_checksumFlag, 1);
    std::string packed(ZSTD_compressBound(text.size()), '\0');
    const std::size_t size =
        ZSTD_compress2(context, packed.data(), packed.size(), text.data(), text.size());
    ZSTD_freeCCtx(context);
    if (ZSTD_isError(size)) throw std::runtime_error("ZSTD_compress2");
    packed.resize(size);
    return packed;
}

}  // namespace vorl::test
