// What random overlapping clusters of random networks measure, and the networks that they form,
// by sums over all pairs of nodes; and the same clusters written and chosen in other ways.
#include "app/compare_command.hpp"
#include "support/networks.hpp"
#include "support/trace.hpp"

#include <vorl/reading/evaluation.hpp>
#include <vorl/reading/quotient.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <numeric>

namespace vorl::test {
namespace {

using Matrix = std::vector<std::vector<double>>;

/// A network as its text tells it, and as it is measured: half of an arc in each direction.
struct Weighed {
    std::string text;
    NetworkFormat format = NetworkFormat::NSE;
    Matrix links;   // as they stand in the text
    Matrix weight;  // of an edge at both places, of a self link twice
    double total = 0;
};

Weighed randomWeighed(Random& rnd, Id nodes) {
    Weighed net;
    net.weight.assign(nodes, std::vector<double>(nodes));
    net.links = net.weight;
    const bool directed = rnd.chance(0.5);
    net.format = directed ? NetworkFormat::NSA : NetworkFormat::NSE;
    std::set<std::pair<Id, Id>> seen;
    for (Id i = 0; i < 3 * nodes; ++i) {
        const Id src = i < nodes ? i : rnd.below(nodes);
        const Id dst = i < nodes ? (i + 1) % nodes : rnd.below(nodes);
        if (!seen.insert(directed || src < dst ? std::pair(src, dst) : std::pair(dst, src)).second)
            continue;
        const double weight = (1 + rnd.below(400)) / 16.;
        char line[64];
        std::snprintf(line, sizeof line, "%u %u %g\n", src, dst, weight);
        net.text += line;
        net.links[src][dst] = weight;
        const double part = directed && src != dst ? weight / 2 : weight;
        net.weight[src][dst] += part;
        net.weight[dst][src] += part;
        net.total += 2 * part;
    }
    return net;
}

Network readText(const std::string& text, NetworkFormat format) {
    TextSource source(text);
    return readNetwork(source, {.file = "net", .format = format});
}

/// Shares of each node in each cluster, 0 where it isn't in it.
Matrix randomShares(Random& rnd, Id nodes, bool whole) {
    Matrix shares(2 + rnd.below(6), std::vector<double>(nodes));
    for (Id node = 0; node < nodes; ++node) {
        if (!whole && rnd.chance(0.2)) continue;
        double left = 1;
        while (left > 0) {
            const double part = rnd.chance(0.6) ? left : left * (1 + rnd.below(3)) / 4;
            shares[rnd.below(static_cast<Id>(shares.size()))][node] += part;
            left = part < left && left > 0.1 ? left - part : 0;
            if (left == 0) break;
        }
        double sum = 0;
        for (const auto& cluster : shares) sum += cluster[node];
        for (auto& cluster : shares) cluster[node] /= sum;
    }
    std::erase_if(shares, [](const auto& cluster) {
        return std::all_of(cluster.begin(), cluster.end(), [](double share) { return share == 0; });
    });
    return shares;
}

/// @param order of the clusters
std::string clustersOf(const Matrix& shares, const std::vector<Id>& order, bool numbered) {
    std::string text = numbered ? "# Clusters: " + std::to_string(shares.size()) +
                                      ", Nodes: 0, Fuzzy: 1, Numbered: 1\n"
                                : "";
    for (const Id cluster : order) {
        if (numbered) text += std::to_string(cluster + 100) + "> ";
        for (Id node = 0; node < shares[cluster].size(); ++node) {
            char member[64];
            std::snprintf(member, sizeof member, "%u:%.9g ", node, shares[cluster][node]);
            if (shares[cluster][node] > 0) text += member;
        }
        text += "\n";
    }
    return text;
}

std::string tableOf(const Matrix& shares) {
    std::string text = "share,cluster,node\n";
    for (Id node = static_cast<Id>(shares[0].size()); node-- > 0;)
        for (Id cluster = 0; cluster < shares.size(); ++cluster) {
            char row[64];
            std::snprintf(row, sizeof row, "%.9g,%u,%u\n", shares[cluster][node], cluster, node);
            if (shares[cluster][node] > 0) text += row;
        }
    return text;
}

/// Sums over the links between each two clusters. What a node has with itself goes into its
/// clusters alone, by its shares.
Matrix between(const Matrix& links, const Matrix& shares) {
    Matrix sums(shares.size(), std::vector<double>(shares.size()));
    for (std::size_t a = 0; a < links.size(); ++a)
        for (std::size_t b = 0; b < links.size(); ++b)
            for (std::size_t c = 0; c < shares.size(); ++c)
                for (std::size_t d = 0; d < shares.size(); ++d) {
                    if (a == b && c == d) sums[c][c] += links[a][a] * shares[c][a];
                    if (a != b) sums[c][d] += links[a][b] * shares[c][a] * shares[d][b];
                }
    return sums;
}

Intrinsics defined(const Weighed& net, const Matrix& shares, double gamma) {
    const Matrix sums = between(net.weight, shares);
    double inner = 0;
    double expected = 0;
    double cuts = 0;
    for (std::size_t c = 0; c < shares.size(); ++c) {
        double weight = 0;
        for (std::size_t a = 0; a < net.weight.size(); ++a)
            for (const double link : net.weight[a]) weight += shares[c][a] * link;
        inner += sums[c][c];
        expected += weight * weight / net.total;
        const double side = std::min(weight, net.total - weight);
        cuts += side > 0 ? std::clamp((weight - sums[c][c]) / side, 0., 1.) : weight > sums[c][c];
    }
    const double inside = inner / expected;
    const double outside = (net.total - inner) / (net.total - expected);
    const bool plain = inner > 1e-9 && net.total - inner > 1e-9 * net.total;
    const double estimate = plain ? (inside - outside) / std::log(inside / outside) : 1;
    Intrinsics result;
    result.mod = static_cast<float>((inner - gamma * expected) / net.total);
    result.cdn = static_cast<float>(cuts / static_cast<double>(shares.size()));
    result.gamma = static_cast<float>(estimate);
    result.sgmod = static_cast<float>((inner - estimate * expected) / net.total);
    return result;
}

void expectMeasures(const Intrinsics& found, const Intrinsics& expected, const std::string& what) {
    EXPECT_NEAR(found.mod, expected.mod, 2e-6f) << what;
    EXPECT_NEAR(found.cdn, expected.cdn, 2e-6f) << what;
    EXPECT_NEAR(found.gamma, expected.gamma, 1e-5f * expected.gamma) << what;
    EXPECT_NEAR(found.sgmod, expected.sgmod, 2e-6f) << what;
}

TEST(RandomClusters, MeasureWhatSumsOverAllPairsGive) {
    Random rnd(101);
    Trace trace;
    for (int round = 0; round < 80; ++round) {
        const Id nodes = 4 + rnd.below(25);
        const Weighed net = randomWeighed(rnd, nodes);
        const Matrix shares = randomShares(rnd, nodes, round % 2);
        if (shares.size() < 2) continue;
        const double gamma = round % 3 == 0 ? rnd.below(300) / 100. : 1;
        const Intrinsics expected = defined(net, shares, gamma);
        std::vector<Id> order(shares.size());
        std::iota(order.begin(), order.end(), Id{0});
        const auto measured = [&](ClustersFile file, const std::string& text) {
            Network network = readText(text, net.format);
            return evaluateClusters(network, std::move(file), "net", gamma);
        };
        const std::string list = clustersOf(shares, order, false);
        const std::string what = net.text + list;
        expectMeasures(measured(parseClusters(list, "c"), net.text), expected, what);
        // Neither the order of clusters nor the way of telling them matters.
        std::reverse(order.begin(), order.end());
        const std::string numbered = clustersOf(shares, order, true);
        expectMeasures(measured(parseClusters(numbered, "c"), net.text), expected, numbered);
        const std::string table = tableOf(shares);
        expectMeasures(measured(parseTable(table, "c"), net.text), expected, table);
        if (HasFailure()) return;
    }
}

TEST(RandomClusters, FormANetworkThatMeasuresTheSame) {
    Random rnd(103);
    Trace trace;
    for (int round = 0; round < 60; ++round) {
        const Id nodes = 4 + rnd.below(25);
        const Weighed net = randomWeighed(rnd, nodes);
        const bool whole = round % 2;
        const Matrix shares = randomShares(rnd, nodes, whole);
        std::vector<Id> order(shares.size());
        std::iota(order.begin(), order.end(), Id{0});
        const std::string list = clustersOf(shares, order, true);
        const Network network = readText(net.text, net.format);
        const Quotient quotient = quotientOf(network, parseClusters(list, "c"));
        Size covered = 0;
        for (Id node = 0; node < nodes; ++node)
            covered += std::any_of(shares.begin(), shares.end(),
                                   [node](const auto& cluster) { return cluster[node] > 0; });
        EXPECT_EQ(quotient.uncovered, nodes - covered);
        Matrix found(shares.size(), std::vector<double>(shares.size()));
        std::string text;
        std::string single;
        for (const auto& [src, dst, weight, arc] : quotient.links) {
            EXPECT_EQ(arc, net.format == NetworkFormat::NSA);
            EXPECT_EQ(std::exchange(found[src - 100][dst - 100], static_cast<double>(weight)), 0);
            char line[64];
            std::snprintf(line, sizeof line, "%u %u %.9g\n", src, dst, static_cast<double>(weight));
            text += line;
        }
        Matrix expected = between(net.links, shares);
        const Matrix held = between(net.weight, shares);
        for (Id a = 0; a < shares.size(); ++a) {
            expected[a][a] = held[a][a] / 2;
            for (Id b = 0; b < a && net.format == NetworkFormat::NSE; ++b)
                expected[b][a] += std::exchange(expected[a][b], 0);
        }
        for (Id a = 0; a < shares.size(); ++a)
            for (Id b = 0; b < shares.size(); ++b)
                ASSERT_NEAR(found[a][b], expected[a][b], 1e-6 * (1 + expected[a][b]))
                    << net.text << list << a << " " << b;
        // Its nodes, each alone, are as good as the clusters in the network.
        if (!whole || shares.size() < 2 || quotient.linkless != 0) continue;
        for (const Id cluster : order) single += std::to_string(cluster + 100) + "\n";
        Network formed = readText(text, net.format);
        expectMeasures(evaluateClusters(formed, parseClusters(single, "s"), "q"),
                       defined(net, shares, 1), net.text + list);
        if (HasFailure()) return;
    }
}

/// Members of each cluster that are among the chosen nodes.
std::vector<std::set<Id>> chosen(const std::vector<std::set<Id>>& clusters,
                                 const std::set<Id>& nodes) {
    std::vector<std::set<Id>> result;
    for (const std::set<Id>& cluster : clusters) {
        std::set<Id> left;
        std::set_intersection(cluster.begin(), cluster.end(), nodes.begin(), nodes.end(),
                              std::inserter(left, left.end()));
        if (!left.empty()) result.push_back(left);
    }
    return result;
}

TEST(ComparedClusters, AreThoseOfTheChosenNodes) {
    Random rnd(107);
    const auto random = [&rnd](Id first) {
        std::vector<std::set<Id>> clusters(1 + rnd.below(6));
        for (auto& cluster : clusters)
            for (Id i = 0; i < 1 + rnd.below(8); ++i)
                cluster.insert(first + (rnd.chance(0.1) ? 4000000000u : 0) + 5 * rnd.below(12));
        return clusters;
    };
    const auto fileOf = [](const std::vector<std::set<Id>>& clusters, const char* name) {
        std::string text;
        for (const auto& cluster : clusters) {
            for (const Id node : cluster) text += std::to_string(node) + " ";
            text += "\n";
        }
        return parseClusters(text, name);
    };
    const auto nodesOf = [](const std::vector<std::set<Id>>& clusters) {
        std::set<Id> nodes;
        for (const auto& cluster : clusters) nodes.insert(cluster.begin(), cluster.end());
        return nodes;
    };
    for (int round = 0; round < 60; ++round) {
        const auto first = random(0);
        const auto second = random(20);
        const std::set<Id> a = nodesOf(first);
        const std::set<Id> b = nodesOf(second);
        std::set<Id> both = a;
        both.insert(b.begin(), b.end());
        const std::pair<app::NodeSet, std::set<Id>> sets[] = {
            {app::NodeSet::UNION, both},
            {app::NodeSet::COMMON, nodesOf(chosen({a}, b))},
            {app::NodeSet::FIRST, a},
            {app::NodeSet::SECOND, b}};
        for (const auto& [set, nodes] : sets) {
            const ClustersFile x = fileOf(first, "x");
            const ClustersFile y = fileOf(second, "y");
            const std::vector<Id> found = app::chosenNodes(x, y, set);
            ASSERT_EQ(found, std::vector<Id>(nodes.begin(), nodes.end()));
            for (const auto& [file, clusters] : {std::pair(&x, &first), std::pair(&y, &second)}) {
                const auto expected = chosen(*clusters, nodes);
                if (expected.empty()) {
                    EXPECT_THROW(app::coverOf(*file, found), InputError);
                    continue;
                }
                const Size count = rnd.chance(0.5) ? 0 : nodes.size() + rnd.below(100);
                const Cover cover = app::coverOf(*file, found, count);
                EXPECT_EQ(cover.nodes(), std::max<Size>(count, nodes.size()));
                ASSERT_EQ(cover.clusters(), expected.size());
                for (Id i = 0; i < expected.size(); ++i) {
                    std::set<Id> members;
                    for (const Id place : cover.members(i)) members.insert(found[place]);
                    EXPECT_EQ(members, expected[i]);
                }
            }
        }
    }
}

TEST(ComparedClusters, PartitionsAreMeasuredAsDefined) {
    Random rnd(109);
    for (int round = 0; round < 100; ++round) {
        const Id nodes = 2 + rnd.below(40);
        const Id x = 1 + rnd.below(6);
        const Id y = 1 + rnd.below(6);
        std::vector<Id> inX(nodes), inY(nodes);
        std::vector<std::vector<Id>> listsX(x), listsY(y);
        for (Id node = 0; node < nodes; ++node) {
            inX[node] = rnd.below(x);
            inY[node] = rnd.chance(0.5) ? inX[node] % y : rnd.below(y);
            listsX[inX[node]].push_back(node);
            listsY[inY[node]].push_back(node);
        }
        const Agreement found = agreement(Cover(nodes, listsX), Cover(nodes, listsY));
        double both = 0;
        double onlyX = 0;
        double onlyY = 0;
        double every = 0;
        for (Id a = 0; a < nodes; ++a)
            for (Id b = 0; b < a; ++b) {
                ++every;
                onlyX += inX[a] == inX[b];
                onlyY += inY[a] == inY[b];
                both += inX[a] == inX[b] && inY[a] == inY[b];
            }
        const double chance = onlyX * onlyY / every;
        const double most = (onlyX + onlyY) / 2;
        const auto entropy = [nodes](const auto& groups) {
            std::map<std::size_t, double> counts;
            for (Id node = 0; node < nodes; ++node) ++counts[groups(node)];
            double sum = 0;
            for (const auto& [group, count] : counts)
                sum -= count / nodes * std::log(count / nodes);
            return sum;
        };
        const double ofX = entropy([&](Id node) { return std::size_t{inX[node]}; });
        const double ofY = entropy([&](Id node) { return std::size_t{inY[node]}; });
        const double joint =
            entropy([&](Id node) { return std::size_t{inX[node]} * 100 + inY[node]; });
        ASSERT_TRUE(found.ari && found.nmi && found.vi);
        EXPECT_NEAR(*found.ari, most == chance ? 1 : (both - chance) / (most - chance), 1e-9);
        EXPECT_NEAR(*found.vi, 2 * joint - ofX - ofY, 1e-9);
        EXPECT_NEAR(*found.nmi, ofX + ofY > 0 ? 2 * (ofX + ofY - joint) / (ofX + ofY) : 1, 1e-9);
        EXPECT_NEAR(found.omega, *found.ari, 1e-12);
    }
}

}  // namespace
}  // namespace vorl::test
