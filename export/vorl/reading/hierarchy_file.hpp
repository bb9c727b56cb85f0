/// @file
/// Reading of whole hierarchies, with every fault told by file and line.
#pragma once

#include <vorl/reading/clusters_file.hpp>
#include <vorl/types/id_numbers.hpp>

#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vorl {

template <class LinksT>
class Hierarchy;

/// A hierarchy as a file in the format RHB describes it.
///
/// Its items are numbered through, the nodes first in the file's order, then the clusters level by
/// level. So an owner has a higher number than what it owns. In a file, the owners of an
/// item are of one level; those of lists of clusters inside each other need not be.
class VORL_API HierarchyFile {
public:
    using Item = std::uint32_t;

    /// An item with a share: the part of something that lies in the item, or of the item that lies
    /// in something.
    struct Share {
        Item item;
        double share;  ///< in (0, 1]
    };

    const std::string& name() const { return m_name; }
    Item nodes() const { return m_nodes; }
    Item clusters() const { return static_cast<Item>(m_ids.size()) - m_nodes; }
    LevelNum levels() const { return static_cast<LevelNum>(m_levels.size()); }
    /// Number of clusters formed on a level.
    Item formedOn(LevelNum level) const;
    /// Number of items of the hierarchy at the height of a level, as the file tells it.
    Size heightOf(LevelNum level) const { return m_levels[level].fullsize; }

    bool isNode(Item item) const { return item < m_nodes; }
    Id id(Item item) const { return m_ids[item]; }
    /// The level on which a cluster was formed.
    LevelNum levelOf(Item cluster) const;
    /// The names that ids of nodes stand for; null if there are none.
    const std::shared_ptr<Labels>& labels() const { return m_labels; }
    /// The id or name of a node.
    std::string nodeName(Item node) const { return naming::plain(id(node), m_labels.get()); }
    /// @throws InputError if the file has no such node, or no such cluster
    Item node(Id id) const;
    /// @param name an id or a name
    Item node(std::string_view name) const;
    Item cluster(Id id) const;

    /// The clusters that own an item directly, with the shares of the item in them.
    std::span<const Share> owners(Item item) const {
        return {m_owners.data() + m_begins[item], m_begins[item + 1] - m_begins[item]};
    }
    /// The items that a cluster owns directly, with the shares of each in it.
    std::vector<Share> parts(Item cluster) const;
    /// The clusters that own an item directly or indirectly, ascending, with the shares of the item
    /// in each, added up over all paths.
    std::vector<Share> ancestors(Item item) const;
    /// The nodes of a cluster, ascending, with the shares of each in it.
    std::vector<Share> members(Item cluster) const;

    /// For each level the number of the clusters that stand there: those that it formed and those
    /// carried past it.
    std::vector<Item> standingClusters() const;
    /// The level at which the number of clusters is nearest to the wanted one; the lower of two.
    /// @throws InputError if there are no levels
    LevelNum nearestLevel(Size wanted) const;
    /// The clusters that stand at a level, with their nodes and shares.
    ClustersFile cut(LevelNum level) const;
    /// The hierarchy of some levels alone. An item is owned by the clusters that hold it at the
    /// next one of these levels, with its shares in them; one that holds nothing else stays out.
    /// @param levels  ascending
    HierarchyFile withLevels(std::span<const LevelNum> levels) const;

private:
    friend class HierarchyReader;
    template <class LinksT>
    friend HierarchyFile describedHierarchy(const Hierarchy<LinksT>& hier, const std::string& name);
    friend HierarchyFile nestedHierarchy(const ClustersFile& clusters);

    struct Level {
        Item end;  ///< of its clusters
        Size fullsize;
    };

    bool standsAt(Item cluster, LevelNum level) const;
    /// The clusters standing at a level that hold each item below, with the shares of it in them.
    struct Holders {
        std::vector<std::vector<Share>> at;
        /// Of items that are held in part, the owners above the level with what lies in them.
        std::map<Item, std::vector<Share>> rest;

        std::vector<Share> of(std::span<const Share> owners) const;
    };
    Holders holders(LevelNum level) const;
    static std::vector<Share> restOf(std::span<const Share> owners, Item end,
                                     const Holders& holders);

    std::string m_name;
    Item m_nodes = 0;
    std::vector<Id> m_ids;  ///< of the items
    std::vector<std::size_t> m_lines;
    std::vector<Level> m_levels;
    std::vector<std::size_t> m_begins{0};  ///< of the owners of each item, and their end
    std::vector<Share> m_owners;
    IdNumbers m_nodeNumbers;
    IdNumbers m_clusterNumbers;
    std::shared_ptr<Labels> m_labels;
};

/// Whether the first line that isn't a comment is that of a text in the format RHB.
VORL_API bool isHierarchy(Lines& lines);

/// Reads a text in the format RHB. Counts that it tells must be right, owners must be clusters of
/// one higher level, and the shares of an item must be all stated or all left out, and add up to 1
/// but for their rounding. Nodes are ids, or names between double quotes. Memory and time go by the
/// size of the text.
/// @param known  names of a network, which others join
/// @throws InputError with the file and line of the first fault
VORL_API HierarchyFile parseHierarchy(Lines& lines, std::shared_ptr<Labels> known = nullptr);
/// @param name  of the file, for messages
VORL_API HierarchyFile parseHierarchy(std::string_view text, const std::string& name);

}  // namespace vorl
