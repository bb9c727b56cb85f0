// Option records: defaults, validation and size functions.
#include <vorl/types/options.hpp>
#include <vorl/types/text.hpp>

#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <stdexcept>

namespace vorl::test {
namespace {

constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

TEST(OptionsOfABuild, AreRefusedAtTheFirstFault) {
    Trace trace;
    const auto fault = [&](float gamma, float filterMarg, float gainMarg) {
        const std::string text = errorOf<std::invalid_argument>([&] {
            ClusterOptions(gamma, filterMarg, Validation::STANDARD, 0, Reduction::NONE,
                           Speedup::NONE, gainMarg);
        });
        return text + trace.take();
    };
    const std::string error = "ClusterOptions::validate(), invalid attribute(s).\n";
    EXPECT_EQ(fault(1, 0, 1), "");
    EXPECT_EQ(fault(-7, 1, -7), "");
    EXPECT_EQ(fault(NOT_A_NUMBER, NOT_A_NUMBER, NOT_A_NUMBER), "");
    EXPECT_EQ(fault(1.5f, -1, 2), error + "validate(), invalid gamma: 1.5\n");
    EXPECT_EQ(fault(1, -0.25f, 2), error + "validate(), invalid filterMarg: -0.25\n");
    EXPECT_EQ(fault(1, 1.25f, 2), error + "validate(), invalid filterMarg: 1.25\n");
    EXPECT_EQ(fault(1, 0, 1.5f), error + "validate(), invalid gainMarg: 1.5\n");
    EXPECT_EQ(std::bit_cast<std::uint32_t>(ClusterOptions().filterMarg), 0x3C23D70A);
    // Without a trace a fault is thrown all the same.
    ftrace = nullptr;
    EXPECT_THROW(ClusterOptions(2), std::invalid_argument);
}

TEST(OptionsOfLevels, RefuseASteplessRatio) {
    Trace trace;
    CustlevsOptions options;
    options.margmin = 3;
    for (float step : {0.0f, 1.0f}) {
        options.clsrstep = step;
        options.validate();
    }
    options.clsrstep = 1.5f;
    EXPECT_EQ(errorOf<std::invalid_argument>([&] { options.validate(); }),
              "CustlevsOptions::validate(), invalid attribute(s).\n");
    EXPECT_EQ(trace.take(), "validate(), invalid clsrstep: 1.5\n");
    options.reset();
    EXPECT_EQ(options.clsrstep, 1);
    EXPECT_EQ(options.margmin, LEVEL_NONE);
}

TEST(OptionsOfSignificance, AreValidEitherWay) {
    const SignifclsOptions plain;
    EXPECT_EQ(plain.densdrop, 1);
    EXPECT_EQ(plain.wrstep, 1);
    EXPECT_FALSE(plain.wrange);
    const SignifclsOptions ranged(true);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(ranged.densdrop), 0x3F5D5AAB);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(ranged.wrstep), 0x3E0A9555);
    EXPECT_TRUE(ranged.wrange);
}

TEST(OptionsOfSignificance, RefuseWhatTheRangeForbids) {
    Trace trace;
    const auto fault = [&](float densdrop, float wrstep, bool wrange) {
        SignifclsOptions options;
        options.densdrop = densdrop;
        options.wrstep = wrstep;
        options.wrange = wrange;
        const std::string text = errorOf<std::invalid_argument>([&] { options.validate(); });
        return text + trace.take();
    };
    const std::string error = "SignifclsOptions::validate(), invalid attribute(s).\n";
    EXPECT_EQ(fault(0, 0.5f, true), "");
    EXPECT_EQ(fault(0, 0, true), "");
    EXPECT_EQ(fault(1, 7, false), "");
    EXPECT_EQ(fault(1.5f, -1, false), error + "validate(), invalid densdrop: 1.5\n");
    EXPECT_EQ(fault(-1, 1, false), error + "validate(), invalid densdrop: -1\n");
    EXPECT_EQ(fault(1, -1, true), error + "validate(), invalid wrstep: -1, wrange: 1\n");
    EXPECT_EQ(fault(1, 0.75f, true), error + "validate(), invalid wrstep: 0.75, wrange: 1\n");
    EXPECT_EQ(fault(1, 0, false), error + "validate(), invalid wrstep: 0, wrange: 0\n");
}

TEST(SizeFunction, RoundsToTheNearest) {
    SignifclsExtoptions options;
    const auto sizes = [&](SzFnName name, std::initializer_list<std::uint32_t> nodes) {
        options.setClszminf(name);
        std::vector<std::uint32_t> result;
        for (std::uint32_t num : nodes) result.push_back(options.clszminf(num));
        return result;
    };
    using Sizes = std::vector<std::uint32_t>;
    EXPECT_EQ(sizes(SzFnName::CLSSZ_ROOT2, {1, 6, 7, 100, 0xFFFFFFFF}),
              Sizes({1, 2, 3, 10, 65536}));
    EXPECT_EQ(sizes(SzFnName::CLSSZ_ROOT4, {16, 39, 40}), Sizes({2, 2, 3}));
    EXPECT_EQ(sizes(SzFnName::CLSSZ_LOG2, {1, 5, 6, 1024}), Sizes({0, 2, 3, 10}));
    EXPECT_EQ(sizes(SzFnName::CLSSZ_LOGE, {1, 12, 13, 1000}), Sizes({0, 2, 3, 7}));
    options.setClszminf(SzFnName::NONE);
    EXPECT_EQ(options.clszminf, nullptr);
    options.setClszminf(SzFnName::CLSSZ_LOG2);
    options.reset(true);
    EXPECT_EQ(options.clszminf, nullptr);
    EXPECT_TRUE(options.wrange);
    for (std::uint8_t base = rbmin; base <= rbmax; ++base)
        EXPECT_EQ(rootOf(base)((1u << base) + 2), 2) << int{base};
    EXPECT_EQ(rootOf(8)(6561), 3);
    EXPECT_EQ(rootOf(5)(243), 3);
    for (std::uint8_t base : {std::uint8_t{1}, std::uint8_t{9}})
        EXPECT_EQ(errorOf<std::invalid_argument>([&] { rootOf(base); }),
                  "rootOf(), the base is out of the template params: " + std::to_string(base) +
                      "not E [2, 9)");
}

TEST(SizeFunctionDeathTest, HasAName) {
    SignifclsExtoptions options;
    EXPECT_DEATH(options.setClszminf(toSzFnName(3)),
                 "setClszminf\\(\\), unknown funcname specified");
}

TEST(TraceStream, IsBufferedUnlessItIsTheErrorStream) {
    std::FILE* const former = ftrace;
    traceBuffered(true);
    EXPECT_EQ(ftrace, stdout);
    EXPECT_TRUE(traceBuffered());
    traceBuffered(false);
    EXPECT_EQ(ftrace, stderr);
    EXPECT_FALSE(traceBuffered());
    ftrace = former;
}

}  // namespace
}  // namespace vorl::test
