// Levels, the finished hierarchy and the entry to clustering.

%{
#include <vorl/hierarchy/cluster.hpp>
#include <vorl/hierarchy/hierarchy.hpp>
#include <vorl/hierarchy/level.hpp>
#include <vorl/hierarchy/score.hpp>
%}

%shared_handle(Hierarchy, HierarchyPtr, vorl::Hierarchy<vorl::WeightedLinks>)
%shared_handle(SHierarchy, SHierarchyPtr, vorl::Hierarchy<vorl::UnweightedLinks>)
%pointer_frame(NodesPtr, vorl::Nodes<vorl::WeightedLinks>)
%pointer_frame(SNodesPtr, vorl::Nodes<vorl::UnweightedLinks>)
%feature("unref") vorl::shared_ptr "if (jarg1) delete $this;"

// Results of the list types are the lists themselves, which Java only hands on.
%nodefaultctor;
%nodefaultdtor;
namespace vorl {
template <class LinksT>
class Nodes {};
template <class LinksT>
class Clusters {};
%template(NodeList) Nodes<WeightedLinks>;
%template(SNodeList) Nodes<UnweightedLinks>;
%template(ClusterList) Clusters<WeightedLinks>;
%template(SClusterList) Clusters<UnweightedLinks>;
template <class LinksT>
class ClusterNodes {};
%template(NodeShares) ClusterNodes<WeightedLinks>;
%template(SNodeShares) ClusterNodes<UnweightedLinks>;
}  // namespace vorl
%clearnodefaultctor;
%clearnodefaultdtor;

namespace vorl {

template <class LinksT>
class Hierarchy;

%template(HierarchyPtr) shared_ptr<Hierarchy<WeightedLinks>>;
%template(SHierarchyPtr) shared_ptr<Hierarchy<UnweightedLinks>>;
%template(NodesPtr) shared_ptr<Nodes<WeightedLinks>>;
%template(SNodesPtr) shared_ptr<Nodes<UnweightedLinks>>;

struct HierScore {
    float modularity;
    float gamma;
    float egamma;
    float conductance;
    Size nodesLinks;
    Size clusters;
};

template <class LinksT>
struct Level {
    Id fullsize;
    %immutable;
    Clusters<LinksT> clusters;
    %mutable;

    Level(Id fullsize, Clusters<LinksT>&& clusters);
    Level(Level&& other);
    Level& operator=(Level&& other);
};

// What a handle of a hierarchy is assigned, it shares.
%feature("action") Hierarchy::operator= %{
  result = *smartarg1 = **reinterpret_cast<decltype(smartarg1)*>(&jarg2);
%}

%nodefaultctor Hierarchy;
template <class LinksT>
class Hierarchy {
public:
    typedef std::vector<Level<LinksT>> LevelsT;
    typedef std::vector<Cluster<LinksT>*> RootT;

    virtual ~Hierarchy();

    virtual shared_ptr<Hierarchy<LinksT>> toSharedPtr();
    virtual AccWeight weight() const;
    virtual bool edges() const;

    const Nodes<LinksT>& nodes() const;
    const LevelsT& levels() const;
    const RootT& root() const;
    const HierScore& score() const;
    ClusterNodes<LinksT> unwrap(const Cluster<LinksT>& cl, bool maxshare = false) const;
    void output(const OutputOptions& opts) const;

    shared_ptr<Hierarchy<LinksT>> operator=(const Hierarchy<LinksT>& other);
};

%template(Level) Level<WeightedLinks>;
%template(SLevel) Level<UnweightedLinks>;
%template(Hierarchy) Hierarchy<WeightedLinks>;
%template(SHierarchy) Hierarchy<UnweightedLinks>;

}  // namespace vorl

%{
namespace vorl {

// As the entry, with default options.
template <class LinksT>
shared_ptr<Hierarchy<LinksT>> cluster(Nodes<LinksT>& nodes, bool edges) {
    return cluster<LinksT>(nodes, edges, ClusterOptions());
}

// As the entry, with the nodes in a shared list.
template <class LinksT>
shared_ptr<Hierarchy<LinksT>> cluster(shared_ptr<Nodes<LinksT>> nodes, bool edges,
                                      const ClusterOptions& options = ClusterOptions()) {
    return cluster<LinksT>(*nodes, edges, options);
}

}  // namespace vorl
%}

namespace vorl {

template <class LinksT>
shared_ptr<Hierarchy<LinksT>> cluster(Nodes<LinksT>& nodes, bool edges,
                                      const ClusterOptions& options = ClusterOptions());
template <class LinksT>
shared_ptr<Hierarchy<LinksT>> cluster(shared_ptr<Nodes<LinksT>> nodes, bool edges,
                                      const ClusterOptions& options = ClusterOptions());

%template(scluster) cluster<UnweightedLinks>;
%template(cluster) cluster<WeightedLinks>;

}  // namespace vorl
