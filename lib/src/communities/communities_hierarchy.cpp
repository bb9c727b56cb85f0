// The joining of three kinds of levels to one hierarchy: inside the communities, they, and above.
#include <vorl/communities_hierarchy.hpp>

#include <vorl/hierarchy/cluster.hpp>
#include <vorl/types/item_map.hpp>
#include <vorl/types/progress.hpp>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace vorl {

namespace {

using LinksT = WeightedLinks;
using HierarchyT = Hierarchy<LinksT>;
using NodeT = HierarchyT::NodeT;
using ClusterT = HierarchyT::ClusterT;
using NodesT = HierarchyT::NodesT;
using ClustersT = HierarchyT::ClustersT;
using ItemT = NodeI<LinksT>;

/// The count of an item's largest share. Halves to twelfths of it are whole.
constexpr AccWeight COUNTS = 55440;
/// A community of as many nodes tells by itself how far it is.
constexpr Size LARGE = 100000;

/// What a hierarchy is made of.
struct Parts {
    NodesT nodes;
    HierarchyT::LevelsT levels;
    HierarchyT::RootT root;
    HierScore score;
    AccWeight weight = 0;
};

class JoinedHierarchy final : public HierarchyT {
public:
    explicit JoinedHierarchy(Parts&& parts) : m_weight(parts.weight) {
        m_nodes.swap(parts.nodes);
        m_levels = std::move(parts.levels);
        m_root = std::move(parts.root);
        m_score = parts.score;
    }
    JoinedHierarchy(JoinedHierarchy&&) noexcept = default;

    std::shared_ptr<Hierarchy> toSharedPtr() override {
        return std::make_shared<JoinedHierarchy>(std::move(*this));
    }
    AccWeight weight() const override { return m_weight; }
    bool edges() const override { return true; }

private:
    AccWeight m_weight;
};

class Joiner {
public:
    Joiner(const FlatNetwork& network, const Communities& found, const ClusterOptions& options)
        : m_network(network), m_found(found), m_options(options) {
        if (found.ids() != network.ids)
            throw std::invalid_argument(
                "communitiesHierarchy(), the communities should be those of the network\n");
        m_options.validation = Validation::NONE;
    }

    std::shared_ptr<HierarchyT> join() {
        if (m_network.size() == 0) return std::make_shared<JoinedHierarchy>(std::move(m_parts));
        addNodes();
        buildInside();
        addCommunities();
        settleShared();
        buildAbove();
        finish();
        return std::make_shared<JoinedHierarchy>(std::move(m_parts));
    }

    /// That of the communities.
    LevelNum level() const { return m_level; }

private:
    /// What a node of several communities has in a cluster.
    struct Membership {
        Id node;
        ClusterT* owner;
        AccWeight share;
    };
    /// A node in the network of the community at hand.
    struct Local {
        NodeT* node = nullptr;
        Share share = 0;
    };

    void addNodes() {
        m_nodes.reserve(m_network.size());
        for (Id i = 0; i < m_network.size(); ++i) {
            NodeT& node = m_parts.nodes.emplace_back(m_network.ids[i], m_network.degree(i));
            node.m_sweight = detail::narrow(m_network.self[i]);
            m_nodes.push_back(&node);
        }
        m_totals.assign(m_network.size(), 0);
        for (Id i = 0; i < m_network.size(); ++i) {
            m_totals[i] = m_network.self[i];
            for (Size ln = m_network.begin[i]; ln < m_network.begin[i + 1]; ++ln) {
                const LinkWeight weight = m_network.weight[ln];
                m_nodes[i]->links.emplace_back(m_nodes[m_network.neighbour[ln]], weight);
                m_totals[i] += static_cast<AccWeight>(weight);
            }
            m_parts.weight += m_totals[i];
        }
    }

    void buildInside() {
        const ProgressReporter report;
        const auto begin = [&] { report.begin("inside communities", m_network.size()); };
        begin();
        ClusterOptions options = m_options;
        options.rootMax = 0;
        std::vector<Local> local(m_network.size());
        Size done = 0;
        m_tops.resize(m_found.count());
        for (Id community = 0; community < m_found.count(); ++community) {
            const Size size = m_found.members(community).size();
            done += size;
            report.advance(size);
            if (size < 3) continue;
            NodesT nodes = networkOf(community, local);
            if (nodes.empty()) continue;
            const bool tells = size >= LARGE;
            const ProgressScope scope(tells ? Progress::current() : nullptr);
            takeInside(*cluster(nodes, true, options), community);
            if (!tells) continue;
            begin();
            report.advance(done);
        }
    }

