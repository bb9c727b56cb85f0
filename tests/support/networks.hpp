/// @file
/// Small networks for tests: lists of links, generators of many shapes, and their nodes.
#pragma once

#include <vorl/types/item.hpp>

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vorl::test {

struct TestLink {
    Id src;
    Id dst;
    float weight = 1;
};

/// A network as lists: self links are given apart, and repeated links are not allowed.
struct TestNetwork {
    std::string name;
    bool directed = false;
    bool weighted = false;
    Id nodesNum = 0;
    std::vector<TestLink> links;
    std::vector<std::pair<Id, float>> selfs;

    TestNetwork() = default;
    TestNetwork(std::string title, Id nodes) : name(std::move(title)), nodesNum(nodes) {}

    void add(Id src, Id dst, float weight = 1) {
        if (src == dst) return;
        const auto key = directed || src < dst ? std::pair(src, dst) : std::pair(dst, src);
        if (m_seen.insert(key).second) links.push_back({src, dst, weight});
    }

private:
    std::set<std::pair<Id, Id>> m_seen;
};

template <class LinksT>
Nodes<LinksT> makeNodes(const TestNetwork& network) {
    Nodes<LinksT> nodes;
    std::vector<Node<LinksT>*> byId;
    for (Id id = 0; id < network.nodesNum; ++id) byId.push_back(&nodes.emplace_back(id));
    const auto insert = [](Node<LinksT>* src, Node<LinksT>* dst, float weight) {
        src->links.emplace(findDest(src->links.begin(), src->links.end(), dst), dst, weight);
    };
    for (const TestLink& ln : network.links) {
        insert(byId[ln.src], byId[ln.dst], ln.weight);
        if (!network.directed) insert(byId[ln.dst], byId[ln.src], ln.weight);
    }
    for (const auto& [id, weight] : network.selfs) byId[id]->addWeight(2.0 * weight);
    return nodes;
}

/// The same draws on every platform, unlike the distributions of the standard library.
class Random {
public:
    explicit Random(std::uint64_t seed) : m_engine(seed) {}

    /// In [0, bound).
    std::uint32_t below(std::uint32_t bound) {
        return static_cast<std::uint32_t>(m_engine() % bound);
    }
    bool chance(double p) { return static_cast<double>(m_engine() >> 11) * 0x1p-53 < p; }

private:
    std::mt19937_64 m_engine;
};

inline TestNetwork sparse(Random& rnd, Id n, double degree) {
    TestNetwork net("sparse", n);
    for (Id i = 0; i < static_cast<Id>(n * degree / 2); ++i) net.add(rnd.below(n), rnd.below(n));
    return net;
}

inline TestNetwork ring(Id n) {
    TestNetwork net("ring", n);
    for (Id i = 0; i < n; ++i) net.add(i, (i + 1) % n);
    return net;
}

/// The last node of each clique is linked to the first of the next.
inline TestNetwork ringOfCliques(Id cliques, Id size) {
    TestNetwork net("ring of cliques", cliques * size);
    for (Id c = 0; c < cliques; ++c) {
        for (Id i = 0; i < size; ++i)
            for (Id j = i + 1; j < size; ++j) net.add(c * size + i, c * size + j);
        net.add(c * size + size - 1, (c + 1) % cliques * size);
    }
    return net;
}

inline TestNetwork star(Id leaves) {
    TestNetwork net("star", leaves + 1);
    for (Id i = 1; i <= leaves; ++i) net.add(0, i);
    return net;
}

inline TestNetwork tree(Random& rnd, Id n) {
    TestNetwork net("tree", n);
    for (Id i = 1; i < n; ++i) net.add(rnd.below(i), i);
    return net;
}

inline TestNetwork grid(Id rows, Id cols) {
    TestNetwork net("grid", rows * cols);
    for (Id r = 0; r < rows; ++r)
        for (Id c = 0; c < cols; ++c) {
            if (c + 1 < cols) net.add(r * cols + c, r * cols + c + 1);
            if (r + 1 < rows) net.add(r * cols + c, (r + 1) * cols + c);
        }
    return net;
}

/// Dense blocks of which neighbours share some nodes.
inline TestNetwork overlappingBlocks(Random& rnd, Id blocks, Id size, Id shared) {
    const Id step = size - shared;
    TestNetwork net("overlapping blocks", blocks * step + shared);
    for (Id b = 0; b < blocks; ++b)
        for (Id i = 0; i < size; ++i)
            for (Id j = i + 1; j < size; ++j)
                if (rnd.chance(0.8)) net.add(b * step + i, b * step + j);
    return net;
}

inline TestNetwork complete(Id n) {
    TestNetwork net("complete", n);
    for (Id i = 0; i < n; ++i)
        for (Id j = i + 1; j < n; ++j) net.add(i, j);
    return net;
}

/// One of all shapes, varied by weights, self links, directions, isolated nodes and a second
/// component, as the seed tells.
inline TestNetwork randomNetwork(std::uint64_t seed) {
    Random rnd(seed * 0x9E3779B97F4A7C15u + 1);
    TestNetwork net;
    switch (rnd.below(9)) {
        case 0: net = sparse(rnd, 5 + rnd.below(120), 1 + rnd.below(6)); break;
        case 1: net = ring(3 + rnd.below(40)); break;
        case 2: net = ringOfCliques(2 + rnd.below(8), 2 + rnd.below(7)); break;
        case 3: net = star(1 + rnd.below(30)); break;
        case 4: net = tree(rnd, 2 + rnd.below(120)); break;
        case 5: net = grid(1 + rnd.below(9), 2 + rnd.below(9)); break;
        case 6: {
            const Id size = 4 + rnd.below(6);
            net = overlappingBlocks(rnd, 1 + rnd.below(6), size, rnd.below(size / 2));
            break;
        }
        case 7: net = complete(2 + rnd.below(14)); break;
        default: net = sparse(rnd, 4 + rnd.below(30), 4 + rnd.below(20)); break;
    }
    if (rnd.chance(0.3)) {  // a second component, then isolated nodes
        const Id first = net.nodesNum;
        const Id size = 2 + rnd.below(6);
        net.nodesNum += size + rnd.below(4);
        for (Id i = 1; i < size; ++i) net.add(first + rnd.below(i), first + i);
    }
    if (rnd.chance(0.3)) {
        TestNetwork arcs = net;
        arcs.directed = true;
        arcs.links.clear();
        for (const TestLink& ln : net.links) {
            if (rnd.chance(0.5))
                arcs.links.push_back(ln);
            else
                arcs.links.push_back({ln.dst, ln.src, ln.weight});
            if (rnd.chance(0.4))
                arcs.links.push_back({arcs.links.back().dst, arcs.links.back().src, 1});
        }
        net = arcs;
    }
    const std::uint32_t kind = rnd.below(4);
    if (kind != 0) {
        net.weighted = true;
        for (TestLink& ln : net.links) {
            if (kind == 1)
                ln.weight = static_cast<float>(1 + rnd.below(1000)) / 100;
            else if (kind == 2)  // many ties, and zero weights
                ln.weight = static_cast<float>(rnd.below(4));
            else
                ln.weight = rnd.chance(0.1) ? 1e6f : 1e-3f * static_cast<float>(1 + rnd.below(9));
        }
        if (std::all_of(net.links.begin(), net.links.end(),
                        [](const TestLink& ln) { return ln.weight == 0; }) &&
            !net.links.empty())
            net.links.front().weight = 1;
    }
    if (rnd.chance(0.25))
        for (Id i = 0; i < net.nodesNum; ++i)
            if (rnd.chance(0.2)) net.selfs.emplace_back(i, static_cast<float>(1 + rnd.below(5)));
    return net;
}

}  // namespace vorl::test
