/// @file
/// Reading of clusters, with every fault told by file and line.
#pragma once

#include <vorl/reading/input_error.hpp>
#include <vorl/reading/lines.hpp>
#include <vorl/types/export.hpp>
#include <vorl/types/labels.hpp>
#include <vorl/types/numbers.hpp>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vorl {

/// One way in which a file that makes sense strays from the strict form of the format, in which the
/// header's counts are right, each cluster has members, and the shares of a node are either all
/// even or all stated and add up to 1.
struct Deviation {
    enum Kind {
        CLUSTERS_COUNT,    ///< the header tells another number of clusters than the file has
        NODES_COUNT,       ///< the header tells of fewer nodes than the file has
        UNTOLD_NUMBERS,    ///< clusters are numbered, the header doesn't tell so
        EMPTY_CLUSTERS,    ///< numbered clusters without members
        SHARES_LEFT_OUT,   ///< a node states its share in some of its clusters only
        SHARES_ROUNDED,    ///< shares add up to 1 but for the rounding to six digits
        SHARES_UNBALANCED  ///< shares add up to something else
    };
    Kind kind;
    std::size_t line;    ///< the first one concerned
    std::string found;   ///< such as "the header tells of 3 clusters, the file has 2"
    std::string remedy;  ///< what is done about it, such as "the latter counts"

    /// Whether it is about shares, which many a use of clusters doesn't look at.
    bool ofShares() const { return kind >= SHARES_LEFT_OUT; }
};

/// Clusters of nodes as a file lists them.
struct VORL_API ClustersFile {
    struct Cluster {
        std::size_t line = 0;   ///< of the file, from 1
        Id id = ID_NONE;        ///< ID_NONE where clusters aren't numbered
        std::size_t begin = 0;  ///< of its members
        std::size_t end = 0;
    };

    std::string name;
    std::vector<Cluster> clusters;   ///< in the file's order; those without members are left out
    std::vector<Id> members;         ///< of all clusters, one behind the other, in the file's order
    std::vector<Share> shares;       ///< of each member, 0 where none is stated; empty if all are 0
    std::vector<std::size_t> lines;  ///< of each member, where it isn't that of the cluster
    std::vector<Id> nodes;           ///< each node once, ascending
    bool numbered = false;
    /// Whether there are clusters of several levels, which is told by those inside others: more
    /// than half of all, or any where the header counts more clusters than there are lines.
    bool severalLevels = false;
    /// The places of the clusters of each level, ascending, where the file tells of levels, the
    /// lowest first; else empty.
    std::vector<std::vector<Id>> toldLevels{};
    std::optional<Size> toldNodes;  ///< the number of nodes of the network by the header
    std::vector<Deviation> deviations;
    /// The names that ids of nodes stand for; null if there are none.
    std::shared_ptr<Labels> labels;

    /// The id or name of a node.
    std::string nodeName(Id node) const { return naming::plain(node, labels.get()); }
    std::span<const Id> membersOf(const Cluster& cluster) const {
        return {members.data() + cluster.begin, cluster.end - cluster.begin};
    }

    /// The line of the file that tells of a member.
    std::size_t lineOf(const Cluster& cluster, std::size_t member) const {
        return lines.empty() ? cluster.line : lines[member];
    }

    /// The levels that the file tells, else those of clusters that lie inside each other. A level
    /// of these holds the clusters that aren't inside another one of it; the first one those
    /// without inner clusters, and each further one adds those of which all inner clusters came
    /// before.
    /// @return the places of the clusters on each level, ascending
    std::vector<std::vector<Id>> nestedLevels() const;
    /// The clusters of these places, ascending, alone.
    ClustersFile selected(std::span<const Id> places) const;

    /// The share of each member in its cluster; those of a node add up to 1.
    ///
    /// A share that isn't stated is the even one, 1 over the number of clusters of the node. Stated
    /// shares are kept to the last bit where they add up to 1 within the tolerance of `equal`, else
    /// all shares of the node are scaled. A share of 1 beside other clusters, without any other
    /// stated one, isn't looked at.
    std::vector<Share> completeShares() const;

    /// The file in the strict form, with plain lines, which `CnlParser` takes as it is.
    /// @param told  number of nodes for the header, if it is larger than that of the file
    /// @param names whether nodes that have names are called by them
    std::string strictText(Size told = 0, bool names = false) const;

    /// What was brought into the strict form, in one line; empty if nothing was.
    std::string deviationsText(bool withShares = true) const;
    /// @throws InputError for the first deviation, with file and line
    void requireStrict() const;
    /// @throws InputError if there are no clusters
    void requireClusters() const;
    /// @param ids      of the nodes of a network, in any order
    /// @param network  its name, for the message; empty if it has none
    /// @param known    the names of the network
    /// @throws InputError for the first member that isn't among them, with file and line
    void requireNodes(std::vector<Id> ids, const std::string& network,
                      const std::shared_ptr<Labels>& known = nullptr) const;
};

/// Reads clusters in the format CNL: a cluster a line, `[id>] node[:share] ...`, with comments that
/// begin with # and an optional header among those at the top. A node is an id, or a name between
/// double quotes. Carriage returns at line ends and a
/// byte order mark are accepted. Memory and time go by the size of the text, never by what its
/// header tells.
/// @param known  names of a network; they need no quotes, and further ones join them
/// @throws InputError with the file and line of the first fault
VORL_API ClustersFile parseClusters(Lines& lines, std::shared_ptr<Labels> known = nullptr);
/// @param name  of the file, for messages
VORL_API ClustersFile parseClusters(std::string_view text, const std::string& name);

/// Reads a table of memberships: a node and a cluster a line, parted by blanks, tabs, commas or
/// semicolons.
///
/// A line of names, also as a comment, may stand first; it tells the columns of the node, of the
/// cluster (community, module, group ...) and of the share. Without it the first two columns count,
/// and further ones aren't read. Behind a line that begins with *vertices a line is the cluster of
/// the node of that number, from 1 on. Nodes are ids, and below a line of names also names;
/// clusters may bear any name, and are numbered if all names are ids. Quotes around a word don't
/// count.
/// @param known  names of a network, which others join
/// @throws InputError with the file and line of the first fault
VORL_API ClustersFile parseTable(Lines& lines, std::shared_ptr<Labels> known = nullptr);
/// @param name  of the file, for messages
VORL_API ClustersFile parseTable(std::string_view text, const std::string& name);

}  // namespace vorl
