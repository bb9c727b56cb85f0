/// @file
/// Reader of clusters, and their loading onto a network.
#pragma once

#include <vorl/graph.hpp>
#include <vorl/types/item.hpp>

#include <fstream>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace vorl {

/// Shares of nodes in clusters, ascending by address of the cluster.
template <class LinksT>
using NodesShares =
    std::unordered_map<const Node<LinksT>*, std::vector<ItemShare<Cluster<LinksT>>>>;

/// Items by their ids.
template <class ItemT>
using IdItems = std::unordered_map<Id, ItemT*>;

/// What a file of clusters holds: the clusters with their members, and the stated shares.
template <class LinksT>
struct RawMembership {
    Clusters<LinksT> clusters;
    /// A node is here only if one of its shares is stated that isn't 1.
    NodesShares<LinksT> ndshares;
};

/// Reads clusters in the format CNL.
///
/// A line holds the ids of a cluster's nodes, each with an optional share `id:share`. Lines that
/// begin with "#" are comments; one of those at the start can be the header
/// "# Clusters: N, Nodes: M, Fuzzy: 0|1, Numbered: 0|1". With "Numbered: 1" each line begins with
/// the cluster's own id and ">".
class VORL_API CnlParser {
public:
    /// Opens the file and reads its header.
    /// @throws std::ios_base::failure if the file can't be opened or read
    explicit CnlParser(const std::string& filename);

    /// Whether the header allows for shares; they are read in any case.
    bool fuzzy() const { return m_fuzzy; }

    /// Reads the clusters and makes them owners of the nodes; to be called once.
    ///
    /// A header whose number of clusters isn't that of the lines fails an assertion, and so does a
    /// node with more stated shares than clusters.
    /// @throws std::ios_base::failure if the file can't be read
    /// @throws std::invalid_argument for an id or a share that can't be read
    /// @throws std::out_of_range for an id that isn't among the nodes
    template <class LinksT>
    std::shared_ptr<RawMembership<LinksT>> build(IdItems<Node<LinksT>>& nodes);

private:
    void header();
    bool parseHeader(const char* pos);

    static const char* const m_spaces;

    Size m_size = ~Size{0};  ///< size of the file in bytes, all bits set while unknown
    std::ifstream m_file;
    std::string m_line;
    Id m_clsnum = 0;  ///< number of clusters given by the header
    Id m_ndsnum = 0;  ///< number of nodes given by the header
    bool m_fuzzy = true;
    bool m_numbered = false;
};

extern template std::shared_ptr<RawMembership<UnweightedLinks>> CnlParser::build(
    IdItems<Node<UnweightedLinks>>&);
extern template std::shared_ptr<RawMembership<WeightedLinks>> CnlParser::build(
    IdItems<Node<WeightedLinks>>&);

/// Reads clusters from a file and accumulates their links and weights from a network.
///
/// The graph is left empty and its nodes are gone afterwards, so `des` of the clusters must not be
/// followed. A link inside a cluster stands in its `links` with the cluster itself as destination,
/// once for each direction. The link of a node without stated shares counts the other node's
/// clusters evenly.
///
/// @param[out] clusters takes the clusters; to be handed over empty
/// @param graph the network; spent by the call
/// @param filename a file in the format CNL
/// @param validation whether and how the links are validated beforehand
/// @return total weight of the network, both directions counted
/// @throws std::string if the shares of a node don't add up to 1
/// @throws as the parser and `validate`
template <class ParserT, class GraphT>
VORL_API AccWeight loadClusters(Clusters<typename GraphT::LinksT>& clusters, GraphT& graph,
                                const std::string& filename,
                                Validation validation = Validation::STANDARD);

extern template AccWeight loadClusters<CnlParser>(Clusters<UnweightedLinks>&, Graph<false>&,
                                                  const std::string&, Validation);
extern template AccWeight loadClusters<CnlParser>(Clusters<WeightedLinks>&, Graph<true>&,
                                                  const std::string&, Validation);

}  // namespace vorl
