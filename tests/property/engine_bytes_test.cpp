// The engine on tiny networks of arbitrary bytes, bounded: no valid network may stop it.
#include "../fuzz/engine.cpp"

#include <gtest/gtest.h>

TEST(EngineBytes, NeverStopsTheProcess) {
    vorl::test::Random rnd(1);
    for (int i = 0; i < 20000; ++i) {
        std::vector<std::uint8_t> bytes(7 + rnd.below(160));
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(rnd.below(256));
        ASSERT_EQ(LLVMFuzzerTestOneInput(bytes.data(), bytes.size()), 0);
    }
}
