// The files that `vorl cluster` writes, and their way back through the other commands.
#include "cli/program.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <vector>

namespace vorl::test {
namespace {

/// The text of a value in a JSON document, the first one of its name behind a position.
std::string value(const std::string& json, const std::string& name, std::size_t from = 0) {
    const std::string key = "\"" + name + "\": ";
    const std::size_t place = json.find(key, from);
    if (place == std::string::npos) return "";
    const std::size_t begin = place + key.size();
    return json.substr(begin, json.find_first_of(",}]", begin) - begin);
}

/// The numbers of items at the heights of the levels.
std::vector<std::size_t> fullsizes(const std::string& json) {
    std::vector<std::size_t> sizes;
    for (std::size_t place = 0; (place = json.find("\"fullsize\": ", place)) != std::string::npos;)
        sizes.push_back(std::stoul(json.substr(place += 12)));
    return sizes;
}

/// The rows of a file of clusters, without its header.
std::vector<std::string> rows(const std::filesystem::path& file) {
    std::istringstream text(contents(file));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
        if (!line.starts_with("#")) lines.push_back(line);
    return lines;
}

/// In how many rows each node stands.
std::map<std::string, int> memberships(const std::vector<std::string>& lines) {
    std::map<std::string, int> counts;
    for (const std::string& line : lines) {
        std::istringstream words(line);
        for (std::string word; words >> word;)
            if (word.back() != '>') ++counts[word.substr(0, word.find(':'))];
    }
    return counts;
}

std::string ring(int nodes) {
    std::string text;
    for (int i = 0; i < nodes; ++i)
        text += std::to_string(i) + " " + std::to_string((i + 1) % nodes) + "\n";
    return text;
}

TEST(Output, EachLevelHasOneRightFile) {
    const Folder folder;
    std::vector<std::string> networks{DATA + "karate.nse", DATA + "jazz.nse",
                                      DATA + "celegansneural.nsa"};
    for (int nodes : {2, 3, 4, 5, 7, 10, 16, 24})
        networks.push_back(folder.write("ring" + std::to_string(nodes) + ".nse", ring(nodes)));
    std::set<std::size_t> counts;
    for (const std::string& network : networks) {
        const std::string name = "out" + std::to_string(counts.size());
        const std::string file = (folder / (name + ".cnl")).string();
        const Outcome run =
            vorl("cluster " + network + " --gamma 1 --json --levels per-level -o " + file);
        ASSERT_EQ(run.code, 0) << run.err;
        const std::vector<std::size_t> sizes = fullsizes(run.out);
        counts.insert(sizes.size());
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator(folder / name))
            files.push_back(entry.path());
        std::sort(files.begin(), files.end());
        ASSERT_EQ(files.size(), sizes.size()) << network;
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            EXPECT_EQ(rows(files[i]).size(), sizes[i]) << network << files[i];
            EXPECT_EQ(memberships(rows(files[i])).size(), std::stoul(value(run.out, "nodes")));
        }
        EXPECT_TRUE(std::filesystem::exists(folder / (name + ".rhb")));
        std::filesystem::remove_all(folder / name);
    }
    EXPECT_GE(counts.size(), 5u);
}

TEST(Output, LevelsAreSelected) {
    const Folder folder;
    // The heights of these levels have 17, 13, 10, 7, 6, 5 and 4 items.
    const auto levels = [&](const std::string& options) {
        std::filesystem::remove_all(folder / "out");
        const Outcome run = vorl("cluster " + DATA + "karate.nse -q " + options + " -o " +
                                 (folder / "out.cnl").string());
        EXPECT_EQ(run.code, 0) << run.err;
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder / "out"))
            names.insert(entry.path().stem().string().substr(4));
        return names;
    };
    using Names = std::set<std::string>;
    EXPECT_EQ(levels("--levels per-level --level-min 2 --level-max 4"), (Names{"2", "3", "4"}));
    EXPECT_EQ(levels("--levels per-level --level-step 0.7"), (Names{"0", "2", "3", "6"}));
    EXPECT_EQ(levels("--levels around --clusters 8"), (Names{"2", "3"}));
    EXPECT_EQ(levels("--levels around --clusters 30"), (Names{"0"}));
    EXPECT_EQ(levels("--levels around --clusters 1"), (Names{"6"}));
    EXPECT_EQ(vorl("cluster " + DATA + "karate.nse --levels per-level --level-min 7 -o " +
                   (folder / "none").string())
                  .code,
              1);
    EXPECT_FALSE(std::filesystem::exists(folder / "none"));
}

