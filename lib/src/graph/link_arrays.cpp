#include <vorl/link_arrays.hpp>

#include "flat_loader.hpp"

#include <vorl/types/id_numbers.hpp>

#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>

namespace vorl {

namespace {

void requireLengths(const LinkArrays& arrays) {
    if (arrays.sources.size() == arrays.destinations.size() &&
        (arrays.weights.empty() || arrays.weights.size() == arrays.sources.size()))
        return;
    throw std::invalid_argument(
        "sources, destinations and weights should be of one length: " +
        std::to_string(arrays.sources.size()) + ", " + std::to_string(arrays.destinations.size()) +
        (arrays.weights.empty() ? "" : ", " + std::to_string(arrays.weights.size())) + "\n");
}

/// The links between numbers of nodes.
class Gathered {
public:
    explicit Gathered(const LinkArrays& arrays) : m_numbers(arrays.nodes.size()) {
        requireLengths(arrays);
        for (const Id id : arrays.nodes) number(id);
        const ProgressReporter report;
        report.begin("taking links", arrays.sources.size());
        constexpr Size step = 1 << 16;
        for (Size i = 0; i < arrays.sources.size(); ++i) {
            if (i % step == step - 1) report.advance(step);
            const Id src = number(arrays.sources[i]);
            const Id dst = number(arrays.destinations[i]);
            const LinkWeight weight = arrays.weights.empty() ? 1 : arrays.weights[i];
            if (!(weight >= 0) || !std::isfinite(weight))
                throw std::invalid_argument(
                    "the weight of the link " + std::to_string(i) +
                    " should be 0 or above, and finite: " + std::to_string(weight) + "\n");
            if (weight != 0) links.add(src, dst, weight, arrays.directed);
        }
        if (arrays.sumDuplicates) links.addUp(arrays.directed);
    }

    detail::LinkGatherer links;
    std::vector<Id> ids;  // of the nodes, by number

private:
    Id number(Id id) {
        if (id == ID_NONE)
            throw std::invalid_argument("ids should be below " + std::to_string(ID_NONE) + "\n");
        return m_numbers.number(id, ids);
    }

    IdNumbers m_numbers;
};

}  // namespace

FlatNetwork flatNetwork(const LinkArrays& arrays) {
    Gathered gathered(arrays);
    Size distinct = 0;
    return detail::loadFlat(gathered.links, std::move(gathered.ids), arrays.directed, distinct);
}

std::variant<std::shared_ptr<Graph<false>>, std::shared_ptr<Graph<true>>> graphOf(
    const LinkArrays& arrays) {
    Gathered gathered(arrays);
    if (arrays.directed || arrays.sumDuplicates || !arrays.weights.empty())
        return detail::GraphLoader<true>(gathered.links, gathered.ids, false, false).graph(nullptr);
    return detail::GraphLoader<false>(gathered.links, gathered.ids, false, false).graph(nullptr);
}

}  // namespace vorl
