#include "state.hpp"

#include <vorl/types/item_map.hpp>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vorl::python {

namespace {

using HierarchyT = Hierarchy<WeightedLinks>;
using ItemT = NodeI<WeightedLinks>;

/// What becomes of a state, without links.
class RestoredHierarchy final : public HierarchyT {
public:
    RestoredHierarchy(AccWeight weight, bool edges) : m_weight(weight), m_edges(edges) {}
    RestoredHierarchy(RestoredHierarchy&&) noexcept = default;

    std::shared_ptr<Hierarchy> toSharedPtr() override {
        return std::make_shared<RestoredHierarchy>(std::move(*this));
    }
    AccWeight weight() const override { return m_weight; }
    bool edges() const override { return m_edges; }

    void fill(const nb::dict& state);

private:
    AccWeight m_weight;
    bool m_edges;
};

template <class T>
std::vector<T> numbers(const nb::dict& state, const char* name) {
    const auto array = nb::cast<In<T>>(state[name]);
    return {array.data(), array.data() + array.size()};
}

void require(bool right) {
    if (!right) throw std::invalid_argument("the state of the hierarchy is broken");
}

void RestoredHierarchy::fill(const nb::dict& state) {
    const auto ids = numbers<Id>(state, "ids");
    const auto nodes = nb::cast<Size>(state["nodes"]);
    const auto ends = numbers<Size>(state, "level_ends");
    const auto heights = numbers<Id>(state, "heights");
    require(nodes <= ids.size() && ends.size() == heights.size());
    std::vector<ItemT*> items;
    for (Size i = 0; i < nodes; ++i) items.push_back(&m_nodes.emplace_back(ids[i]));
    const auto counts = numbers<AccWeight>(state, "counts");
    require(nodes + counts.size() == ids.size());
    std::vector<ClusterT*> all;
    const auto arena = ArenaAllocator<ClusterT>();
    for (LevelNum level = 0; level < ends.size(); ++level) {
        ClustersT clusters(arena);
        require(all.size() <= ends[level] && ends[level] <= counts.size());
        while (all.size() < ends[level]) {
            ClusterT& cl = clusters.emplace_back(level, ids[nodes + all.size()], Size{0});
            cl.m_nnodes = counts[all.size()];
            all.push_back(&cl);
            items.push_back(&cl);
        }
        m_levels.emplace_back(heights[level], std::move(clusters));
    }
    require(all.size() == counts.size());

    const auto totals = numbers<std::uint32_t>(state, "totals");
    const auto ownerEnds = numbers<Size>(state, "owner_ends");
    const auto owners = numbers<Id>(state, "owners");
    const auto actives = numbers<std::uint16_t>(state, "actives");
    const auto partEnds = numbers<Size>(state, "part_ends");
    const auto parts = numbers<Id>(state, "parts");
    require(totals.size() == items.size() && ownerEnds.size() == items.size() &&
            owners.size() == actives.size() && partEnds.size() == all.size());
    Size next = 0;
    for (Size i = 0; i < items.size(); ++i) {
        items[i]->totac = totals[i];
        for (; next < ownerEnds[i]; ++next) {
            require(next < owners.size() && owners[next] < all.size());
            items[i]->owners.emplace_back(all[owners[next]], actives[next]);
        }
    }
    next = 0;
    for (Size i = 0; i < all.size(); ++i)
        for (; next < partEnds[i]; ++next) {
            require(next < parts.size() && parts[next] < items.size());
            all[i]->des.push_back(items[parts[next]]);
        }
    for (const Id number : numbers<Id>(state, "root")) {
        require(number < all.size());
        m_root.push_back(all[number]);
    }
    const auto score = nb::cast<nb::tuple>(state["score"]);
    m_score = {.modularity = nb::cast<float>(score[0]),
               .gamma = nb::cast<float>(score[1]),
               .egamma = nb::cast<float>(score[2]),
               .conductance = nb::cast<float>(score[3]),
               .nodesLinks = nb::cast<Size>(score[4]),
               .clusters = nb::cast<Size>(score[5])};
    setLabels(labelsOf(nb::cast<std::vector<std::string>>(state["names"])));
}

}  // namespace

template <class LinksT>
nb::dict stateOf(const Hierarchy<LinksT>& hier) {
    ItemMap<const NodeI<LinksT>, Id> numbers;
    std::vector<Id> ids;
    const auto number = [&](const auto& item) {
        numbers.insert(&item, static_cast<Id>(ids.size()));
        ids.push_back(item.id);
    };
    std::vector<Size> levelEnds;
    std::vector<Id> heights;
    for (const auto& node : hier.nodes()) number(node);
    const Size nodes = ids.size();
    for (const auto& level : hier.levels()) {
        for (const auto& cl : level.clusters) number(cl);
        levelEnds.push_back(ids.size() - nodes);
        heights.push_back(level.fullsize);
    }
    std::vector<std::uint32_t> totals;
    std::vector<Size> ownerEnds;
    std::vector<Id> owners;
    std::vector<std::uint16_t> actives;
    std::vector<Size> partEnds;
    std::vector<Id> parts;
    std::vector<AccWeight> counts;
    const auto own = [&](const auto& item) {
        totals.push_back(item.totac);
        for (const auto& owner : item.owners) {
            owners.push_back(static_cast<Id>(numbers.find(owner.dest)->second - nodes));
            actives.push_back(owner.numac);
        }
        ownerEnds.push_back(owners.size());
    };
    for (const auto& node : hier.nodes()) own(node);
    for (const auto& level : hier.levels())
        for (const auto& cl : level.clusters) {
            own(cl);
            for (const auto* part : cl.des) parts.push_back(numbers.find(part)->second);
            partEnds.push_back(parts.size());
            counts.push_back(cl.m_nnodes);
        }
    std::vector<Id> root;
    for (const auto* cl : hier.root())
        root.push_back(static_cast<Id>(numbers.find(cl)->second - nodes));
    const HierScore& score = hier.score();
    nb::dict state;
    state["ids"] = arrayOf(std::move(ids));
    state["nodes"] = nodes;
    state["level_ends"] = arrayOf(std::move(levelEnds));
    state["heights"] = arrayOf(std::move(heights));
    state["totals"] = arrayOf(std::move(totals));
    state["owner_ends"] = arrayOf(std::move(ownerEnds));
    state["owners"] = arrayOf(std::move(owners));
    state["actives"] = arrayOf(std::move(actives));
    state["part_ends"] = arrayOf(std::move(partEnds));
    state["parts"] = arrayOf(std::move(parts));
    state["counts"] = arrayOf(std::move(counts));
    state["root"] = arrayOf(std::move(root));
    state["score"] = nb::make_tuple(score.modularity, score.gamma, score.egamma, score.conductance,
                                    score.nodesLinks, score.clusters);
    state["names"] = namesOf(hier.labels());
    state["weight"] = hier.weight();
    state["edges"] = hier.edges();
    return state;
}

template nb::dict stateOf(const Hierarchy<UnweightedLinks>&);
template nb::dict stateOf(const Hierarchy<WeightedLinks>&);

std::shared_ptr<Hierarchy<WeightedLinks>> restored(const nb::dict& state) {
    const auto hier = std::make_shared<RestoredHierarchy>(nb::cast<AccWeight>(state["weight"]),
                                                          nb::cast<bool>(state["edges"]));
    hier->fill(state);
    return hier;
}

}  // namespace vorl::python