    /// The community's own links, each with the shares of both ends.
    /// @return no nodes if there are no links
    NodesT networkOf(Id community, std::vector<Local>& local) const {
        NodesT nodes;
        const auto members = m_found.members(community);
        for (const auto& [place, share] : members) {
            NodeT& node = nodes.emplace_back(place);
            const auto part = static_cast<AccWeight>(share);
            node.m_sweight = detail::narrow(m_network.self[place] * (part * part));
            local[place] = {&node, share};
        }
        bool linked = false;
        for (const auto& [place, share] : members)
            for (Size ln = m_network.begin[place]; ln < m_network.begin[place + 1]; ++ln) {
                const Local& dst = local[m_network.neighbour[ln]];
                if (!dst.node) continue;
                const AccWeight both =
                    static_cast<AccWeight>(share) * static_cast<AccWeight>(dst.share);
                const LinkWeight weight =
                    detail::narrow(static_cast<AccWeight>(m_network.weight[ln]) * both);
                if (!(weight > 0)) continue;
                local[place].node->links.emplace_back(dst.node, weight);
                linked = true;
            }
        for (const auto& member : members) local[member.first] = {};
        if (!linked) nodes.clear();
        return nodes;
    }

    ClusterT& addCluster(LevelNum level, AccWeight self) {
        while (m_levels.size() <= level) m_levels.emplace_back(m_arena);
        ClusterT& cl = m_levels[level].emplace_back(level, Id{0}, Size{0});
        cl.m_sweight = self;
        return cl;
    }

    static void own(ItemT& item, ClusterT& owner) {
        item.owners.emplace_back(&owner, 1);
        item.totac = 1;
        owner.des.push_back(&item);
    }

    /// What a cluster of the build at hand has become, null if it was left out.
    ClusterT* copyOf(const ClusterT* cl) const {
        const auto it = m_copies.find(cl);
        return it == m_copies.end() ? nullptr : it->second;
    }

    /// Gives an item the owners that it has in the build at hand.
    /// @return whether it has any
    bool attach(ItemT& item, const ItemT& source) const {
        if (source.owners.empty() || !copyOf(source.owners.front().dest)) return false;
        for (const auto& owner : source.owners) {
            ClusterT* const copy = copyOf(owner.dest);
            item.owners.emplace_back(copy, owner.numac);
            copy->des.push_back(&item);
        }
        item.totac = source.totac;
        return true;
    }

    void takeInside(const HierarchyT& inside, Id community) {
        // One cluster on top is the community itself.
        const LevelNum depth = inside.root().size() == 1
                                   ? inside.root().front()->levnum
                                   : static_cast<LevelNum>(inside.levels().size());
        if (depth == 0) return;
        m_copies.clear();
        for (LevelNum level = 0; level < depth; ++level)
            for (const ClusterT& cl : inside.levels()[level].clusters)
                m_copies.insert(&cl, &addCluster(level, cl.m_sweight));
        auto member = m_found.members(community).begin();
        for (const NodeT& source : inside.nodes()) {
            const auto& [place, share] = *member++;
            if (m_found.of(place).size() == 1)
                attach(*m_nodes[place], source);
            else
                addMemberships(place, static_cast<AccWeight>(share), source);
        }
        for (LevelNum level = 0; level < depth; ++level)
            for (const ClusterT& cl : inside.levels()[level].clusters)
                if (!attach(*copyOf(&cl), cl)) m_tops[community].push_back(copyOf(&cl));
    }

    void addMemberships(Id place, AccWeight share, const NodeT& source) {
        for (const auto& owner : source.owners) {
            ClusterT* const copy = copyOf(owner.dest);
            const AccWeight part =
                source.owners.size() == 1 ? 1 : static_cast<AccWeight>(owner.numac) / source.totac;
            m_memberships.push_back({place, copy, share * part});
            copy->des.push_back(m_nodes[place]);
        }
    }

    /// A node stands alone in a cluster, or is a direct part of its community.
    void addMember(Id place, Share share, ClusterT& owner) {
        if (m_found.of(place).size() == 1) {
            own(*m_nodes[place], owner);
            return;
        }
        m_memberships.push_back({place, &owner, static_cast<AccWeight>(share)});
        owner.des.push_back(m_nodes[place]);
    }

