// The engine on tiny networks made of arbitrary bytes: directed or not, weighted or not, on every
// option. No valid network may stop the process, and levels that touch only what changed give what
// literal ones give.
#include <vorl/hierarchy/cluster.hpp>
#include <vorl/types/trace.hpp>

#include "../support/accepted_network.hpp"
#include "../support/both_ways.hpp"
#include "../support/networks.hpp"

#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>

namespace {

using namespace vorl;

class Bytes {
public:
    Bytes(const std::uint8_t* data, std::size_t size) : m_data(data), m_end(data + size) {}

    std::uint8_t next() { return m_data == m_end ? std::uint8_t{0} : *m_data++; }
    bool done() const { return m_data == m_end; }

private:
    const std::uint8_t* m_data;
    const std::uint8_t* m_end;
};

/// Of few values, which gives ties, or of the whole range of a 32-bit float.
float weightOf(Bytes& bytes, bool wide) {
    constexpr float weights[] = {1,    0,    1,     2, 3, 0.1f, 0.3f, 1e-7f,
                                 1e7f, 0.5f, 1e-3f, 7, 1, 1,    2,    2};
    const std::uint8_t byte = bytes.next();
    if (!wide) return weights[byte % std::size(weights)];
    const auto bits = static_cast<std::uint32_t>(byte << 8 | bytes.next()) << 16 & 0x7FFFFFFF;
    const auto weight = std::bit_cast<float>(bits);
    return std::isfinite(weight) ? weight : std::numeric_limits<float>::max();
}

ClusterOptions optionsOf(Bytes& bytes) {
    constexpr float gammas[] = {-1, 1, 0, 0.5f, 0.1f, -1, 1, 0.9f};
    constexpr Validation validations[] = {Validation::STANDARD, Validation::SEVERE};
    constexpr Speedup speedups[] = {Speedup::NONE, Speedup::COARSE, Speedup::ORDERDEP};
    constexpr float gains[] = {-1, 0, 0.01f, 1};
    ClusterOptions options;
    options.gamma = gammas[bytes.next() % std::size(gammas)];
    options.rootMax = bytes.next() % 5;
    options.reduction = toReduction(bytes.next() & 0xB3);
    options.speedup = speedups[bytes.next() % std::size(speedups)];
    const std::uint8_t rest = bytes.next();
    options.validation = validations[rest % 2];
    options.modtrace = rest & 2;
    options.gainMarg = gains[rest / 4 % 4];
    return options;
}

template <class LinksT>
void run(const test::TestNetwork& network, const ClusterOptions& options) {
    AccWeight total = 0;
    for (const auto& ln : network.links) total += ln.weight;
    for (const auto& self : network.selfs) total += self.second;
    // Weights are compared at 32 bits, both directions counted.
    if (total == 0 || 2 * total > std::numeric_limits<float>::max()) return;
    auto nodes = test::makeNodes<LinksT>(network);
    try {
        const auto hier = cluster<LinksT>(nodes, !network.directed, options);
        test::requireShares(*hier);
    } catch (const std::domain_error&) {
        // a reduction by weight isn't for unweighted links
        if (LinksT::value_type::IS_WEIGHTED) throw;
    }
    const std::string found = test::difference(network, options);
    test::require(found.empty(), found.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ftrace = nullptr;
    Bytes bytes(data, size);
    const ClusterOptions options = optionsOf(bytes);
    test::TestNetwork network;
    const std::uint8_t kind = bytes.next();
    network.directed = kind & 1;
    network.weighted = kind & 2;
    network.nodesNum = 1 + bytes.next() % 24;
    std::set<Id> selfs;
    while (!bytes.done()) {
        const Id src = bytes.next() % network.nodesNum;
        const Id dst = bytes.next() % network.nodesNum;
        const float weight = network.weighted ? weightOf(bytes, kind & 4) : 1;
        if (src != dst)
            network.add(src, dst, weight);
        else if (selfs.insert(src).second)
            network.selfs.emplace_back(src, weight);
    }
    if (network.weighted)
        run<WeightedLinks>(network, options);
    else
        run<UnweightedLinks>(network, options);
    return 0;
}
