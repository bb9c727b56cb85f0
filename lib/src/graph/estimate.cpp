#include <vorl/estimate.hpp>
#include <vorl/link_arrays.hpp>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <utility>

namespace vorl {

namespace {

/// Bytes at the peak by measured runs: of the process itself, of each node with the clusters above
/// it, and of each of the two records of a link with what levels add to it.
constexpr double PROCESS_BYTES = 7e6;
constexpr double NODE_BYTES = 530;
constexpr double RECORD_BYTES = 37;
/// More where a record has a weight.
constexpr double WEIGHT_BYTES = 16;
/// Of each cluster beyond the usual ones of a node, as they are where many gains tie.
constexpr double CLUSTER_BYTES = 900;
constexpr double USUAL_CLUSTERS = 1.5;
/// Clusters of a node grow by no more than this power of the nodes.
constexpr double CLUSTERS_GROWTH = 0.5;

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

/// What clustering of a sample took.
struct Trial {
    double seconds = 0;
    double nodes = 0;
    double clusters = 0;

    double clustersOfNode() const { return clusters / nodes; }
};

Trial cluster(const LinkArrays& links) {
    Trial trial;
    const double start = processSeconds();
    std::visit(
        [&trial](const auto& graph) {
            const auto hierarchy = graph->buildHierarchy();
            trial.nodes = static_cast<double>(hierarchy->nodes().size());
            for (const auto& level : hierarchy->levels())
                trial.clusters += static_cast<double>(level.clusters.size());
        },
        graphOf(links));
    trial.seconds = processSeconds() - start;
    return trial;
}

/// Clusters beyond the usual ones, by those of a sample and of a smaller one, if there is any.
double surplusClusters(double nodes, const Trial& trial, const Trial& smaller) {
    double ofNode = trial.clustersOfNode();
    if (ofNode <= USUAL_CLUSTERS) return 0;
    if (smaller.clusters != 0 && trial.nodes > smaller.nodes) {
        const double growth =
            std::log(ofNode / smaller.clustersOfNode()) / std::log(trial.nodes / smaller.nodes);
        ofNode *= std::pow(nodes / trial.nodes, std::clamp(growth, 0., CLUSTERS_GROWTH));
    }
    return (ofNode - USUAL_CLUSTERS) * nodes;
}

}  // namespace

ClusterEstimate estimateClustering(const FlatNetwork& network, bool directed, bool weighted) {
    const auto nodes = static_cast<double>(network.size());
    const auto records = static_cast<double>(network.neighbour.size());
    ClusterEstimate estimate;
    estimate.memory =
        static_cast<Size>(PROCESS_BYTES + NODE_BYTES * nodes +
                          (RECORD_BYTES + (directed || weighted ? WEIGHT_BYTES : 0)) * records);
    Trial last;
    Trial former;
    for (Size links = SAMPLE_LINKS_LEAST; links <= SAMPLE_LINKS; links *= 10) {
        const Sample sample(network, links);
        if (sample.size() == 0) break;
        former = std::exchange(last, cluster(sample.links(weighted)));
        const double seconds = last.seconds;
        estimate.seconds =
            seconds * std::pow(records / 2 / static_cast<double>(sample.size()), GROWTH);
        if (sample.size() < links || seconds > LONG_SECONDS) break;
    }
    if (last.clusters != 0)
        estimate.memory += static_cast<Size>(CLUSTER_BYTES * surplusClusters(nodes, last, former));
    return estimate;
}

}  // namespace vorl
