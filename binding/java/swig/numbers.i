// Numbers, their sentinels and links.

%{
#include <vorl/types/link.hpp>
#include <vorl/types/numbers.hpp>
%}

namespace vorl {

typedef unsigned int Id;
typedef unsigned long long Size;
typedef float LinkWeight;
typedef double AccWeight;
typedef float Share;
typedef unsigned int LevelNum;
typedef unsigned short Coupling;

%constant Id ID_NONE = vorl::ID_NONE;
%constant Id ID_MAX = vorl::ID_MAX;
%constant LinkWeight WEIGHT_NONE = vorl::WEIGHT_NONE;
%constant LinkWeight GAIN_NONE = vorl::GAIN_NONE;
%constant LevelNum LEVEL_NONE = vorl::LEVEL_NONE;
%constant LevelNum LEVEL_MAX = vorl::LEVEL_MAX;
%constant Coupling COUPLING_NONE = vorl::COUPLING_NONE;
%constant Coupling COUPLING_MAX = vorl::COUPLING_MAX;

template <class LinksT>
class NodeI;
template <class LinksT>
class Node;
template <class LinksT>
class Cluster;

template <class WeightT, bool WEIGHTED>
struct Link;

template <>
struct Link<vorl::LinkWeight, true> {
    static const bool IS_WEIGHTED;
    Node<std::vector<vorl::Link<vorl::LinkWeight, true>>>* dest;
    LinkWeight weight;

    explicit Link(Node<std::vector<vorl::Link<vorl::LinkWeight, true>>>* dst, LinkWeight wgt = 1);
};

template <>
struct Link<vorl::LinkWeight, false> {
    static const bool IS_WEIGHTED;
    static const LinkWeight weight;
    Node<std::vector<vorl::Link<vorl::LinkWeight, false>>>* dest;

    explicit Link(Node<std::vector<vorl::Link<vorl::LinkWeight, false>>>* dst);
};

template <class LinksT>
struct AccLink {
    Cluster<LinksT>* dest;
    AccWeight weight;

    explicit AccLink(Cluster<LinksT>* dst, AccWeight wgt = 1);
};

template <bool WEIGHTED>
struct InpLink;

template <>
struct InpLink<true> {
    static const bool IS_WEIGHTED;
    Id id;
    LinkWeight weight;

    explicit InpLink(Id dst, LinkWeight wgt = 1);
};

struct LinkSrcDstId {
    Id sid;
    Id did;

    %extend {
        LinkSrcDstId(Id sid = ID_NONE, Id did = ID_NONE) {
            return new vorl::LinkSrcDstId{sid, did};
        }
    }
};

%template(Arc) Link<LinkWeight, true>;
%template(SArc) Link<LinkWeight, false>;
%template(InpLink) InpLink<true>;

typedef std::vector<vorl::Link<vorl::LinkWeight, true>> WeightedLinks;
typedef std::vector<vorl::Link<vorl::LinkWeight, false>> UnweightedLinks;

%template(CArc) AccLink<WeightedLinks>;
%template(SCArc) AccLink<UnweightedLinks>;

}  // namespace vorl

%inline %{
namespace vorl {

/// A link of an unweighted network.
inline InpLink<false> makeSInpLink(Id id) { return InpLink<false>(id); }

}  // namespace vorl
%}
