// The reader of clusters: header, members, shares and faults.
#include <vorl/fileio/parser_cnl.hpp>

#include "support/folder.hpp"
#include "support/links_text.hpp"
#include "support/trace.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace vorl::test {
namespace {

/// A text read as a file onto the nodes 0 to 9.
struct Read {
    Nodes<WeightedLinks> nodes;
    IdItems<Node<WeightedLinks>> idnodes;
    std::shared_ptr<RawMembership<WeightedLinks>> membership;
    bool fuzzy = false;
    std::string trace;

    explicit Read(const std::string& text) {
        for (Id id = 0; id < 10; ++id) idnodes[id] = &nodes.emplace_back(id);
        const Folder folder;
        Trace traced;
        CnlParser parser(folder.write("clusters", text));
        fuzzy = parser.fuzzy();
        membership = parser.build<WeightedLinks>(idnodes);
        trace = traced.take();
    }

    /// The clusters, by their place, with their members.
    std::string clusters() const {
        std::string result;
        for (const auto& cl : membership->clusters) {
            for (const auto* member : cl.des) result += std::to_string(member->id) + " ";
            result += "| ";
        }
        return result;
    }

    /// The stated shares of a node, by the places of the clusters.
    std::string shares(Id id) const {
        const auto found = membership->ndshares.find(idnodes.at(id));
        if (found == membership->ndshares.end()) return "none";
        std::string result;
        for (const auto& [dest, share] : found->second) {
            int place = 0;
            for (auto cl = membership->clusters.begin(); &*cl != dest; ++cl) ++place;
            result += std::to_string(place) + ":" + digits(double{share}) + " ";
        }
        return result;
    }
};

TEST(CnlHeader, TellsOfTheClusters) {
    const auto omitted = [](const std::string& what, const std::string& fault) {
        return "WARNING header(), the " + what + " is invalid, omitted: " + fault +
               ": Terminating symbol is invalid\n";
    };
    const struct {
        const char* text;
        bool fuzzy;
        bool numbered;
        std::string trace = {};
    } cases[] = {
        {"", true, false},
        {"# Clusters: 2, Nodes: 10, Fuzzy: 0, Numbered: 1", false, true},
        {" #\tcLUSTERS:\t2 nodes: 3 FUZZY: 0 numbered: 2 more", false, true},
        {"#Clusters: 2 Numbered: 1", true, true},
        {"# Clusters: 0, Fuzzy: 0", false, false},
        {"# Clusters:", true, false},
        {"# Clusters: 2, Nodes:", true, false},
        {"# Clusters: 2, Items: 3, Numbered: 1", true, false},
        // Keys have an order; only the first matching comment before the first cluster counts.
        {"# Clusters: 2, Numbered: 1, Fuzzy: 0", true, true},
        {"# Nodes: 3, Numbered: 1\n# Clusters:5", true, false},
        {"\n# text\n\n# Clusters: 2, Numbered: 1", true, true},
        {"# Clusters: 2\n# Clusters: 9, Numbered: 1", true, false},
        // Bad values.
        {"# Clusters: 2x, Nodes: 3\n# Clusters: 2, Fuzzy: 0", false, false,
         omitted("clusters number", numberFault("2x, Nodes: 3", "2"))},
        {"# Clusters: 2, Nodes: 4294967296, Fuzzy: 0", true, false,
         omitted("nodes number", numberFault("4294967296, Fuzzy: 0", "4294967296"))},
        {"# Clusters: 2, Fuzzy: Numbered: 1", true, true,
         omitted("fuzzy value", numberFault("Numbered: 1", "0"))},
        {"# Clusters: 2, Numbered: yes", true, false,
         omitted("numbered value", numberFault("yes", "0"))},
    };
    for (const auto& header : cases) {
        const std::string text = header.text + std::string("\n");
        const Read read(text + (header.numbered ? "7> 1 2\n8>3\n" : "1 2\n3\n"));
        EXPECT_EQ(read.clusters(), "1 2 | 3 | ") << text;
        EXPECT_EQ(read.fuzzy, header.fuzzy) << text;
        EXPECT_EQ(read.trace, header.trace) << text;
        if (!header.numbered) continue;
        EXPECT_EQ(read.membership->clusters.front().id, 7) << text;
        EXPECT_EQ(read.membership->clusters.back().id, 8) << text;
    }
}

TEST(CnlBody, MakesOwnersOfTheNodes) {
    const Read read("\t3 1 2:0.25 \n\n # 5\n2:0.5\t4:1 1\n 9 2:0.25 9");
    EXPECT_EQ(read.clusters(), "3 1 2 | 2 4 1 | 9 2 9 | ");
    EXPECT_EQ(read.shares(2), "0:0.25 1:0.5 2:0.25 ");
    EXPECT_EQ(read.shares(4) + read.shares(1) + read.shares(9), "nonenonenone");
    const auto& owners = read.idnodes.at(2)->owners;
    ASSERT_EQ(owners.size(), 3);
    const auto& clusters = read.membership->clusters;
    auto cl = clusters.begin();
    for (const auto& owner : owners) {
        EXPECT_EQ(owner.dest, &*cl++);
        EXPECT_EQ(owner.numac, 0);
    }
    // A node twice in a line has two owners.
    EXPECT_EQ(read.idnodes.at(9)->owners.size(), 2);
    EXPECT_EQ(clusters.front().levnum, 0);
    // Clusters without numbers take theirs from the counter.
    EXPECT_EQ(std::next(clusters.begin())->id, clusters.front().id + 1);
    EXPECT_EQ(Read("").clusters() + Read("# Clusters: 0\n").clusters(), "");
    EXPECT_EQ(Read("# Clusters: 2, Numbered: 1\n5>1\n6> \n").clusters(), "1 | | ");
}

TEST(CnlBody, RefusesWhatIsNoMember) {
    const auto refused = [](const std::string& text) {
        return errorOf<std::invalid_argument>([&] { Read read(text); });
    };
    const std::string node = ": Node id is invalid\n";
    EXPECT_EQ(refused("1 x\n"), numberFault("x", "0") + node);
    EXPECT_EQ(refused("1 2,3\n"), numberFault("2,3", "2") + node);
    EXPECT_EQ(refused("1 4294967295\n"), numberFault("4294967295", "4294967295") + node);
    EXPECT_EQ(refused("5> 1\n"), numberFault("5> 1", "5") + node);
    const std::string share = ": The share is invalid\n";
    EXPECT_EQ(refused("1:0 2\n"), numberFault("0 2", "0.000000") + share);
    EXPECT_EQ(refused("1:1.5\n"), numberFault("1.5", "1.500000") + share);
    EXPECT_EQ(refused("1:nan\n"), numberFault("nan", "nan") + share);
    EXPECT_EQ(refused("1:0.5,2\n"), numberFault("0.5,2", "0.500000") + share);
    EXPECT_EQ(refused("1:\n"), numberFault("", "0.000000") + share);
    const std::string header = "# Clusters: 1, Numbered: 1\n";
    const std::string number = ": Cluster id is invalid\n";
    EXPECT_EQ(refused(header + "1 2\n"), numberFault("1 2", "1") + number);
    EXPECT_EQ(refused(header + "5 > 1\n"), numberFault("5 > 1", "5") + number);
    EXPECT_EQ(refused(header + "4294967295> 1\n"),
              numberFault("4294967295> 1", "4294967295") + number);
    EXPECT_EQ(errorOf<std::out_of_range>([] { Read read("1 2\n3 10\n"); }),
              "build(), the member is not among the nodes: #10\n");
}

TEST(CnlBodyDeathTest, KeepsToTheHeader) {
    EXPECT_DEATH(Read("# Clusters: 3\n1\n2\n"), "build\\(\\), clusters size validation failed");
    EXPECT_DEATH(Read("# Clusters: 1\n"), "build\\(\\), clusters size validation failed");
    EXPECT_DEATH(Read("# Clusters: 2, Nodes: 1\n1:0.5 2:0.5\n1:0.5 2:0.5\n"),
                 "build\\(\\), nodes size validation failed");
    EXPECT_EQ(Read("# Clusters: 2, Nodes: 1\n1:0.5 2\n1:0.5 2\n").clusters(), "1 2 | 1 2 | ");
    EXPECT_DEATH(Read("1:0.5 1:0.5\n"), "insorted\\(\\), elements must be unique");
}

}  // namespace
}  // namespace vorl::test
