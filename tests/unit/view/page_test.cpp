// What is in a page: its data are read back as the page itself does, and compared with the
// hierarchy.
#include "sample.hpp"

#include "../../../lib/src/view/best_level.hpp"
#include "../../../lib/src/view/colours.hpp"

#include <vorl/reading/source.hpp>
#include <vorl/reading/unpack.hpp>
#include <vorl/view.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace vorl::view {

namespace {

using test::Sample;

std::uint32_t wordAt(const std::string& bytes, std::size_t at) {
    std::uint32_t word = 0;
    for (std::size_t i = 4; i-- > 0;) word = word << 8 | static_cast<unsigned char>(bytes[at + i]);
    return word;
}

/// The arrays of a page.
class PageData {
public:
    explicit PageData(const std::string& page) {
        const std::string mark = "data-packing=\"gzip\">";
        const std::size_t begin = page.find(mark) + mark.size();
        const std::string packed = bytesOf(page.substr(begin, page.find('<', begin) - begin));
        const auto source =
            unpacked(std::make_unique<TextSource>(packed), Packing::GZIP, "page", 1 << 24);
        char block[4096];
        while (const std::size_t count = source->read(block, sizeof block))
            m_bytes.append(block, count);
        m_first = 4 + wordAt(m_bytes, 0);
    }

    std::vector<std::uint32_t> numbers(const std::string& name) const {
        const std::string bytes = section(name, "number");
        std::vector<std::uint32_t> values;
        std::int64_t former = 0;
        for (std::size_t i = 0; i < bytes.size();) {
            std::uint64_t code = 0;
            int shift = 0;
            do {
                code |= std::uint64_t{static_cast<unsigned char>(bytes[i]) & 127u} << shift;
                shift += 7;
            } while (static_cast<unsigned char>(bytes[i++]) >= 128);
            former += code % 2 ? -static_cast<std::int64_t>((code + 1) / 2)
                               : static_cast<std::int64_t>(code / 2);
            values.push_back(static_cast<std::uint32_t>(former));
        }
        return values;
    }
    std::vector<float> floats(const std::string& name) const {
        const std::string bytes = section(name, "float");
        std::vector<float> values;
        for (std::size_t i = 0; i < bytes.size(); i += 4)
            values.push_back(std::bit_cast<float>(wordAt(bytes, i)));
        return values;
    }

private:
    static std::string bytesOf(const std::string& base64) {
        const std::string letters =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string bytes;
        std::uint32_t group = 0;
        int bits = 0;
        for (const char c : base64) {
            if (c == '=') break;
            group = (group << 6 | static_cast<std::uint32_t>(letters.find(c))) & 0xffff;
            bits += 6;
            if (bits < 8) continue;
            bits -= 8;
            bytes += static_cast<char>(group >> bits & 255);
        }
        return bytes;
    }

    std::string section(const std::string& name, const std::string& kind) const {
        const std::string mark = "[\"" + name + "\",\"" + kind + "\",";
        const std::size_t at = m_bytes.find(mark);
        EXPECT_LT(at, m_first) << name;
        std::size_t end = 0;
        const std::string rest = m_bytes.substr(at + mark.size(), 40);
        const std::size_t begin = std::stoul(rest, &end);
        return m_bytes.substr(m_first + begin, std::stoul(rest.substr(end + 1)));
    }

    std::string m_bytes;
    std::size_t m_first = 0;
};

/// The clusters of a page with the places in them.
struct Shown {
    std::vector<std::uint32_t> id, parent, own, placeNode, nodeId;
    std::vector<float> share;
    /// By the ids of cluster and node; those of a cluster's own places.
    std::map<std::pair<Id, Id>, float> shares;

