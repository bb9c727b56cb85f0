#include "unpack.hpp"

#include "errors.hpp"
#include "output_text.hpp"

#include <zlib.h>
#include <zstd.h>
#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace vorl::app {

namespace {

constexpr std::size_t BLOCK = 1 << 18;

InputError damaged(const std::string& file, const char* packing, const std::string& what) {
    return InputError(file + ": the " + packing + " data " + what);
}

/// Gathers the unpacked text.
class Gatherer {
public:
    Gatherer(const std::string& file, const char* packing, std::size_t most)
        : m_file(file), m_packing(packing), m_most(most) {}

    void append(const char* data, std::size_t size) {
        if (size > m_most - m_text.size())
            throw damaged(m_file, m_packing,
                          "unpacks to more than " + bytes(m_most) + ", which is too much here");
        m_text.append(data, size);
    }
    std::string take() { return std::move(m_text); }

private:
    const std::string& m_file;
    const char* m_packing;
    std::size_t m_most;
    std::string m_text;
};

std::string unpackGzip(std::string_view data, const std::string& file, std::size_t most) {
    z_stream stream{};
    constexpr int gzipWindow = 15 + 16;
    if (inflateInit2(&stream, gzipWindow) != Z_OK) throw std::bad_alloc();
    const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&stream, inflateEnd);
    const auto block = std::make_unique<Bytef[]>(BLOCK);
    Gatherer text(file, "gzip", most);
    bool complete = false;
    while (!complete || !data.empty()) {
        // A further member follows.
        if (complete && inflateReset(&stream) != Z_OK) throw std::bad_alloc();
        complete = false;
        const std::size_t piece =
            std::min<std::size_t>(data.size(), std::numeric_limits<uInt>::max());
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
        stream.avail_in = static_cast<uInt>(piece);
        stream.next_out = block.get();
        stream.avail_out = BLOCK;
        const int result = inflate(&stream, Z_NO_FLUSH);
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

std::string unpackZstd(std::string_view data, const std::string& file, std::size_t most) {
    const std::unique_ptr<ZSTD_DStream, std::size_t (*)(ZSTD_DStream*)> stream(ZSTD_createDStream(),
                                                                               ZSTD_freeDStream);
    if (!stream) throw std::bad_alloc();
    const auto block = std::make_unique<char[]>(BLOCK);
    Gatherer text(file, "zstd", most);
    ZSTD_inBuffer in{data.data(), data.size(), 0};
    std::size_t rest = 1;
    while (in.pos < in.size || rest != 0) {
        ZSTD_outBuffer out{block.get(), BLOCK, 0};
        const std::size_t before = in.pos;
        rest = ZSTD_decompressStream(stream.get(), &out, &in);
        if (ZSTD_isError(rest))
            throw damaged(file, "zstd", std::string("is damaged: ") + ZSTD_getErrorName(rest));
        text.append(block.get(), out.pos);
        if (rest != 0 && in.pos == before && out.pos == 0)
            throw damaged(file, "zstd", "ends early");
    }
    return text.take();
}

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

}  // namespace vorl::app
