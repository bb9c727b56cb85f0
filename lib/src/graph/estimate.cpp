#include <vorl/estimate.hpp>
#include <vorl/link_arrays.hpp>

#include <cmath>
#include <ctime>

namespace vorl {

namespace {

/// Bytes at the peak by measured runs: of the process itself, of each node with the clusters above
/// it, and of each of the two records of a link with what levels add to it.
constexpr double PROCESS_BYTES = 7e6;
constexpr double NODE_BYTES = 530;
constexpr double RECORD_BYTES = 37;
/// More where a record has a weight.
constexpr double WEIGHT_BYTES = 16;

/// So many links are clustered for the time, or less if a tenth of them takes long.
constexpr Size SAMPLE_LINKS = 100'000;
constexpr Size SAMPLE_LINKS_LEAST = 1'000;
constexpr double LONG_SECONDS = 0.2;
/// By measured runs from 10^4 to 10^7 links, time grows by this power of the links.
constexpr double GROWTH = 1.2;

/// The links between the nodes nearest to the first one, until there are enough.
class Sample {
public:
    Sample(const FlatNetwork& network, Size links)
        : m_network(network), m_enough(links), m_taken(network.size()) {
        for (Id node = 0; node < network.size() && !enough(); ++node) spread(node);
    }

    Size size() const { return m_sources.size(); }
    LinkArrays links(bool weighted) const {
        LinkArrays arrays{m_sources, m_destinations};
        if (weighted) arrays.weights = m_weights;
        return arrays;
    }

private:
    bool enough() const { return m_sources.size() >= m_enough; }

    void spread(Id start) {
        if (m_taken[start]) return;
        std::vector<Id> reached{start};
        for (Size i = 0; i < reached.size() && !enough(); ++i) {
            const Id node = reached[i];
            m_taken[node] = true;
            for (Size at = m_network.begin[node]; at < m_network.begin[node + 1]; ++at) {
                const Id other = m_network.neighbour[at];
                if (!m_taken[other]) {
                    if (!m_seen[other]) reached.push_back(other);
                    m_seen[other] = true;
                    continue;
                }
                m_sources.push_back(node);
                m_destinations.push_back(other);
                m_weights.push_back(m_network.weight[at]);
            }
        }
    }

    const FlatNetwork& m_network;
    const Size m_enough;
    std::vector<bool> m_taken;
    std::vector<bool> m_seen = std::vector<bool>(m_taken.size());
    std::vector<Id> m_sources;
    std::vector<Id> m_destinations;
    std::vector<LinkWeight> m_weights;
};

/// Processor time, which doesn't count what others do meanwhile.
double processSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

double clusterSeconds(const LinkArrays& links) {
    const double start = processSeconds();
    std::visit([](const auto& graph) { graph->buildHierarchy(); }, graphOf(links));
    return processSeconds() - start;
}

}  // namespace

ClusterEstimate estimateClustering(const FlatNetwork& network, bool directed, bool weighted) {
    const auto nodes = static_cast<double>(network.size());
    const auto records = static_cast<double>(network.neighbour.size());
    ClusterEstimate estimate;
    estimate.memory =
        static_cast<Size>(PROCESS_BYTES + NODE_BYTES * nodes +
                          (RECORD_BYTES + (directed || weighted ? WEIGHT_BYTES : 0)) * records);
    for (Size links = SAMPLE_LINKS_LEAST; links <= SAMPLE_LINKS; links *= 10) {
        const Sample sample(network, links);
        if (sample.size() == 0) break;
        const double seconds = clusterSeconds(sample.links(weighted));
        estimate.seconds =
            seconds * std::pow(records / 2 / static_cast<double>(sample.size()), GROWTH);
        if (sample.size() < links || seconds > LONG_SECONDS) break;
    }
    return estimate;
}

}  // namespace vorl