    explicit Shown(const PageData& data)
        : id(data.numbers("cluster.id")),
          parent(data.numbers("cluster.parent")),
          own(data.numbers("cluster.own")),
          placeNode(data.numbers("place.node")),
          nodeId(data.numbers("node.id")),
          share(data.floats("place.share")) {
        std::size_t place = 0;
        for (std::size_t i = 0; i < id.size(); ++i)
            for (std::uint32_t j = 0; j < own[i]; ++j, ++place)
                EXPECT_TRUE(
                    shares.emplace(std::pair(id[i], nodeId[placeNode[place]]), share[place]).second)
                    << "node " << nodeId[placeNode[place]] << " is twice in cluster " << id[i];
        EXPECT_EQ(place, placeNode.size());
    }
};

ViewOptions allLevels(unsigned threads = 0) {
    ViewOptions options;
    options.allLevels = true;
    options.threads = threads;
    return options;
}

TEST(Page, HasEveryNodeOnceInEachClusterThatOwnsItWithItsShare) {
    const Sample sample(12);
    const Shown shown(PageData(viewPage(sample.network, sample.file, allLevels())));
    ASSERT_EQ(shown.id.size(), sample.file.clusters() + std::size_t{1});
    ASSERT_EQ(shown.nodeId.size(), sample.network.size());
    std::size_t several = 0;
    std::size_t placed = 0;
    for (HierarchyFile::Item node = 0; node < sample.file.nodes(); ++node) {
        several += sample.file.owners(node).size() > 1;
        for (const auto& owner : sample.file.owners(node)) {
            const auto found =
                shown.shares.find(std::pair(sample.file.id(owner.item), sample.file.id(node)));
            ASSERT_NE(found, shown.shares.end());
            EXPECT_FLOAT_EQ(found->second, static_cast<float>(owner.share));
            ++placed;
        }
    }
    EXPECT_EQ(placed, shown.shares.size());
    EXPECT_GT(several, 10u) << "the sample has nodes in several clusters";
}

TEST(Page, MembersOfClustersAreThoseOfTheHierarchy) {
    const Sample sample(12);
    const PageData data(viewPage(sample.network, sample.file, allLevels()));
    const Shown shown(data);
    const std::vector<std::uint32_t> members = data.numbers("cluster.members");
    const std::vector<float> size = data.floats("cluster.size");
    // Parts that lie in several clusters are told apart; the others lie where they stand.
    std::map<std::uint32_t, std::vector<std::pair<std::uint32_t, float>>> owners;
    const std::vector<std::uint32_t> sharers = data.numbers("shared.cluster");
    const std::vector<std::uint32_t> sharedOwners = data.numbers("shared.owner");
    const std::vector<float> sharedShares = data.floats("shared.share");
    for (std::size_t i = 0; i < sharers.size(); ++i)
        owners[sharers[i]].emplace_back(sharedOwners[i], sharedShares[i]);
    std::vector<std::map<Id, double>> inside(shown.id.size());
    std::size_t place = 0;
    for (std::uint32_t i = 0; i < shown.id.size(); ++i)
        for (std::uint32_t j = 0; j < shown.own[i]; ++j, ++place) {
            // Up all ways.
            std::vector<std::pair<std::uint32_t, double>> ways{
                {i, static_cast<double>(shown.share[place])}};
            while (!ways.empty()) {
                const auto [at, part] = ways.back();
                ways.pop_back();
                if (at == 0) continue;
                inside[at][shown.nodeId[shown.placeNode[place]]] += part;
                if (const auto several = owners.find(at); several != owners.end())
                    for (const auto& [owner, share] : several->second)
                        ways.emplace_back(owner, part * static_cast<double>(share));
                else
                    ways.emplace_back(shown.parent[at], part);
            }
        }
    for (std::uint32_t i = 1; i < shown.id.size(); ++i) {
        const auto told = sample.file.members(sample.file.cluster(shown.id[i]));
        ASSERT_EQ(inside[i].size(), told.size()) << shown.id[i];
        EXPECT_EQ(members[i], told.size());
        double sum = 0;
        for (const auto& [item, share] : told) {
            EXPECT_NEAR(inside[i][sample.file.id(item)], share, 1e-6);
            sum += share;
        }
        EXPECT_NEAR(static_cast<double>(size[i]), sum, 1e-4);
    }
}

TEST(Page, PiecesHaveTheLinksOfTheNetwork) {
    const Sample sample(12);
    const PageData data(viewPage(sample.network, sample.file, allLevels()));
    // The whole is small enough to be one piece, whose nodes are in the order of their numbers.
    ASSERT_EQ(data.numbers("piece.cluster"), std::vector<std::uint32_t>{0});
    const std::vector<std::uint32_t> ids = data.numbers("node.id");
    const std::vector<std::uint32_t> counts = data.numbers("piece.counts");
    const std::vector<std::uint32_t> ends = data.numbers("piece.ends");
    std::map<Id, std::vector<Id>> neighbours;
    std::size_t at = 0;
    for (std::size_t i = 0; i < counts.size(); ++i)
        for (std::uint32_t j = 0; j < counts[i]; ++j, ++at) {
            neighbours[ids[i]].push_back(ids[ends[at]]);
            neighbours[ids[ends[at]]].push_back(ids[i]);
        }
    for (Id node = 0; node < sample.network.size(); ++node) {
        std::vector<Id>& found = neighbours[sample.network.ids[node]];
        std::sort(found.begin(), found.end());
        std::vector<Id> told;
        for (Size i = sample.network.begin[node]; i < sample.network.begin[node + 1]; ++i)
            told.push_back(sample.network.ids[sample.network.neighbour[i]]);
        EXPECT_EQ(found, told) << node;
    }
}

TEST(Page, IsTheSameForAnyNumberOfThreads) {
    // Large enough for several pieces.
    const Sample sample(110);
    const std::string page = viewPage(sample.network, sample.file, allLevels(1));
    EXPECT_GT(PageData(page).numbers("piece.cluster").size(), 5u);
    for (const unsigned threads : {2u, 3u, 8u})
        EXPECT_EQ(viewPage(sample.network, sample.file, allLevels(threads)) == page, true)
            << threads;
}

/// By its definition: pairs of nodes that are together, by the links between them less those that
/// their strengths let expect.
double modularity(const FlatNetwork& network, const std::vector<Number>& of) {
    std::vector<double> strength(network.size());
    double all = 0;
    for (Id node = 0; node < network.size(); ++node)
        all += strength[node] = static_cast<double>(network.degree(node));
    double sum = 0;
    for (Id a = 0; a < network.size(); ++a) {
        for (Size i = network.begin[a]; i < network.begin[a + 1]; ++i)
            sum += of[a] == of[network.neighbour[i]];
        for (Id b = 0; b < network.size(); ++b)
            if (of[a] == of[b]) sum -= strength[a] * strength[b] / all;
    }
    return sum / all;
}

TEST(BestLevel, HasTheHighestModularity) {
    for (const Id groups : {4u, 12u}) {
        const Sample sample(groups);
        const Nest nest(sample.network, sample.file);
        double most = -1;
        LevelNum best = 0;
        for (LevelNum level = 0; level < sample.file.levels(); ++level) {
            std::vector<Number> of(sample.network.size());
            const std::vector<Number> at = standing(sample.file, nest, level);
            for (Id node = 0; node < of.size(); ++node) {
                of[node] = at[nest.clusterOf[nest.home[node]]];
                if (of[node] == NONE) of[node] = static_cast<Number>(at.size()) + node;
            }
            const double own = modularity(sample.network, of);
            if (own > most - 1e-12) {
                most = own;
                best = level;
            }
        }
        for (const unsigned threads : {1u, 3u}) {
            detail::Workers workers(threads);
            EXPECT_EQ(bestLevel(sample.network, sample.file, nest, workers), best) << groups;
        }
    }
}

}  // namespace

}  // namespace vorl::view
