// Arbitrary bytes as compressed data: they unpack piece by piece, or are refused.
#include <vorl/reading/input_error.hpp>
#include <vorl/reading/unpack.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vorl;
    constexpr std::size_t most = 1 << 20;
    const std::string_view packed(reinterpret_cast<const char*>(data), size);
    const auto unpack = [&](Packing packing) {
        try {
            const auto source =
                unpacked(std::make_unique<TextSource>(packed), packing, "fuzz", most);
            char block[1000];
            std::size_t left = most;
            while (left != 0) {
                const std::size_t count = source->read(block, std::min(left, sizeof block));
                if (count > std::min(left, sizeof block)) {
                    std::fprintf(stderr, "more than was asked for\n");
                    std::abort();
                }
                if (count == 0) break;
                left -= count;
            }
        } catch (const InputError&) {
        }
    };
    // Nothing hangs on the first bytes, which the reader looks at before.
    unpack(Packing::GZIP);
    unpack(Packing::ZSTD);
    static_cast<void>(packingOf(packed));
    return 0;
}