TEST(Output, NeedsAClusterToWrite) {
    const Folder folder;
    // Self weights so heavy that every link is a loss.
    const std::string network = folder.write("net.nse", "0 0 50\n1 1 50\n0 1 1\n");
    for (const char* options : {" -o out.rhb --levels hierarchy", " -o out.cnl"}) {
        const Outcome run = vorl("cluster net.nse --gamma 1" + std::string(options),
                                 "cd " + folder.path().string() + " &&");
        EXPECT_EQ(run.code, 1) << options;
        EXPECT_TRUE(contains(run.err, ": there is nothing to write, no cluster was formed"));
        EXPECT_FALSE(std::filesystem::exists(folder / "out.rhb"));
        EXPECT_FALSE(std::filesystem::exists(folder / "out.cnl"));
    }
    EXPECT_EQ(vorl("cluster " + network + " --gamma 1").code, 0);
}

TEST(Output, SharesAreWrittenAsAsked) {
    const Folder folder;
    const auto written = [&](const std::string& options) {
        const std::string file = (folder / "out.cnl").string();
        EXPECT_EQ(vorl("cluster " + DATA + "power.nse -q --levels all -o " + file + options).code,
                  0);
        return contents(file);
    };
    const std::string full = written("");
    EXPECT_TRUE(contains(full, "Fuzzy: 1, Numbered: 1\n"));
    EXPECT_NE(full.find(':', full.find('\n')), std::string::npos);
    EXPECT_TRUE(contains(full, "> "));
    const std::string uneven = written(" --shares uneven");
    EXPECT_TRUE(contains(uneven, "Fuzzy: 1, Numbered: 0\n"));
    EXPECT_NE(uneven.find(':', uneven.find('\n')), std::string::npos);
    EXPECT_EQ(uneven.find('>'), std::string::npos);
    const std::string none = written(" --shares none");
    EXPECT_TRUE(contains(none, "Fuzzy: 0, Numbered: 0\n"));
    EXPECT_EQ(none.find(':', none.find('\n')), std::string::npos);
    const auto entries = [&](const std::string& text) {
        return std::count(text.begin(), text.end(), ' ');
    };
    EXPECT_LT(entries(written(" --shares none --max-share")), entries(none));
}

TEST(Output, SignificantClustersObeyTheirBounds) {
    const Folder folder;
    const auto count = [&](const std::string& options) {
        const std::string file = (folder / "out.cnl").string();
        const Outcome run =
            vorl("cluster " + DATA + "jazz.nse -q --levels significant -o " + file + " " + options);
        EXPECT_EQ(run.code, 0) << run.err;
        return rows(file).size();
    };
    const std::size_t plain = count("");
    EXPECT_EQ(count("--min-size 1"), plain);
    EXPECT_LT(count("--min-size-by root2"), plain);
    EXPECT_EQ(count("--min-size-by root2"), count("--min-size 14"));
    const std::size_t root =
        std::stoul(value(vorl("cluster " + DATA + "jazz.nse --json").out, "root"));
    // The root is always significant.
    EXPECT_EQ(count("--min-size 199"), root);
    EXPECT_GE(count("--density-drop 0 --weight-step 1 --no-weight-range"), plain);
}

