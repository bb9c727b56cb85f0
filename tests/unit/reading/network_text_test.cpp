// The texts of a network in each format, and what is read of them.
#include "support/scanned_network.hpp"

#include <gtest/gtest.h>

namespace vorl::test {
namespace {

/// Names with what the formats escape, a number among them, a node without links, weights of all
/// sizes, a self link, an edge among arcs, and one that says again what another one does.
const std::string MIXED =
    "*Vertices 6\n1 \"A&B <&#34;x&#34;> &#38;#39;y'\"\n2 \"7\"\n3 \"\xC3\x84\\ ]{\"\n4 \"alone\"\n"
    "5 \"12345678901\"\n6 \"#\t1\"\n*Edges\n1 2 0.1\n3 3 2\n*Arcs\n2 3 16777216\n6 5 1e-07\n"
    "2 3 3\n";

std::string textOf(NetworkFormat format) {
    const ScannedNetwork network(MIXED, {.format = NetworkFormat::PAJEK});
    EXPECT_EQ(obstacle(format, network.table), "");
    return networkText(format, network.table);
}

TEST(NetworkText, HasTheFormsOfItsFormat) {
    EXPECT_EQ(
        textOf(NetworkFormat::GRAPHML),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<graphml xmlns=\"http://graphml.graphdrawing.org/xmlns\">\n"
        "<key id=\"weight\" for=\"edge\" attr.name=\"weight\" attr.type=\"double\"/>\n"
        "<graph edgedefault=\"directed\">\n"
        "<node id=\"A&amp;B &lt;&quot;x&quot;> &amp;#39;y'\"/>\n<node id=\"7\"/>\n"
        "<node id=\"\xC3\x84\\ ]{\"/>\n<node id=\"alone\"/>\n<node id=\"12345678901\"/>\n"
        "<node id=\"#&#9;1\"/>\n"
        "<edge source=\"A&amp;B &lt;&quot;x&quot;> &amp;#39;y'\" target=\"7\" directed=\"false\">"
        "<data key=\"weight\">0.1</data></edge>\n"
        "<edge source=\"\xC3\x84\\ ]{\" target=\"\xC3\x84\\ ]{\" directed=\"false\">"
        "<data key=\"weight\">2</data></edge>\n"
        "<edge source=\"7\" target=\"\xC3\x84\\ ]{\">"
        "<data key=\"weight\">16777216</data></edge>\n"
        "<edge source=\"#&#9;1\" target=\"12345678901\">"
        "<data key=\"weight\">1e-07</data></edge>\n"
        "<edge source=\"7\" target=\"\xC3\x84\\ ]{\"><data key=\"weight\">3</data></edge>\n"
        "</graph>\n</graphml>\n");
    EXPECT_EQ(
        textOf(NetworkFormat::GML),
        "graph [\n  directed 1\n  node [ id 0 label \"A&amp;B <&quot;x&quot;> &amp;#39;y'\" ]\n"
        "  node [ id 1 label \"7\" ]\n  node [ id 2 label \"&#196;\\ ]{\" ]\n"
        "  node [ id 3 label \"alone\" ]\n  node [ id 4 label \"12345678901\" ]\n"
        "  node [ id 5 label \"#\t1\" ]\n"
        "  edge [ source 0 target 1 weight 0.1 ]\n  edge [ source 1 target 0 weight 0.1 ]\n"
        "  edge [ source 2 target 2 weight 2 ]\n  edge [ source 1 target 2 weight 16777216 ]\n"
        "  edge [ source 5 target 4 weight 1e-07 ]\n  edge [ source 1 target 2 weight 3 ]\n]\n");
    EXPECT_EQ(
        textOf(NetworkFormat::JSON),
        "{\"directed\": true, \"multigraph\": false, \"graph\": {},\n\"nodes\": [\n"
        "{\"id\": \"A&B <\\\"x\\\"> &#39;y'\"},\n{\"id\": 7},\n{\"id\": \"\xC3\x84\\\\ ]{\"},\n"
        "{\"id\": \"alone\"},\n{\"id\": \"12345678901\"},\n{\"id\": \"#\\u00091\"}],\n"
        "\"links\": [\n{\"source\": \"A&B <\\\"x\\\"> &#39;y'\", \"target\": 7, \"weight\": 0.1},\n"
        "{\"source\": 7, \"target\": \"A&B <\\\"x\\\"> &#39;y'\", \"weight\": 0.1},\n"
        "{\"source\": \"\xC3\x84\\\\ ]{\", \"target\": \"\xC3\x84\\\\ ]{\", \"weight\": 2},\n"
        "{\"source\": 7, \"target\": \"\xC3\x84\\\\ ]{\", \"weight\": 16777216},\n"
        "{\"source\": \"#\\u00091\", \"target\": \"12345678901\", \"weight\": 1e-07},\n"
        "{\"source\": 7, \"target\": \"\xC3\x84\\\\ ]{\", \"weight\": 3}]}\n");
    EXPECT_EQ(textOf(NetworkFormat::PAJEK), MIXED);
}

TEST(NetworkText, IsReadBackAlike) {
    const auto returns = [](const ScannedNetwork& network, NetworkFormat format, bool mixed) {
        ScanOptions options{.format = format};
        if (format == NetworkFormat::LIST) options.directed = network.table.facts.directed();
        const ScannedNetwork again(networkText(format, network.table), options);
        EXPECT_EQ(again.named(mixed), network.named(mixed)) << nameOf(format);
        EXPECT_EQ(again.names(false), network.names(false)) << nameOf(format);
    };
    const ScannedNetwork mixed(MIXED, {.format = NetworkFormat::PAJEK});
    for (const NetworkFormat format : {NetworkFormat::PAJEK, NetworkFormat::GRAPHML})
        returns(mixed, format, true);
    for (const NetworkFormat format : {NetworkFormat::GML, NetworkFormat::JSON})
        returns(mixed, format, false);
    // Weights that take all of their digits, and the largest and the least there may be.
    const std::string weights =
        "1 1 0.333333343\n2 1 1.1754944e-38\n3 2 1.5e38\n4 3 8388609.5\n4 1 33554434\n";
    for (const bool directed : {false, true}) {
        const ScannedNetwork network(weights,
                                     {.format = NetworkFormat::LIST, .directed = directed});
        for (const auto& [name, format] : networkFormats())
            if (format != NetworkFormat::METIS && (format == NetworkFormat::NSA) <= directed &&
                obstacle(format, network.table).empty())
                returns(network, format, false);
    }
    const ScannedNetwork whole("4 3 16777216\n3 1 1\n4 1 3e9\n2 4 1e20\n",
                               {.format = NetworkFormat::LIST});
    returns(whole, NetworkFormat::METIS, false);
    EXPECT_EQ(networkText(NetworkFormat::METIS, whole.table),
              "4 4 001\n3 1 4 3000000000\n4 100000002004087734272\n4 16777216 1 1\n"
              "3 16777216 1 3000000000 2 100000002004087734272\n");
}

}  // namespace
}  // namespace vorl::test
