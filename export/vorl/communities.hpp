/// @file
/// The communities of a network: one flat answer, with shares where nodes belong to several.
#pragma once

#include <vorl/flat_network.hpp>
#include <vorl/types/export.hpp>
#include <vorl/types/numbers.hpp>

#include <span>
#include <string>
#include <utility>
#include <vector>

namespace vorl {

/// The most starts that there are.
inline constexpr unsigned MOST_STARTS = 6;

/// How communities are sought. No field changes what the answer is but `shares` and `starts`.
struct CommunitiesOptions {
    /// Threads to work with, 0 for as many as the process may use.
    unsigned threads = 0;
    /// Whether a node may belong to several communities.
    bool shares = true;
    /// From how many starts to search, the best one wins; 0: the smaller the network, the more.
    /// More than `MOST_STARTS` are as many.
    unsigned starts = 0;
};

/// What a node has in a community.
struct CommunityShare {
    Id community;
    Share share;  ///< in (0, 1]; those of a node add up to 1

    bool operator==(const CommunityShare&) const = default;
};

/// Figures of an answer. Those of partitions are measured on the partition before it is shared out:
/// the community of a node is that of its largest share, and of the lower number among equal ones.
struct CommunitiesScore {
    double modularity = 0;   ///< at gamma 1
    double conductance = 0;  ///< mean of the communities, in [0, 1]; isolated nodes don't count
    double gamma = 1;        ///< the resolution estimated from the partition, see newmanGamma
    /// Bits that the communities save in the description of the network, less those that name them;
    /// what is told of no community saves nothing. Below 0 they may as well be chance.
    double saving = 0;
    double naming = 0;       ///< bits that name the communities
    bool ownDensity = true;  ///< whether each community has a density of its own in the description
    std::string start;       ///< the start that won
    unsigned starts = 0;     ///< from how many the search began
    unsigned rounds = 0;     ///< of splitting, moving and merging, from the start that won
};

/// The communities of a network, each node of it in at least one.
///
/// Communities are numbered from 0 by falling weight, those of equal weight by the least id in
/// them. Isolated nodes come last, each a community of its own.
class VORL_API Communities {
public:
    /// Ids of the nodes, ascending. A place below is an index into them.
    const std::vector<Id>& ids() const { return m_ids; }
    /// Number of nodes.
    Size nodes() const { return m_ids.size(); }
    /// Number of communities.
    Id count() const { return static_cast<Id>(m_begin.empty() ? 0 : m_begin.size() - 1); }
    /// How many of the communities are isolated nodes.
    Id isolated() const { return m_isolated; }
    /// Number of nodes in several communities.
    Size shared() const { return m_shared; }

    /// The communities of the node at a place, the largest share first, and the lower number among
    /// equal ones.
    std::span<const CommunityShare> of(Size place) const {
        return {m_shares.data() + m_first[place], m_shares.data() + m_first[place + 1]};
    }
    /// The places of a community's nodes, ascending, each with its share.
    std::span<const std::pair<Id, Share>> members(Id community) const {
        return {m_members.data() + m_begin[community], m_members.data() + m_begin[community + 1]};
    }

    const CommunitiesScore& score() const { return m_score; }
    /// The steps with the seconds that they took, in order.
    const std::vector<std::pair<std::string, double>>& seconds() const { return m_seconds; }

private:
    friend class CommunitiesBuilder;

    std::vector<Id> m_ids;
    std::vector<Size> m_first;  // of each place, into m_shares
    std::vector<CommunityShare> m_shares;
    std::vector<Size> m_begin;  // of each community, into m_members
    std::vector<std::pair<Id, Share>> m_members;
    Id m_isolated = 0;
    Size m_shared = 0;
    CommunitiesScore m_score;
    std::vector<std::pair<std::string, double>> m_seconds;
};

/// Finds the communities of a network.
///
/// They are those that describe the network in the fewest bits: the likelihood of a planted
/// partition, of one density for all communities or of one for each, less the cost of naming it. A
/// network that no partition describes clearly better than none is one community, apart from its
/// isolated nodes. The time grows nearly linearly with the links, and the answer depends on the ids
/// and the weights of the network alone, not on threads, the order of links or the machine.
/// docs/method.md tells the steps.
///
/// Weights are rounded to 2^-52 of the network's weight, so that no sum depends on its order.
///
/// L. Zhang, T. P. Peixoto, Statistical inference of assortative community structures, Phys. Rev.
/// Research 2, 043271 (2020), https://doi.org/10.1103/PhysRevResearch.2.043271
///
///     const vorl::FlatNetwork network = vorl::FlatNetwork::ofPairs(src, dst);
///     const vorl::Communities found = vorl::communities(network);
///     for (const vorl::CommunityShare& part : found.of(0))
///         std::printf("%g in community %u\n", part.share, part.community);
///
/// @throws Cancelled if the progress that the calling thread listens with says so
VORL_API Communities communities(const FlatNetwork& network,
                                 const CommunitiesOptions& options = {});

}  // namespace vorl
