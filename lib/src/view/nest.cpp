#include "nest.hpp"

#include <vorl/reading/input_error.hpp>

#include <algorithm>
#include <utility>

namespace vorl::view {

namespace {

/// The owner in which each cluster stands, 0 for none, by the item less the number of nodes.
std::vector<Item> standingPlaces(const HierarchyFile& file) {
    std::vector<Item> place(file.clusters(), 0);
    std::vector<Number> contents(file.clusters(), 0);
    const auto of = [&file](Item cluster) { return cluster - file.nodes(); };
    for (Item node = 0; node < file.nodes(); ++node)
        for (const auto& owner : file.owners(node)) ++contents[of(owner.item)];
    const Item end = file.nodes() + file.clusters();
    std::vector<std::vector<HierarchyFile::Share>> shared(file.clusters());
    for (Item cluster = file.nodes(); cluster < end; ++cluster) {
        const auto owners = file.owners(cluster);
        if (owners.empty()) continue;
        const auto most =
            std::max_element(owners.begin(), owners.end(), [](const auto& a, const auto& b) {
                return a.share != b.share ? a.share < b.share : a.item > b.item;
            });
        place[of(cluster)] = most->item;
        ++contents[of(most->item)];
        if (owners.size() > 1)
            for (const auto& owner : owners)
                shared[of(owner.item)].push_back({cluster, owner.share});
    }
    for (Item cluster = file.nodes(); cluster < end; ++cluster) {
        if (contents[of(cluster)] != 0) continue;
        const HierarchyFile::Share* best = nullptr;
        for (const auto& part : shared[of(cluster)])
            if (contents[of(place[of(part.item)])] > 1 && (!best || part.share > best->share))
                best = &part;
        if (!best) continue;
        --contents[of(place[of(best->item)])];
        place[of(best->item)] = cluster;
        ++contents[of(cluster)];
    }
    return place;
}

/// Lists that lie one behind the other.
template <class ValueT>
struct Lists {
    std::vector<std::size_t> begin;
    std::vector<ValueT> values;

    /// @param each calls its argument with (list, value) for all values
    template <class EachT>
    Lists(std::size_t lists, const EachT& each) : begin(lists + 2) {
        each([&](std::size_t list, const ValueT&) { ++begin[list + 2]; });
        for (std::size_t i = 2; i < begin.size(); ++i) begin[i] += begin[i - 1];
        values.resize(begin.back());
        each([&](std::size_t list, const ValueT& value) { values[begin[list + 1]++] = value; });
        begin.pop_back();
    }

    std::span<const ValueT> operator[](std::size_t list) const {
        return {values.data() + begin[list], begin[list + 1] - begin[list]};
    }
};

}  // namespace

Nest::Nest(const FlatNetwork& network, const HierarchyFile& file)
    : numbers(file.clusters(), NONE), home(network.size(), NONE) {
    // What stands in no cluster is directly inside the whole, as list 0; a cluster's list is 1
    // behind the item less the number of nodes.
    std::vector<Id> inNetwork(file.nodes());
    std::vector<bool> owned(network.size());
    for (Item item = 0; item < file.nodes(); ++item) {
        const auto found = std::lower_bound(network.ids.begin(), network.ids.end(), file.id(item));
        if (found == network.ids.end() || *found != file.id(item))
            throw InputError(file.name() + ": the node " + file.nodeName(item) +
                             " isn't in the network");
        inNetwork[item] = static_cast<Id>(found - network.ids.begin());
        owned[inNetwork[item]] = !file.owners(item).empty();
    }
    const auto list = [&file](Item cluster) { return std::size_t{cluster} - file.nodes() + 1; };
    using Placed = std::pair<Id, double>;
    const Lists<Placed> placed(file.clusters() + std::size_t{1}, [&](const auto& add) {
        for (Item item = 0; item < file.nodes(); ++item)
            for (const auto& owner : file.owners(item))
                add(list(owner.item), Placed(inNetwork[item], owner.share));
        for (Id i = 0; i < network.size(); ++i)
            if (!owned[i]) add(0, Placed(i, 1.));
    });

    const std::vector<Item> place = standingPlaces(file);
    std::vector<double> masses(file.clusters() + std::size_t{1});
    for (std::size_t i = 0; i < masses.size(); ++i)
        for (const Placed& part : placed[i]) masses[i] += part.second;
    for (Item i = 0; i < file.clusters(); ++i)
        masses[place[i] == 0 ? 0 : list(place[i])] += masses[i + 1];
    std::vector<Item> order(file.clusters());
    for (Item i = 0; i < order.size(); ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(),
                     [&](Item a, Item b) { return masses[a + 1] > masses[b + 1]; });
    const Lists<Item> parts(file.clusters() + std::size_t{1}, [&](const auto& add) {
        for (const Item i : order) add(place[i] == 0 ? 0 : list(place[i]), file.nodes() + i);
    });

    struct Step {
        std::size_t list;
        Number cluster;
        std::size_t next;
    };
    std::vector<Step> way;
    const auto enter = [&](Item item, Number parent) {
        const std::size_t at = parent == NONE ? 0 : list(item);
        const auto begin = static_cast<Number>(node.size());
        const auto number = static_cast<Number>(clusters.size());
        for (const Placed& part : placed[at]) {
            node.push_back(part.first);
            share.push_back(part.second);
            clusterOf.push_back(number);
        }
        const auto own = static_cast<Number>(node.size());
        clusters.push_back({item, parent, 0, begin, own, own, masses[at]});
        if (parent != NONE) numbers[at - 1] = number;
        way.push_back({at, number, 0});
    };
    enter(0, NONE);
    while (!way.empty()) {
        Step& at = way.back();
        const auto inside = parts[at.list];
        if (at.next < inside.size()) {
            enter(inside[at.next++], at.cluster);
        } else {
            clusters[at.cluster].end = static_cast<Number>(clusters.size());
            clusters[at.cluster].last = static_cast<Number>(node.size());
            way.pop_back();
        }
    }
    for (Number i = 0; i < node.size(); ++i) {
        Number& best = home[node[i]];
        if (best == NONE || share[i] > share[best]) best = i;
    }
}

}  // namespace vorl::view
