#include <vorl/reading/unpack.hpp>

#include "system_library.hpp"

#include <vorl/reading/input_error.hpp>
#include <vorl/reading/wording.hpp>

#include <algorithm>
#include <bit>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace vorl {

namespace {

constexpr std::size_t BLOCK = 1 << 18;

InputError damaged(const std::string& file, const char* packing, const std::string& what) {
    return InputError(
        InputError::Parts{.file = file, .wrong = std::string("the ") + packing + " data " + what});
}

/// What is read in front of an unpacker.
class PackedBlock {
public:
    explicit PackedBlock(std::unique_ptr<Source> source)
        : m_source(std::move(source)), m_block(std::make_unique<char[]>(BLOCK)) {}

    /// What is left of the block, a further one if there is nothing left; empty at the end.
    std::string_view rest() {
        if (m_rest.empty()) m_rest = {m_block.get(), m_source->read(m_block.get(), BLOCK)};
        return m_rest;
    }
    void take(std::size_t count) { m_rest.remove_prefix(count); }

private:
    std::unique_ptr<Source> m_source;
    std::unique_ptr<char[]> m_block;
    std::string_view m_rest;
};

#ifdef ZLIB_VERSION
struct Zlib {
    SystemLibrary library{"libz.so.1"};
    decltype(inflateInit2_)* init = library.function<decltype(inflateInit2_)>("inflateInit2_");
    decltype(inflateReset)* reset = library.function<decltype(inflateReset)>("inflateReset");
    decltype(inflate)* run = library.function<decltype(inflate)>("inflate");
    decltype(inflateEnd)* end = library.function<decltype(inflateEnd)>("inflateEnd");
};

class GzipSource : public Source {
public:
    GzipSource(std::unique_ptr<Source> packed, const std::string& file)
        : m_file(file),
          m_zlib(loadedFor<Zlib>(file, "gzip", "unpacked")),
          m_packed(std::move(packed)) {
        constexpr int gzipWindow = 15 + 16;
        if (m_zlib.init(&m_stream, gzipWindow, ZLIB_VERSION, sizeof m_stream) != Z_OK)
            throw std::bad_alloc();
    }
    ~GzipSource() override { m_zlib.end(&m_stream); }

    std::size_t read(char* data, std::size_t most) override {
        const auto room =
            static_cast<uInt>(std::min<std::size_t>(most, std::numeric_limits<uInt>::max()));
        m_stream.next_out = reinterpret_cast<Bytef*>(data);
        m_stream.avail_out = room;
        while (m_stream.avail_out == room && (!m_complete || nextMember())) inflate();
        return room - m_stream.avail_out;
    }

private:
    /// Goes to a further member, if one follows. Zeros may follow instead that fill up a block.
    bool nextMember() {
        bool zeros = false;
        while (!m_packed.rest().empty() && m_packed.rest().front() == '\0') {
            zeros = true;
            m_packed.take(
                std::min(m_packed.rest().find_first_not_of('\0'), m_packed.rest().size()));
        }
        if (m_packed.rest().empty()) return false;
        if (zeros) throw damaged(m_file, "gzip", "is damaged: incorrect header check");
        if (m_zlib.reset(&m_stream) != Z_OK) throw std::bad_alloc();
        m_complete = false;
        return true;
    }

    void inflate() {
        const std::string_view rest = m_packed.rest();
        if (rest.empty()) throw damaged(m_file, "gzip", "ends early");
        m_stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(rest.data()));
        m_stream.avail_in = static_cast<uInt>(rest.size());
        const int result = m_zlib.run(&m_stream, Z_NO_FLUSH);
        m_packed.take(rest.size() - m_stream.avail_in);
        if (result == Z_STREAM_END)
            m_complete = true;
        else if (result == Z_MEM_ERROR)
            throw std::bad_alloc();
        else if (result != Z_OK)
            throw damaged(
                m_file, "gzip",
                std::string("is damaged: ") + (m_stream.msg ? m_stream.msg : "unreadable"));
    }

