// `vorl compare` as a user runs it.
#include "cli/program.hpp"

#include <gtest/gtest.h>

namespace vorl::test {
namespace {

TEST(Compare, JsonTellsTheMeasures) {
    const Folder folder;
    const std::string halves = folder.write("halves.cnl", "# Clusters: 2\n10 11 12\n13 14 15\n");
    const std::string thirds = folder.write("thirds.cnl", "3> 15 14\n1> 13 12\n2> 11 10\n");
    const Outcome run = vorl("compare --json " + halves + " " + thirds);
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out,
              "{\"first\": {\"file\": \"" + halves +
                  "\", \"clusters\": 2, \"covered_nodes\": 6, \"shared_nodes\": 0, "
                  "\"nodes_only_here\": 0}, \"second\": {\"file\": \"" +
                  thirds +
                  "\", \"clusters\": 3, \"covered_nodes\": 6, \"shared_nodes\": 0, "
                  "\"nodes_only_here\": 0}, \"compared_nodes\": 6, \"nmi_max\": 0.333333333333, "
                  "\"nmi_lfk\": 0.39624062518, \"f1\": 0.733333333333, \"omega\": "
                  "0.242424242424, \"omega_samples\": 0, \"ari\": 0.242424242424, "
                  "\"nmi\": 0.515803742979, \"vi\": 0.867563228481}\n");
    EXPECT_TRUE(contains(run.err, thirds + ": the clusters are numbered")) << run.err;
    EXPECT_EQ(vorl("compare -q " + halves + " " + thirds).err, "");
    const Outcome strict = vorl("compare --strict " + halves + " " + thirds);
    EXPECT_EQ(strict.code, 1);
    EXPECT_TRUE(contains(strict.err, thirds + ":1: the clusters are numbered")) << strict.err;
    EXPECT_EQ(strict.out, "");
}

TEST(Compare, NodesOfOneFileOnly) {
    const Folder folder;
    const std::string files = folder.write("a.cnl", "1 2 3\n4 5 6\n6 7\n") + " " +
                              folder.write("b.cnl", "1 2 3\n4 5\n8 9\n");
    const Outcome text = vorl("compare " + files);
    EXPECT_EQ(text.code, 0);
    EXPECT_EQ(text.err, "");
    EXPECT_TRUE(contains(text.out, "a.cnl: 3 clusters of 7 nodes, 1 of them in several\n"));
    EXPECT_TRUE(contains(text.out,
                         "Compared on 9 nodes: 2 in the first file only, 2 in the second "
                         "file only;\nwhere a node is missing it counts as in no cluster\n"))
        << text.out;
    EXPECT_TRUE(contains(text.out, "these aren't two partitions"));
    EXPECT_TRUE(contains(vorl("compare --count 1000 " + files).out,
                         "Compared on 1,000 nodes: 2 in the first file only, 2 in the second file "
                         "only, 991 in neither;"));
    const Outcome fewer = vorl("compare --count 8 " + files);
    EXPECT_EQ(fewer.code, 1);
    EXPECT_EQ(fewer.err, "vorl: --count tells of 8 nodes, but there are 9 to compare\n");
    const auto tells = [&](const std::string& nodes, const char* json) {
        return contains(vorl("compare --json " + files + " --nodes " + nodes).out, json);
    };
    EXPECT_TRUE(tells("union", "\"compared_nodes\": 9, \"nmi_max\""));
    EXPECT_TRUE(
        tells("common",
              "\"compared_nodes\": 5, \"nmi_max\": 1, \"nmi_lfk\": 1, \"f1\": 1, \"omega\": 1, "));
    EXPECT_TRUE(tells("first", "\"nodes_only_here\": 2}, \"second\""));
    EXPECT_TRUE(tells("second", "\"nodes_only_here\": 2}, \"compared_nodes\": 7, "));
}

TEST(Compare, SampledOmegaIsSaid) {
    const Folder folder;
    const std::string files =
        folder.write("a.cnl", "1 2 3 4\n4 5 6\n") + " " + folder.write("b.cnl", "1 2 3\n4 5 6\n");
    EXPECT_TRUE(contains(vorl("compare " + files).out, "exact\n"));
    const Outcome run = vorl("compare --exact-pairs 8 " + files);
    EXPECT_TRUE(contains(run.out, "estimated from 5,000,000 pairs drawn of each file\n"))
        << run.out;
    EXPECT_EQ(run.out, vorl("compare --exact-pairs 8 " + files).out);
}

TEST(Compare, FaultsAreTold) {
    const Folder folder;
    const std::string good = folder.write("good.cnl", "1 2\n3\n");
    const std::pair<std::string, const char*> cases[] = {
        {(folder / "none.cnl").string(), "none.cnl: No such file or directory"},
        {folder.path().string(), ": Is a directory"},
        {folder.write("apart.cnl", "8 9\n") + " --nodes common",
         "none of the nodes to compare is in a cluster"},
    };
    for (const auto& [second, message] : cases) {
        const Outcome run = vorl("compare " + good + " " + second);
        EXPECT_EQ(run.code, 1) << second << run.err;
        EXPECT_TRUE(contains(run.err, message)) << second << run.err;
        EXPECT_EQ(run.out, "");
    }
}

}  // namespace
}  // namespace vorl::test
