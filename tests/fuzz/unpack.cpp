// Arbitrary bytes as compressed data: they unpack to no more than what is allowed, or are refused.
#include <vorl/reading/input_error.hpp>
#include <vorl/reading/unpack.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vorl;
    constexpr std::size_t most = 1 << 20;
    const std::string_view packed(reinterpret_cast<const char*>(data), size);
    const auto unpacked = [&](Packing packing) {
        try {
            if (unpack(packed, packing, "fuzz", most).size() > most) {
                std::fprintf(stderr, "more than %zu bytes\n", most);
                std::abort();
            }
        } catch (const InputError&) {
        }
    };
    // Nothing hangs on the first bytes, which the reader looks at before.
    unpacked(Packing::GZIP);
    unpacked(Packing::ZSTD);
    static_cast<void>(packingOf(packed));
    return 0;
}