TEST(Output, RootIsMeasuredAsTheBuildDoes) {
    const Folder folder;
    const std::string file = (folder / "root.cnl").string();
    for (const char* network : {"karate.nse", "dolphins.nse", "football.nse", "lesmis.nse",
                                "jazz.nse", "power.nse", "celegansneural.nsa"}) {
        const Outcome build =
            vorl("cluster " + DATA + network +
                 " --gamma 1 --json --no-level-measures --levels root -o " + file);
        ASSERT_EQ(build.code, 0) << build.err;
        const auto counts = memberships(rows(file));
        const bool overlaps =
            std::any_of(counts.begin(), counts.end(), [](const auto& c) { return c.second > 1; });
        const Outcome run = vorl("evaluate " + DATA + network + " " + file + " --json -q");
        ASSERT_EQ(run.code, 0) << run.err;
        const std::map<std::string, std::string> names{{"modularity", "modularity"},
                                                       {"modularity", "modularity_at_1"},
                                                       {"conductance", "conductance"},
                                                       {"estimated_gamma", "estimated_gamma"}};
        for (const auto& [measured, built] : names) {
            const std::string expected = value(build.out, built);
            if (!overlaps)
                EXPECT_EQ(value(run.out, measured), expected) << network << measured;
            else
                EXPECT_NEAR(std::stod(value(run.out, measured)), std::stod(expected), 1e-6)
                    << network << measured;
        }
    }
}

TEST(Output, WhatIsWrittenCanBeReadBack) {
    const Folder folder;
    const std::string file = (folder / "out.cnl").string();
    for (const char* levels : {"all", "root", "significant"})
        for (const char* shares : {"none", "uneven", "full"}) {
            const std::string options = std::string(" --levels ") + levels + " --shares " + shares;
            ASSERT_EQ(vorl("cluster " + DATA + "power.nse -q -o " + file + options).code, 0);
            const Outcome run = vorl("evaluate " + DATA + "power.nse " + file);
            EXPECT_EQ(run.code, 0) << options << run.err;
            // The counts of all formed clusters are no fault where the levels tell themselves.
            const Outcome strict = vorl("compare --strict " + file + " " + file);
            EXPECT_EQ(strict.code, 0) << options << strict.err;
            EXPECT_EQ(contains(strict.err, "clusters of several levels"),
                      levels != std::string("root"))
                << options << strict.err;
        }
}

TEST(Evaluate, TellsFaultsOfTheClusters) {
    const Folder folder;
    const auto evaluate = [&](const std::string& text, const std::string& options = "") {
        return vorl("evaluate " + DATA + "karate.nse " + folder.write("c.cnl", text) + options);
    };
    EXPECT_NE(evaluate("1 2\n3 99\n").err.find("c.cnl:2: the node 99 isn't in the network"),
              std::string::npos);
    EXPECT_EQ(evaluate("1 2\n3 99\n").code, 1);
    EXPECT_TRUE(
        contains(evaluate("1 2 3\n4 5 6\n").err, "28 nodes of the network are in no cluster"));
    // One cluster of all nodes has all weight inside, and nothing to be cut from.
    std::string all;
    for (int i = 1; i <= 34; ++i) all += std::to_string(i) + " ";
    const std::string json = evaluate(all + "\n", " --json --gamma 0.5").out;
    EXPECT_EQ(json, "{\"file\": \"" + (folder / "c.cnl").string() +
                        "\", \"clusters\": 1, \"nodes\": 34, \"covered_nodes\": 34, "
                        "\"conductance\": null, \"modularity\": 0.5, \"gamma\": 0.5, "
                        "\"estimated_gamma\": 1, \"modularity_at_estimated_gamma\": 0}\n");
}