    std::string m_file;
    const Zlib& m_zlib;
    PackedBlock m_packed;
    z_stream m_stream{};
    bool m_complete = false;  // the member is at its end
};

std::unique_ptr<Source> unpackGzip(std::unique_ptr<Source> packed, const std::string& file) {
    return std::make_unique<GzipSource>(std::move(packed), file);
}

#else
std::unique_ptr<Source> unpackGzip(std::unique_ptr<Source>, const std::string& file) {
    throw lackOf(file, "gzip", "unpacked", "the library was built without zlib");
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

class ZstdSource : public Source {
public:
    ZstdSource(std::unique_ptr<Source> packed, const std::string& file, std::size_t most)
        : m_file(file),
          m_zstd(loadedFor<Zstd>(file, "zstd", "unpacked")),
          m_packed(std::move(packed)),
          m_stream(m_zstd.create(), m_zstd.end) {
        if (!m_stream) throw std::bad_alloc();
        constexpr int windowMin = 27;
        constexpr int windowMax = 31;
        m_window = std::clamp(static_cast<int>(std::bit_width(most)) - 1, windowMin, windowMax);
        m_zstd.set(m_stream.get(), ZSTD_d_windowLogMax, m_window);
    }

    std::size_t read(char* data, std::size_t most) override {
        ZSTD_outBuffer out{data, most, 0};
        while (out.pos == 0) {
            const std::string_view rest = m_packed.rest();
            if (rest.empty() && m_wanted == 0) break;
            ZSTD_inBuffer in{rest.data(), rest.size(), 0};
            m_wanted = m_zstd.run(m_stream.get(), &out, &in);
            if (m_zstd.isError(m_wanted)) fail();
            m_packed.take(in.pos);
            if (rest.empty() && m_wanted != 0 && out.pos == 0)
                throw damaged(m_file, "zstd", "ends early");
        }
        return out.pos;
    }

private:
    [[noreturn]] void fail() const {
        if (m_zstd.errorCode(m_wanted) == ZSTD_error_memory_allocation) throw std::bad_alloc();
        if (m_zstd.errorCode(m_wanted) == ZSTD_error_frameParameter_windowTooLarge)
            throw damaged(m_file, "zstd",
                          "needs a window of more than " + bytes(Size{1} << m_window) +
                              ", which is too much here");
        throw damaged(m_file, "zstd", std::string("is damaged: ") + m_zstd.errorName(m_wanted));
    }

    std::string m_file;
    const Zstd& m_zstd;
    PackedBlock m_packed;
    std::unique_ptr<ZSTD_DStream, std::size_t (*)(ZSTD_DStream*)> m_stream;
    int m_window;
    std::size_t m_wanted = 1;  // 0 at the end of a frame
};

std::unique_ptr<Source> unpackZstd(std::unique_ptr<Source> packed, const std::string& file,
                                   std::size_t most) {
    return std::make_unique<ZstdSource>(std::move(packed), file, most);
}
#else
std::unique_ptr<Source> unpackZstd(std::unique_ptr<Source>, const std::string& file, std::size_t) {
    throw lackOf(file, "zstd", "unpacked", "the library was built without zstd");
}
#endif

}  // namespace

Packing packingOf(std::string_view head) {
    if (head.starts_with("\x1F\x8B")) return Packing::GZIP;
    if (head.starts_with("\x28\xB5\x2F\xFD")) return Packing::ZSTD;
    return Packing::NONE;
}

std::unique_ptr<Source> unpacked(std::unique_ptr<Source> packed, Packing packing,
                                 const std::string& file, std::size_t most) {
    switch (packing) {
        case Packing::GZIP: return unpackGzip(std::move(packed), file);
        case Packing::ZSTD: return unpackZstd(std::move(packed), file, most);
        case Packing::NONE: break;
    }
    return packed;
}

}  // namespace vorl