    void addCommunities() {
        const ProgressReporter report;
        report.begin("joining levels", m_found.count());
        m_level = static_cast<LevelNum>(m_levels.size());
        if (m_level != 0)
            for (Id community = 0; community < m_found.count(); ++community) {
                if (!m_tops[community].empty()) continue;
                for (const auto& [place, share] : m_found.members(community)) {
                    const auto part = static_cast<AccWeight>(share);
                    ClusterT& alone = addCluster(0, m_network.self[place] * (part * part));
                    addMember(place, share, alone);
                    m_tops[community].push_back(&alone);
                }
            }
        m_communities.reserve(m_found.count());
        for (Id community = 0; community < m_found.count(); ++community) {
            report.advance();
            ClusterT& cl = addCluster(m_level, 0);
            m_communities.push_back(&cl);
            for (ClusterT* top : m_tops[community]) own(*top, cl);
            if (m_level == 0)
                for (const auto& [place, share] : m_found.members(community))
                    addMember(place, share, cl);
        }
        m_tops.clear();
    }

    /// Counts out the shares of the nodes that lie in several communities.
    void settleShared() {
        std::sort(m_memberships.begin(), m_memberships.end(),
                  [](const Membership& a, const Membership& b) {
                      return a.node < b.node || (a.node == b.node && cmpBase(a.owner, b.owner));
                  });
        const auto lighter = [](const Membership& a, const Membership& b) {
            return a.share < b.share;
        };
        for (auto first = m_memberships.begin(); first != m_memberships.end();) {
            const auto last = std::find_if(first, m_memberships.end(), [&](const Membership& one) {
                return one.node != first->node;
            });
            const AccWeight largest = std::max_element(first, last, lighter)->share;
            NodeT& node = *m_nodes[first->node];
            for (; first != last; ++first) {
                // What is there stays there, while the engine may give a share of 0.
                const auto count =
                    std::max<Size>(first->share > 0,
                                   static_cast<Size>(std::lround(first->share / largest * COUNTS)));
                node.owners.emplace_back(first->owner, count);
                node.totac += static_cast<std::uint32_t>(count);
            }
        }
        std::vector<Membership>().swap(m_memberships);
    }

    /// The network of the communities. It fills in their self weights.
    /// @param[out] linked takes whether there are links
    NodesT networkAbove(bool& linked) const {
        const ProgressReporter report;
        report.begin("links of communities", m_found.count());
        NodesT nodes;
        std::vector<NodeT*> made;
        for (Id community = 0; community < m_found.count(); ++community)
            made.push_back(&nodes.emplace_back(community));
        std::vector<AccWeight> sums(m_found.count());
        std::vector<Id> touched;
        linked = false;
        for (Id community = 0; community < m_found.count(); ++community) {
            report.advance();
            // The two directions of a link are to weigh the same, so only one of them is added up.
            const auto add = [&](Id place, AccWeight weight) {
                for (const CommunityShare& part : m_found.of(place)) {
                    const AccWeight value = weight * static_cast<AccWeight>(part.share);
                    if (part.community < community || !(value > 0)) continue;
                    if (sums[part.community] == 0) touched.push_back(part.community);
                    sums[part.community] += value;
                }
            };
            for (const auto& [place, share] : m_found.members(community)) {
                const auto part = static_cast<AccWeight>(share);
                add(place, m_network.self[place] * part);
                for (Size ln = m_network.begin[place]; ln < m_network.begin[place + 1]; ++ln)
                    add(m_network.neighbour[ln],
                        static_cast<AccWeight>(m_network.weight[ln]) * part);
            }
            m_communities[community]->m_sweight = sums[community];
            made[community]->m_sweight = detail::narrow(sums[community]);
            std::sort(touched.begin(), touched.end());
            for (const Id other : touched) {
                const LinkWeight weight = detail::narrow(std::exchange(sums[other], 0));
                if (other == community || !(weight > 0)) continue;
                made[community]->links.emplace_back(made[other], weight);
                made[other]->links.emplace_back(made[community], weight);
                linked = true;
            }
            touched.clear();
        }
        return nodes;
    }

    void buildAbove() {
        bool linked = false;
        NodesT nodes = networkAbove(linked);
        if (!linked) {
            scoreSeparate();
            return;
        }
        const auto above = cluster(nodes, true, m_options);
        takeAbove(*above);
        m_parts.score = above->score();
        if (!above->levels().empty()) return;
        m_parts.score.gamma = m_options.gamma;
        m_parts.score.egamma = detail::narrow(m_found.score().gamma);
        m_parts.score.conductance = detail::narrow(m_found.score().conductance);
    }

