// Clusters that lie inside others.
#include "settling.hpp"

#include <vorl/reading/nested_hierarchy.hpp>

#include <algorithm>
#include <numeric>

namespace vorl {

namespace {

class Nesting {
public:
    explicit Nesting(const ClustersFile& file)
        : m_file(file), m_members(file.members), m_begins(file.nodes.size() + 2) {
        for (const auto& cluster : file.clusters) {
            const auto begin = m_members.begin();
            std::sort(begin + static_cast<std::ptrdiff_t>(cluster.begin),
                      begin + static_cast<std::ptrdiff_t>(cluster.end));
        }
        for (Id& node : m_members) {
            const auto place = std::lower_bound(file.nodes.begin(), file.nodes.end(), node);
            node = static_cast<Id>(place - file.nodes.begin());
            ++m_begins[node + 2];
        }
        std::partial_sum(m_begins.begin(), m_begins.end(), m_begins.begin());
        m_owners.resize(m_members.size());
        for (Id i = 0; i < file.clusters.size(); ++i)
            for (const Id node : membersOf(i)) m_owners[m_begins[node + 1]++] = i;
        m_begins.pop_back();
    }

    /// Visits the clusters that have all members of a cluster and more, until the visit returns
    /// false.
    template <class VisitT>
    void eachOuter(Id inner, VisitT visit) {
        const auto members = membersOf(inner);
        const Id rarest = *std::min_element(members.begin(), members.end(),
                                            [this](Id a, Id b) { return count(a) < count(b); });
        m_steps += members.size();
        for (std::size_t i = m_begins[rarest]; i < m_begins[rarest + 1]; ++i) {
            const auto outer = membersOf(m_owners[i]);
            ++m_steps;
            if (outer.size() <= members.size()) continue;
            const bool inside = std::all_of(members.begin(), members.end(), [&](Id node) {
                ++m_steps;
                return std::binary_search(outer.begin(), outer.end(), node);
            });
            if (inside && !visit(m_owners[i])) return;
        }
    }

    /// What was looked at so far.
    Size steps() const { return m_steps; }

private:
    std::span<const Id> membersOf(Id cluster) const {
        const auto& own = m_file.clusters[cluster];
        return {m_members.data() + own.begin, own.end - own.begin};
    }
    std::size_t count(Id node) const { return m_begins[node + 1] - m_begins[node]; }