TEST(Evaluate, WeighsClustersThatDontCoverTheNetwork) {
    const Folder folder;
    const auto measured = [&](const std::string& network, const std::string& clusters) {
        const Outcome run =
            vorl("evaluate -q --json " + network + " " + folder.write("c.cnl", clusters));
        return std::pair(value(run.out, "conductance"), value(run.out, "modularity"));
    };
    // One of two factions; 11 of the 75 ends of links in it belong to links that lead out.
    const auto faction =
        measured(DATA + "karate.nse", "1 2 3 4 5 6 7 8 9 11 12 13 14 17 18 20 22\n");
    EXPECT_NEAR(std::stod(faction.first), 11. / 75, 1e-6);
    EXPECT_NEAR(std::stod(faction.second), (64 - 75. * 75 / 156) / 156, 1e-6);
    const std::string triangles = folder.write("n.nse", "0 1\n1 2\n2 0\n3 4\n4 5\n5 3\n");
    EXPECT_EQ(measured(triangles, "0 1\n3 4\n").first, "0.5");
    EXPECT_EQ(measured(triangles, "0 1 2\n").first, "0");
    EXPECT_TRUE(
        contains(vorl("evaluate " + triangles + " " + folder.write("c.cnl", "0 1 2 3 4 5\n")).out,
                 "conductance   none ("));
}

TEST(Evaluate, ClustersWithoutACutAreNoFault) {
    const Folder folder;
    const std::string network = folder.write("n.nse", "1 2\n2 3\n3 1\n4 5\n5 6\n6 4\n7 7 0\n");
    const Outcome run =
        vorl("evaluate " + network + " " + folder.write("c.cnl", "1 2 3\n4 5 6\n7\n") + " --json");
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(value(run.out, "conductance"), "0");
}

TEST(Convert, LosesNothing) {
    const Folder folder;
    const auto clustered = [](const std::string& file) {
        const std::string json = vorl("cluster " + file + " --json").out;
        return json.substr(json.find("\"levels\""),
                           json.find("\"files\"") - json.find("\"levels\""));
    };
    const std::string mixed = folder.write(
        "mixed.rcg",
        "/Graph weighted:1\n/Nodes 5 1\n/Edges\n1> 2:0.1 3:1e38\n/Arcs\n3> 4 5:1e-7\n");
    for (const std::string& network :
         {DATA + "karate.nse", DATA + "celegansneural.nsa", DATA + "lesmis.nse"}) {
        const std::string suffix = network.substr(network.rfind('.'));
        const std::string sections = (folder / "a.rcg").string();
        const std::string back = (folder / ("b" + suffix)).string();
        const std::string again = (folder / "c.rcg").string();
        ASSERT_EQ(vorl("convert -q " + network + " " + sections).code, 0);
        ASSERT_EQ(vorl("convert -q " + sections + " " + back).code, 0);
        ASSERT_EQ(vorl("convert -q " + back + " " + again).code, 0);
        EXPECT_EQ(contents(sections), contents(again));
        EXPECT_EQ(clustered(network), clustered(sections)) << network;
        EXPECT_EQ(clustered(network), clustered(back)) << network;
    }
    ASSERT_EQ(vorl("convert -q " + mixed + " " + (folder / "d.nsa").string()).code, 0);
    EXPECT_EQ(contents(folder / "d.nsa"),
              "# Nodes: 5, Arcs: 6, Weighted: 1\n1 2 0.1\n2 1 0.1\n1 3 1e+38\n3 1 1e+38\n3 4 1\n"
              "3 5 1e-07\n");
    const Outcome refused = vorl("convert " + mixed + " " + (folder / "e.nse").string());
    EXPECT_EQ(refused.code, 1);
    EXPECT_NE(refused.err.find("arcs, which the format nse can't hold"), std::string::npos);
    const std::string alone = folder.write("alone.rcg", "/Nodes 4 0\n/Edges\n0> 1\n");
    EXPECT_TRUE(contains(vorl("convert " + alone + " " + (folder / "f.nse").string()).err,
                         "2 nodes without a link"));
    EXPECT_FALSE(std::filesystem::exists(folder / "f.nse"));
}

