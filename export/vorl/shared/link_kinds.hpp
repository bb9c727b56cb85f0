/// @file
/// Operations on links under a name for each kind: arcs or edges, weighted or, with an S, not.
#pragma once

#include <vorl/processing/validation.hpp>
#include <vorl/processing/weights.hpp>

namespace vorl {

/// @name `validate` of nodes
/// @{
inline void validateArcs(Nodes<WeightedLinks>& nodes, AccWeight& weight, Size& linksNum,
                         bool severe = false) {
    validate<true>(nodes, weight, linksNum, severe);
}
inline void validateEdges(Nodes<WeightedLinks>& nodes, AccWeight& weight, Size& linksNum,
                          bool severe = false) {
    validate<false>(nodes, weight, linksNum, severe);
}
inline void validateSArcs(Nodes<UnweightedLinks>& nodes, AccWeight& weight, Size& linksNum,
                          bool severe = false) {
    validate<true>(nodes, weight, linksNum, severe);
}
inline void validateSEdges(Nodes<UnweightedLinks>& nodes, AccWeight& weight, Size& linksNum,
                           bool severe = false) {
    validate<false>(nodes, weight, linksNum, severe);
}
/// @}

/// @name `linksWeight` of a cluster
/// @{
inline AccWeight carcsWeight(const Cluster<WeightedLinks>& cluster) {
    return linksWeight<true>(cluster);
}
inline AccWeight cedgesWeight(const Cluster<WeightedLinks>& cluster) {
    return linksWeight<false>(cluster);
}
inline AccWeight scarcsWeight(const Cluster<UnweightedLinks>& cluster) {
    return linksWeight<true>(cluster);
}
inline AccWeight scedgesWeight(const Cluster<UnweightedLinks>& cluster) {
    return linksWeight<false>(cluster);
}
/// @}

/// @name `addLink` to the list of a cluster
/// @{
inline Links<AccLink<WeightedLinks>>::iterator addCArc(Links<AccLink<WeightedLinks>>& links,
                                                       Links<AccLink<WeightedLinks>>::iterator hint,
                                                       Cluster<WeightedLinks>* dest,
                                                       AccWeight weight) {
    return addLink(links, hint, dest, weight);
}
inline Links<AccLink<UnweightedLinks>>::iterator addSCArc(
    Links<AccLink<UnweightedLinks>>& links, Links<AccLink<UnweightedLinks>>::iterator hint,
    Cluster<UnweightedLinks>* dest, AccWeight weight) {
    return addLink(links, hint, dest, weight);
}
/// @}

}  // namespace vorl
