// Validation, weights and measures.

%{
#include <vorl/processing/intrinsics.hpp>
#include <vorl/processing/links_margin.hpp>
#include <vorl/processing/validation.hpp>
#include <vorl/processing/weights.hpp>

namespace vorl {
template <class LinksT>
using ClusterLinkPos = typename std::vector<AccLink<LinksT>>::iterator;
}
%}

namespace vorl {

Id reducedLinksMarg(Id nodesNum, Reduction reduction);

struct Intrinsics {
    float cdn;
    float mod;
    float gamma;
    float sgmod;
    IntrinsicsFlags flags;

    bool defined() const;
};

template <bool NONSYMMETRIC, class LinksT>
void intrinsicMeasures(Intrinsics& intr, Clusters<LinksT>& cls, AccWeight weight,
                       AccWeight gamma = 1);

%template(intrinsicMeasuresArcs) intrinsicMeasures<true, WeightedLinks>;
%template(intrinsicMeasuresEdges) intrinsicMeasures<false, WeightedLinks>;
%template(intrinsicMeasuresSArcs) intrinsicMeasures<true, UnweightedLinks>;
%template(intrinsicMeasuresSEdges) intrinsicMeasures<false, UnweightedLinks>;

template <bool NONSYMMETRIC, class NodesT>
void validate(NodesT& nodes, AccWeight& weight, Size& linksNum, bool severe = false);

%template(validateArcs) validate<true, Nodes<WeightedLinks>>;
%template(validateEdges) validate<false, Nodes<WeightedLinks>>;
%template(validateSArcs) validate<true, Nodes<UnweightedLinks>>;
%template(validateSEdges) validate<false, Nodes<UnweightedLinks>>;

template <bool NONSYMMETRIC, class ItemT>
AccWeight linksWeight(const ItemT& item);

%template(NodeArcsWeight) linksWeight<true, Node<WeightedLinks>>;
%template(NodeEdgesWeight) linksWeight<false, Node<WeightedLinks>>;
%template(SNodeArcsWeight) linksWeight<true, Node<UnweightedLinks>>;
%template(SNodeEdgesWeight) linksWeight<false, Node<UnweightedLinks>>;
%template(carcsWeight) linksWeight<true, Cluster<WeightedLinks>>;
%template(cedgesWeight) linksWeight<false, Cluster<WeightedLinks>>;
%template(scarcsWeight) linksWeight<true, Cluster<UnweightedLinks>>;
%template(scedgesWeight) linksWeight<false, Cluster<UnweightedLinks>>;

// A position in the list of a cluster's links.
%nodefaultctor;
%nodefaultdtor;
template <class LinksT>
class ClusterLinkPos {};
%template(CArcPos) ClusterLinkPos<WeightedLinks>;
%template(SCArcPos) ClusterLinkPos<UnweightedLinks>;
%clearnodefaultctor;
%clearnodefaultdtor;

template <class LinksT>
ClusterLinkPos<LinksT> addLink(std::vector<AccLink<LinksT>>& links, ClusterLinkPos<LinksT> hint,
                               Cluster<LinksT>* dest, AccWeight weight);

%template(addCArc) addLink<WeightedLinks>;
%template(addSCArc) addLink<UnweightedLinks>;

}  // namespace vorl
