// Masks of the enumerations and their text forms.
#include <vorl/types/text.hpp>

#include <gtest/gtest.h>

#include <string>

namespace vorl {
namespace {

TEST(TextForm, OfPlainValues) {
    const auto texts = [](auto... values) { return ((to_string(values) + " ") + ...); };
    EXPECT_EQ(texts(toValidation(0), toValidation(0xAA), toValidation(0xFF), toSpeedup(0),
                    toSpeedup(0xAA), toSpeedup(0xFF)),
              "NONE STANDARD SEVERE NONE COARSE ORDERDEP ");
    EXPECT_EQ(
        texts(toLevMargKind(0), toLevMargKind(0x55), toLevMargKind(0xAA), toLevMargKind(0xFF),
              toSzFnName(0), toSzFnName(2), toSzFnName(4), toSzFnName(0x12), toSzFnName(0x13)),
        "NONE CLSNUM LEVID LEVSTEPNUM NONE CLSSZ_ROOT2 CLSSZ_ROOT4 CLSSZ_LOG2 CLSSZ_LOGE ");
    std::string formats;
    for (std::uint8_t value = 0; value <= 5; ++value)
        formats += texts(static_cast<FileFormat>(value));
    EXPECT_EQ(formats + texts(FileFormat::DEFAULT_INPUT), "UNKNOWN RCG NSE NSA CNL RHB RCG ");
}

TEST(TextForm, OfFlags) {
    EXPECT_EQ(to_string(toState(0)), "UNDEFINED");
    EXPECT_EQ(to_string(toState(0x9D)), "PERPAIR, FURTHERPROP, PROPAGATED, INTERLEVPROP");
    EXPECT_EQ(to_string(toState(0x90)), "UNDEFINED, PROPAGATED, INTERLEVPROP");
    EXPECT_EQ(to_string(libBuild().clustering),
              "FUZZY_OVP, MCANDS_NOFLT, OVERLAP_LINKS, AUTO_GAMMA");
    EXPECT_EQ(to_string(toClustering(0x11)), "CRISP_OVP, CHAINS_EXTRA");
    EXPECT_EQ(to_string(toClustering(0x08)), "NDET_COARSE");
    EXPECT_EQ(to_string(toReduction(0)), "NONE");
    EXPECT_EQ(to_string(toReduction(0x91)), "ACCURATE, SKIP_NODES, CRITERIA_WEIGHT");
    EXPECT_EQ(to_string(toReduction(0x22)), "MEAN, SKIP_CLUSTERS");
    EXPECT_EQ(to_string(toReduction(0x83)), "SEVERE, CRITERIA_WEIGHT");
    EXPECT_EQ(to_string(toIntrinsicsFlags(0)), "NONE");
    EXPECT_EQ(to_string(toIntrinsicsFlags(0xFF)), "ALL");
    EXPECT_EQ(to_string(toIntrinsicsFlags(7)), "CONDUCTANCE, MODULARITY, GAMMA");
    EXPECT_EQ(to_string(toIntrinsicsFlags(6)), "MODULARITY, GAMMA");
    EXPECT_EQ(to_string(toIntrinsicsFlags(8)), "");
}

TEST(TextForm, OfOutputFormats) {
    EXPECT_EQ(strClsOutFmt(0), "NONE");
    EXPECT_EQ(to_string(ClsOutFmt::DEFAULT), "ALLCLS, EXTENDED");
    EXPECT_EQ(strClsOutFmt(0x40), "NONE, SIMPLE");
    EXPECT_EQ(strClsOutFmt(0x91), "ROOT, MAXSHARE, SHARED");
    std::string structures;
    for (ClsOutFmtBase mask = 0x21; mask <= 0x2C; ++mask)
        if (mask != 0x27) structures += strClsOutFmt(mask) + " ";
    EXPECT_EQ(structures,
              "ROOT, PURE PERLEVEL, PURE CUSTLEVS, PURE CUSTLEVS_APPROXNUM, PURE ALLCLS, PURE "
              "HIER, PURE SIGNIF_OWNSDIR, PURE SIGNIF_OWNADIR, PURE SIGNIF_OWNSHIER, PURE "
              "SIGNIF_OWNAHIER, PURE SIGNIF_DEFAULT, PURE ");
}

TEST(TextForm, InDigitsTakesAnyValue) {
    EXPECT_EQ(to_string(toState(0x16), true), "0b00010110");
    EXPECT_EQ(to_string(static_cast<FileFormat>(0x80), true), "0b10000000");
    EXPECT_EQ(strClsOutFmt(0x17, true), "0b00010111");
}

TEST(TextFormDeathTest, OfAnUndefinedValueFails) {
    constexpr const char* FLAG = "toString\\(\\), invalid value of the flag";
    EXPECT_DEATH(to_string(toState(0x11)), FLAG);
    EXPECT_DEATH(to_string(toClustering(0xE2)), FLAG);
    EXPECT_DEATH(to_string(toReduction(4)), FLAG);
    EXPECT_DEATH(to_string(toSpeedup(1)), FLAG);
    EXPECT_DEATH(to_string(toValidation(1)), FLAG);
    EXPECT_DEATH(to_string(toSzFnName(3)), "strSzFnName\\(\\), invalid value of the SzFnName flag");
    EXPECT_DEATH(to_string(toLevMargKind(1)),
                 "strLevMargKind\\(\\), invalid value of the LevMargKind flag");
    EXPECT_DEATH(to_string(static_cast<FileFormat>(6)),
                 "toString\\(\\), invalid value of the FileFormat flag");
    constexpr const char* STRUCTURE = "strClsOutFmt\\(\\), invalid value of the OUTSTRUC flag";
    EXPECT_DEATH(strClsOutFmt(0xC7), STRUCTURE);
    EXPECT_DEATH(strClsOutFmt(0xCD), STRUCTURE);
    constexpr const char* FORMAT = "strClsOutFmt\\(\\), invalid value of the FILEFMT flag";
    EXPECT_DEATH(strClsOutFmt(0x10), FORMAT);
    EXPECT_DEATH(strClsOutFmt(0x65), FORMAT);
}

TEST(Flags, CombineOnTheirMasks) {
    EXPECT_TRUE(xperpair(toState(0x85)));
    EXPECT_FALSE(xperpair(toState(0x04)) || xperpair(toState(0x07)));
    ClsOutFmtBase mask = 0xC5;
    mask |= ClsOutFmt::MAXSHARE;
    mask &= ClsOutFmt::MASK_FILTERING;
    EXPECT_EQ(mask, 0x10);

    // Flags of intrinsic measures are cut by |=, not added.
    IntrinsicsFlags flags = toIntrinsicsFlags(3);
    EXPECT_EQ(flags |= toIntrinsicsFlags(6), IntrinsicsFlags::MODULARITY);
}

TEST(SmallTexts, ArePaddedAndSplit) {
    EXPECT_EQ(pad("7", 3, '0'), "007");
    EXPECT_EQ(pad("7", 3, ' ', false), "7  ");
    EXPECT_EQ(pad("1234", 4), "1234");
    EXPECT_EQ(pad("1234", 3), "1234");
    EXPECT_EQ(toYesNo(true) + toYesNo(false), "yesno");
    BuildInfo info = libBuild();
    info.revision = "12/0123456789ab";
    EXPECT_EQ(info.rev(), "12");
    info.revision = "unknown";
    EXPECT_EQ(info.rev(), "unknown");
    info.compiler = "c";
    info.langenv = "l";
    info.time = "t";
    EXPECT_EQ(info.summary(),
              "Revision: unknown\nClustering: FUZZY_OVP, MCANDS_NOFLT, OVERLAP_LINKS, "
              "AUTO_GAMMA\nCompiler: c\nLangEnv: l\nTime: t\n");
}

}  // namespace
}  // namespace vorl