    const ClustersFile& m_file;
    std::vector<Id> m_members;          ///< places of nodes, ascending in each cluster
    std::vector<std::size_t> m_begins;  ///< of the clusters of each node
    std::vector<Id> m_owners;
    Size m_steps = 0;
};

/// Those of some clusters, ascending, that aren't outside of another one of them.
std::vector<Id> innermost(const std::vector<Id>& clusters,
                          const std::vector<std::vector<Id>>& outer) {
    std::vector<Id> result;
    for (const Id cluster : clusters)
        if (std::none_of(clusters.begin(), clusters.end(), [&](Id inner) {
                return std::binary_search(outer[inner].begin(), outer[inner].end(), cluster);
            }))
            result.push_back(cluster);
    return result;
}

}  // namespace

void detail::settleNodes(ClustersFile& file, Size toldClusters) {
    file.nodes = file.members;
    std::sort(file.nodes.begin(), file.nodes.end());
    file.nodes.erase(std::unique(file.nodes.begin(), file.nodes.end()), file.nodes.end());

    if (file.members.size() == file.nodes.size()) return;
    Nesting nesting(file);
    // A part tells enough where clusters overlap each other by the thousands.
    const Size most = 64 * file.members.size();
    Size inner = 0;
    Id looked = 0;
    for (; looked < file.clusters.size() && nesting.steps() <= most; ++looked)
        nesting.eachOuter(looked, [&](Id) {
            ++inner;
            return false;
        });
    file.severalLevels = 2 * inner > looked || (inner != 0 && toldClusters > file.clusters.size());
}

std::vector<std::vector<Id>> ClustersFile::nestedLevels() const {
    std::vector<std::vector<Id>> levels = toldLevels;
    if (clusters.empty() || !levels.empty()) return levels;
    Nesting nesting(*this);
    std::vector<Id> order(clusters.size());
    std::iota(order.begin(), order.end(), Id{0});
    const auto size = [this](Id i) { return clusters[i].end - clusters[i].begin; };
    std::stable_sort(order.begin(), order.end(), [&](Id a, Id b) { return size(a) < size(b); });
    std::vector<Id> heights(clusters.size());
    for (const Id inner : order)
        nesting.eachOuter(inner, [&](Id outer) {
            heights[outer] = std::max(heights[outer], heights[inner] + 1);
            return true;
        });
    levels.resize(*std::max_element(heights.begin(), heights.end()) + std::size_t{1});
    for (Id i = 0; i < clusters.size(); ++i) {
        Size end = levels.size();
        nesting.eachOuter(i, [&](Id outer) {
            end = std::min<Size>(end, heights[outer]);
            return true;
        });
        for (Size level = heights[i]; level < end; ++level) levels[level].push_back(i);
    }
    return levels;
}

HierarchyFile nestedHierarchy(const ClustersFile& clusters) {
    using Item = HierarchyFile::Item;
    const auto count = static_cast<Id>(clusters.clusters.size());
    std::vector<std::vector<Id>> levels{std::vector<Id>(count)};
    std::iota(levels[0].begin(), levels[0].end(), Id{0});
    std::vector<std::vector<Id>> outer(count);
    if (clusters.severalLevels) {
        levels = clusters.nestedLevels();
        std::vector<Size> heights(count);
        for (Size level = levels.size(); level-- != 0;)
            for (const Id place : levels[level]) heights[place] = level;
        Nesting nesting(clusters);
        // A file may tell that what is inside stands above.
        for (Id inner = 0; inner < count; ++inner)
            nesting.eachOuter(inner, [&](Id found) {
                if (heights[found] > heights[inner]) outer[inner].push_back(found);
                return true;
            });
    }

    HierarchyFile file;
    file.m_name = clusters.name;
    file.m_labels = clusters.labels;
    file.m_nodes = static_cast<Item>(clusters.nodes.size());
    file.m_ids = clusters.nodes;
    file.m_lines.resize(clusters.nodes.size());
    std::vector<Item> items(count, 0);
    std::vector<Id> order;
    for (const auto& standing : levels) {
        for (const Id place : standing) {
            if (items[place] != 0) continue;
            const auto& cluster = clusters.clusters[place];
            order.push_back(place);
            items[place] = static_cast<Item>(file.m_ids.size());
            file.m_ids.push_back(clusters.numbered ? cluster.id : place + 1);
            file.m_lines.push_back(cluster.line);
            file.m_clusterNumbers.number(file.m_ids.back());
        }
        file.m_levels.push_back({static_cast<Item>(file.m_ids.size()), standing.size()});
    }

    const auto own = [&](std::vector<HierarchyFile::Share> owners) {
        std::sort(owners.begin(), owners.end(),
                  [](const auto& a, const auto& b) { return a.item < b.item; });
        file.m_owners.insert(file.m_owners.end(), owners.begin(), owners.end());
        file.m_begins.push_back(file.m_owners.size());
    };
    std::vector<Share> shares =
        clusters.severalLevels ? clusters.shares : clusters.completeShares();
    shares.resize(clusters.members.size());
    std::vector<std::vector<std::pair<Id, Share>>> holders(clusters.nodes.size());
    for (Id place = 0; place < count; ++place) {
        const auto& cluster = clusters.clusters[place];
        for (std::size_t i = cluster.begin; i < cluster.end; ++i) {
            const auto node =
                std::lower_bound(clusters.nodes.begin(), clusters.nodes.end(), clusters.members[i]);
            holders[static_cast<std::size_t>(node - clusters.nodes.begin())].emplace_back(
                place, shares[i]);
        }
    }
    for (Item node = 0; node < file.m_nodes; ++node) {
        file.m_nodeNumbers.append(clusters.nodes[node]);
        std::vector<Id> places;
        for (const auto& holder : holders[node]) places.push_back(holder.first);
        places = innermost(places, outer);
        std::vector<HierarchyFile::Share> owners;
        double sum = 0;
        for (const auto& [place, stated] : holders[node]) {
            if (!std::binary_search(places.begin(), places.end(), place)) continue;
            const double share =
                stated > 0 ? static_cast<double>(stated) : 1 / static_cast<double>(places.size());
            owners.push_back({items[place], share});
            sum += share;
        }
        if (clusters.severalLevels)
            for (auto& owner : owners) owner.share = owners.size() == 1 ? 1 : owner.share / sum;
        own(std::move(owners));
    }
    for (const Id place : order) {
        std::vector<HierarchyFile::Share> owners;
        for (const Id direct : innermost(outer[place], outer)) owners.push_back({items[direct], 0});
        for (auto& owner : owners) owner.share = 1 / static_cast<double>(owners.size());
        own(std::move(owners));
    }
    return file;
}

ClustersFile ClustersFile::selected(std::span<const Id> places) const {
    ClustersFile result;
    result.name = name;
    result.numbered = numbered;
    result.toldNodes = toldNodes;
    result.labels = labels;
    for (const Id place : places) {
        const Cluster& own = clusters[place];
        result.clusters.push_back({own.line, own.id, result.members.size(), 0});
        const auto append = [&own](auto& to, const auto& from) {
            if (!from.empty())
                to.insert(to.end(), from.begin() + static_cast<std::ptrdiff_t>(own.begin),
                          from.begin() + static_cast<std::ptrdiff_t>(own.end));
        };
        append(result.members, members);
        append(result.shares, shares);
        append(result.lines, lines);
        result.clusters.back().end = result.members.size();
    }
    result.nodes = result.members;
    std::sort(result.nodes.begin(), result.nodes.end());
    result.nodes.erase(std::unique(result.nodes.begin(), result.nodes.end()), result.nodes.end());
    return result;
}

}  // namespace vorl