    void takeAbove(const HierarchyT& above) {
        const auto first = static_cast<LevelNum>(m_levels.size());
        // The engine gives a node that finds no partner a cluster of its own. Communities are
        // clusters already.
        const auto wraps = [](const ClusterT& cl) { return cl.levnum == 0 && cl.des.size() == 1; };
        m_copies.clear();
        for (const auto& level : above.levels())
            for (const ClusterT& cl : level.clusters)
                if (!wraps(cl)) m_copies.insert(&cl, &addCluster(first + cl.levnum, cl.m_sweight));
        for (const NodeT& source : above.nodes()) {
            const bool alone = source.owners.size() == 1 && wraps(*source.owners.front().dest);
            attach(*m_communities[source.id],
                   alone ? static_cast<const ItemT&>(*source.owners.front().dest) : source);
        }
        for (const auto& level : above.levels())
            for (const ClusterT& cl : level.clusters)
                if (!wraps(cl)) attach(*copyOf(&cl), cl);
    }

    /// The score where no link leads from one community to another.
    void scoreSeparate() {
        HierScore& score = m_parts.score;
        score.gamma = m_options.gamma;
        score.conductance = m_communities.size() == 1;
        if (!(m_parts.weight > 0)) return;
        AccWeight expected = 0;
        for (const ClusterT* cl : m_communities) {
            const AccWeight part = cl->m_sweight / m_parts.weight;
            expected += part * part;
        }
        const AccWeight gamma = m_options.gamma < 0 ? 1 : static_cast<AccWeight>(m_options.gamma);
        score.modularity = detail::narrow(1 - gamma * expected);
    }

    /// Numbers the clusters, hands weights and numbers of nodes up to the owners, and forms the
    /// levels and the root.
    void finish() {
        const ProgressReporter report;
        Id count = 0;
        for (ClustersT& clusters : m_levels)
            for (ClusterT& cl : clusters) cl.id = count++;
        std::vector<AccWeight> totals(count);
        const auto handUp = [&](const ItemT& item, AccWeight total) {
            for (const auto& owner : item.owners) {
                const AccWeight share =
                    item.owners.size() == 1 ? 1 : static_cast<AccWeight>(owner.numac) / item.totac;
                totals[owner.dest->id] += share * total;
                owner.dest->m_nnodes += share * item.nnodes();
            }
        };
        for (Id i = 0; i < m_network.size(); ++i) handUp(*m_nodes[i], m_totals[i]);
        // How many clusters begin or end to stand at each level.
        std::vector<Id> begun(m_levels.size() + 1);
        std::vector<Id> ended(m_levels.size() + 1);
        for (ClustersT& clusters : m_levels)
            for (ClusterT& cl : clusters) {
                report.check();
                const AccWeight total = totals[cl.id];
                cl.m_tweight = detail::narrow(total);
                handUp(cl, total);
                ++begun[cl.levnum];
                if (!cl.owners.empty()) {
                    ++ended[cl.owners.front().dest->levnum];
                    continue;
                }
                cl.m_context = std::make_unique<Context<ClusterT>>();
                cl.m_context->weight = total;
                m_parts.root.push_back(&cl);
            }
        Id standing = 0;
        m_parts.levels.reserve(m_levels.size());
        for (std::size_t i = 0; i < m_levels.size(); ++i) {
            standing += begun[i] - ended[i];
            m_parts.levels.emplace_back(standing, std::move(m_levels[i]));
        }
        m_parts.score.clusters = count;
        m_parts.score.nodesLinks = m_network.neighbour.size();
    }

    const FlatNetwork& m_network;
    const Communities& m_found;
    ClusterOptions m_options;
    Parts m_parts;
    LevelNum m_level = 0;
    std::vector<NodeT*> m_nodes;
    std::vector<AccWeight> m_totals;  // total weights of the nodes
    // All items of a kind ascend by address in the order in which they are made.
    ArenaAllocator<ClusterT> m_arena;
    std::vector<ClustersT> m_levels;
    std::vector<std::vector<ClusterT*>> m_tops;  // of each community, without owners so far
    std::vector<Membership> m_memberships;
    std::vector<ClusterT*> m_communities;
    ItemMap<const ClusterT, ClusterT*> m_copies;  // of the clusters of the build at hand
};

}  // namespace

std::shared_ptr<Hierarchy<WeightedLinks>> communitiesHierarchy(const FlatNetwork& network,
                                                               const Communities& found,
                                                               const ClusterOptions& options,
                                                               LevelNum* level) {
    Joiner joiner(network, found, options);
    auto hierarchy = joiner.join();
    if (level) *level = joiner.level();
    return hierarchy;
}

}  // namespace vorl
