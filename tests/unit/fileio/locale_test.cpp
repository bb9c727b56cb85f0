// Numbers of files, messages and the trace under a locale with a decimal comma.
#include <vorl/fileio/parser_cnl.hpp>
#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/fileio/parser_rcg.hpp>
#include <vorl/processing/intrinsics.hpp>
#include <vorl/shared/operations.hpp>
#include <vorl/types/plain_text.hpp>

#include "support/comma_locale.hpp"
#include "support/networks.hpp"
#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

namespace vorl::test {
namespace {

InpOptions read(const std::string& file, FileFormat format) {
    InpOptions options;
    options.filename = file;
    options.format = format;
    return options;
}

/// What the library reads, tells and writes of networks whose weights are fractions.
std::string told(const Folder& folder) {
    const std::string nse =
        folder.write("net.nse",
                     "# NODES: 7, EDGES: 9, WEIGHTED: 1\n0 1 .5\n0 2 +.25\n1 2 1.5\n"
                     "3 4 1.25e-1\n3 5 0x1.8p0\n4 5 .5\n6 0 .3\n6 3 .3\n2 5 0.001\n");
    const std::string rcg =
        folder.write("net.rcg", "/Graph weighted:1\n/Edges\n0> 1:.5 2:+1.5\n1> 2:0.25\n");
    const std::string cnl = folder.write("net.cnl", "0 1 2 6:.5\n3 4 5 6:0.5\n");
    std::string text;
    Trace trace;
    NslParser parser(read(nse, FileFormat::NSE));
    const auto graph = parser.build<Graph<true>>();
    const auto hier = graph->buildHierarchy(ClusterOptions(0.75f));
    OutputOptions output;
    output.clsfile = (folder / "out.cnl").string();
    hier->output(output);
    text += contents(folder / "out.cnl") + contents(folder / "out.rhb");
    const auto sections = RcgParser(read(rcg, FileFormat::RCG)).build<Graph<true>>();
    sections->buildHierarchy();
    Intrinsics measures(IntrinsicsFlags::ALL);
    const auto again = NslParser(read(nse, FileFormat::NSE)).build<Graph<true>>();
    evaluateClusters(measures, *again, cnl, 0.5);
    text += format("%.9g %.9g\n", double{measures.mod}, double{measures.cdn});
    EXPECT_THROW(ClusterOptions(1.5f), std::invalid_argument);
    Clusters<WeightedLinks> none;
    text +=
        errorOf<std::invalid_argument>([&] { intrinsicMeasures<false>(measures, none, 2.5, 0.5); });
    for (const char* weight : {"1,5", "1e50", "x"}) {
        const std::string file = folder.write("bad.nse", std::string("0 1 ") + weight + "\n");
        text += errorOf<std::invalid_argument>([&] {
            const auto net = NslParser(read(file, FileFormat::NSE)).build<Graph<true>>();
            text += format("%g\n", double{net->node(0)->links.front().weight});
        });
    }
    return text + trace.take();
}

TEST(Locale, WithADecimalCommaChangesNothing) {
    const Folder folder;
    const std::string plain = told(folder);
    EXPECT_NE(plain.find("weight (both dir): 9.952\n"), std::string::npos) << plain;
    EXPECT_NE(plain.find("weight(2.500000) and gamma(0.500000)"), std::string::npos) << plain;
    EXPECT_NE(plain.find("invalid gamma: 1.5\n"), std::string::npos) << plain;
    const CommaLocale locale;
    ASSERT_TRUE(locale.enter());
    char comma[8];
    std::snprintf(comma, sizeof comma, "%.1f", 1.5);
    ASSERT_STREQ(comma, "1,5");
    EXPECT_EQ(told(folder), plain);
    std::snprintf(comma, sizeof comma, "%.1f", 1.5);
    EXPECT_STREQ(comma, "1,5");  // the caller's locale stays
}

}  // namespace
}  // namespace vorl::test
