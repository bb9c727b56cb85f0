// Clusters that lie inside others.
#include "settling.hpp"

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
    std::vector<std::vector<Id>> levels;
    if (clusters.empty()) return levels;
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
