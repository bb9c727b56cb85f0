#include "networks.hpp"

#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vorl::python {

namespace {

/// Links in arrays, which are kept alive.
class ArrayInput final : public Input {
public:
    ArrayInput(In<Id> sources, In<Id> targets, std::optional<In<LinkWeight>> weights,
               std::optional<In<Id>> nodes, bool directed, bool sum)
        : m_sources(std::move(sources)),
          m_targets(std::move(targets)),
          m_weights(std::move(weights)),
          m_nodes(std::move(nodes)),
          m_directed(directed),
          m_sum(sum) {}

    UndirectedNetwork undirected() const override {
        UndirectedNetwork network;
        network.links = checked([this] { return flatNetwork(arrays()); });
        network.nodes = network.links.size();
        network.directed = m_directed;
        return network;
    }

    Network graph() const override {
        Network network;
        network.graph = checked([this] { return graphOf(arrays()); });
        network.directed = m_directed;
        std::visit([&](const auto& graph) { network.nodes = graph->nodes().size(); },
                   network.graph);
        network.weighted = std::holds_alternative<std::shared_ptr<Graph<true>>>(network.graph);
        return network;
    }

    std::string name() const override { return {}; }

private:
    /// Lengths and ids are as they should be, so a fault is one of the weights.
    template <class MakeT>
    static auto checked(const MakeT& make) -> decltype(make()) {
        try {
            return make();
        } catch (const std::invalid_argument& err) {
            std::string text = err.what();
            if (text.ends_with('\n')) text.pop_back();
            throw std::invalid_argument("weight: " + text);
        }
    }

    LinkArrays arrays() const {
        return {.sources = spanOf(m_sources),
                .destinations = spanOf(m_targets),
                .weights = spanOf(m_weights),
                .nodes = spanOf(m_nodes),
                .directed = m_directed,
                .sumDuplicates = m_sum};
    }

    In<Id> m_sources;
    In<Id> m_targets;
    std::optional<In<LinkWeight>> m_weights;
    std::optional<In<Id>> m_nodes;
    bool m_directed;
    bool m_sum;
};

class FileInput final : public Input {
public:
    FileInput(std::string file, const std::string& format, const std::optional<std::string>& weight,
              std::optional<bool> directed, bool sum) {
        m_options.file = std::move(file);
        for (const auto& [word, known] : networkFormats())
            if (format == word) m_options.format = known;
        m_options.unweighted = !weight;
        if (weight && *weight != "weight") m_options.weightName = *weight;
        m_options.directed = directed;
        m_options.sumDuplicates = sum;
    }

    UndirectedNetwork undirected() const override { return readUndirected(m_options); }
    Network graph() const override { return readNetwork(m_options); }
    std::string name() const override { return m_options.file; }

private:
    ReadOptions m_options;
};

/// Whether the rows of a matrix are its columns, too. Columns ascend in each row, none twice.
bool symmetric(const In<std::int64_t>& ends, const In<Id>& columns,
               const std::optional<In<LinkWeight>>& weights) {
    const nb::gil_scoped_release released;
    const auto end = spanOf(ends);  // of each row, behind the begin of the first one
    const auto column = spanOf(columns);
    const auto weight = spanOf(weights);
    std::vector<std::int64_t> next(end.begin(), end.end() - 1);
    const auto rows = static_cast<Id>(next.size());
    // Each entry of a row is the next one of its column.
    for (Id row = 0; row < rows; ++row)
        for (auto i = static_cast<std::size_t>(end[row]);
             i < static_cast<std::size_t>(end[row + 1]); ++i) {
            if (column[i] >= rows) return false;
            const auto back = static_cast<std::size_t>(next[column[i]]++);
            if (back >= static_cast<std::size_t>(end[column[i] + 1]) || column[back] != row ||
                (!weight.empty() && weight[back] != weight[i]))
                return false;
        }
    return true;
}

}  // namespace

void defineNetworks(nb::module_& module) {
    nb::list formats;
    for (const auto& format : networkFormats()) formats.append(format.first);
    module.attr("NETWORK_FORMATS") = nb::tuple(formats);
    nb::class_<Input>(module, "Input");
    nb::class_<ArrayInput, Input>(module, "ArrayInput")
        .def(nb::init<In<Id>, In<Id>, std::optional<In<LinkWeight>>, std::optional<In<Id>>, bool,
                      bool>(),
             nb::arg("sources"), nb::arg("targets"), nb::arg("weights").none(),
             nb::arg("nodes").none(), nb::arg("directed"), nb::arg("sum_duplicates"));
    nb::class_<FileInput, Input>(module, "FileInput")
        .def(nb::init<std::string, std::string, std::optional<std::string>, std::optional<bool>,
                      bool>(),
             nb::arg("file"), nb::arg("format"), nb::arg("weight").none(),
             nb::arg("directed").none(), nb::arg("sum_duplicates"));
    module.def("symmetric", &symmetric, nb::arg("ends"), nb::arg("columns"),
               nb::arg("weights").none());
}

}  // namespace vorl::python