TEST(Convert, GivesTheSameClustersInEveryFormat) {
    const Folder folder;
    for (const char* name : {"karate.nse", "lesmis.nse", "celegansneural.nsa"}) {
        const std::string network = DATA + name;
        const std::string clusters = vorl("cluster -q -o - --levels all " + network).out;
        const std::string communities = vorl("communities -q --table - " + network).out;
        ASSERT_TRUE(clusters.starts_with("# Clusters")) << network;
        std::size_t held = 0;
        for (const char* format :
             {"rcg", "list", "mtx", "metis", "pajek", "gml", "graphml", "json"}) {
            const std::string file = (folder / format).string() + ".gz";
            const std::string to = std::string(" --to ") + format + " ";
            const Outcome run = vorl("convert -q " + network + " " + file + to);
            // Matrices have no node 0, and neighbours no arcs.
            if (run.code == 1 && contains(run.err, "can't hold")) continue;
            ASSERT_EQ(run.code, 0) << run.err;
            ++held;
            const std::string as =
                std::string(" --format ") + format + " " + file +
                (std::string(format) == "list" && network.ends_with("a") ? " --directed" : "");
            EXPECT_EQ(vorl("cluster -q -o - --levels all" + as).out, clusters) << network << to;
            EXPECT_EQ(vorl("communities -q --table -" + as).out, communities) << network << to;
        }
        EXPECT_EQ(held, network.ends_with("karate.nse") ? 8 : 6) << network;
    }
}

TEST(Convert, SaysWhatAFormatCannotHold) {
    const Folder folder;
    const auto told = [&](const char* name, const std::string& text, const std::string& words) {
        const std::string file = folder.write(name, text);
        const Outcome run = vorl("convert " + file + " - " + words);
        EXPECT_EQ(run.code, 1) << run.out;
        return run.err.substr(std::min(run.err.size(), 6 + file.size()));
    };
    EXPECT_EQ(told("a.nse", "0 1\n1 2\n", "--to mtx"),
              ": there is a node 0 among 3 nodes, which the format mtx can't hold, as it numbers "
              "nodes from 1 on; gml, graphml, json and pajek can\n");
    EXPECT_TRUE(
        told("a.nse", "1 2\n2 9\n", "--to metis")
            .starts_with(": there is a node 9 among 3 nodes, which the format metis can't"));
    EXPECT_EQ(told("a.nse", "1 1\n1 2\n", "--to metis"),
              ": the node 1 has a link to itself, which the format metis can't hold; mtx can\n");
    EXPECT_EQ(told("a.nsa", "1 2\n", "--to metis"),
              ": the network has arcs, which the format metis can't hold; mtx can\n");
    EXPECT_EQ(told("a.nse", "1 2 0.5\n", "--to metis"),
              ": the link from 1 to 2 weighs 0.5, the format metis has whole numbers; mtx can hold "
              "it\n");
    EXPECT_EQ(told("a.csv", "Ann,Bob\n", "--to mtx --columns 1,2"),
              ": nodes have names, which the format mtx can't hold; list can\n");
    EXPECT_EQ(
        told("a.csv", "Ann,B\xFF\n", "--to json --columns 1,2"),
        ": the name \"B\xFF\" isn't in UTF-8, which the format json needs; list can hold it\n");
    EXPECT_EQ(
        told("a.csv", "Ann,B\x01\n", "--to graphml --columns 1,2"),
        ": the name \"B?\" has a control character, which the format graphml can't hold; json "
        "can\n");
    EXPECT_EQ(told("a.rcg", "/Nodes 3 1\n/Edges\n1> 2\n", "--to list"),
              ": 1 node without a link can't be told in a list\n");
}

TEST(Convert, HoldsNetworksWithoutLinks) {
    const Folder folder;
    const std::string nodes = folder.write("nodes.rcg", "/Nodes 3 1\n/Edges\n");
    const std::string told = ", \"nodes\": 3, \"edges\": 0, \"arcs\": 0, ";
    EXPECT_TRUE(contains(vorl("info --json " + nodes).out, told));
    EXPECT_TRUE(contains(vorl("info " + nodes).out, "components      3, the largest has 1 node"));
    for (const char* format : {"rcg", "mtx", "metis", "pajek", "gml", "graphml", "json"}) {
        const std::string file = (folder / format).string();
        const std::string as = std::string("--format ") + format + " " + file;
        EXPECT_EQ(vorl("convert " + nodes + " " + file + " --to " + format).err, "");
        EXPECT_TRUE(contains(vorl("info --json " + as).out, told)) << format;
        // There is nothing to cluster.
        const Outcome run = vorl("communities " + as);
        EXPECT_EQ(run.code, 1) << format;
        EXPECT_TRUE(contains(run.err, "the file ends without a link")) << run.err;
    }
    for (const char* format : {"nse", "list"})
        EXPECT_TRUE(contains(vorl("convert " + nodes + " - --to " + format).err,
                             "3 nodes without a link can't be told in"));
    EXPECT_EQ(vorl("info --estimate " + nodes).code, 1);
    // Of nodes that nothing names there are none.
    EXPECT_EQ(vorl("info " + folder.write("a.nse", "# Nodes: 3, Edges: 0\n")).code, 1);
}

TEST(Extract, KeepsSingleNodesWhereTheFormatHoldsThem) {
    const Folder folder;
    const std::string network = folder.write("n.nse", "1 2\n2 3\n3 4\n");
    const std::string clusters = folder.write("c.cnl", "1\n1 2 4\n7\n");
    const std::string files = "extract " + network + " " + clusters + " --cluster ";
    EXPECT_EQ(vorl(files + "1 --to pajek").out, "*Vertices 1\n1 \"1\"\n");
    EXPECT_EQ(vorl(files + "2 --to pajek").out,
              "*Vertices 3\n1 \"1\"\n2 \"2\"\n3 \"4\"\n*Edges\n1 2\n");
    const Outcome some = vorl(files + "2");
    EXPECT_EQ(some.out, "# Nodes: 2, Edges: 1, Weighted: 1\n1 2 1\n");
    EXPECT_TRUE(contains(some.err, "1 node without a link inside the cluster left out"))
        << some.err;
    const Outcome none = vorl(files + "1");
    EXPECT_EQ(none.code, 1);
    EXPECT_EQ(none.out, "");
    EXPECT_TRUE(contains(none.err, "c.cnl: cluster 1 has no link inside, and the format nse tells"))
        << none.err;
    EXPECT_TRUE(contains(vorl(files + "3").err, "cluster 3 has no node of the network"));
}

TEST(Info, TellsWhatTheFileHolds) {
    const Folder folder;
    const std::string file = folder.write(
        "n.rcg", "/Nodes 9 0\n/Edges\n0> 1:2 2:0.5 0:4\n1> 0:1 2\n3> 4\n/Arcs\n4> 3 3\n5> 6\n");
    EXPECT_EQ(vorl("info --json " + file).out,
              "{\"file\": \"" + file +
                  "\", \"nodes\": 9, \"edges\": 6, \"arcs\": 3, \"directed\": true, \"weighted\": "
                  "true, \"link_weight\": {\"sum\": 12.5, \"min\": 0.5, \"max\": 4}, \"degree\": "
                  "{\"min\": 0, \"max\": 2, \"mean\": 1.33333333, \"median\": 2}, "
                  "\"components\": 5, \"largest_component\": 3, \"isolated_nodes\": 2, "
                  "\"self_links\": 1, \"repeated_links\": 2, \"zero_weight_links\": 0}\n");
    EXPECT_TRUE(contains(vorl("info " + DATA + "celegansneural.nsa").out, "2,345 arcs"));
}

}  // namespace
}  // namespace vorl::test
