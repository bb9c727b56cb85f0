// Nodes, clusters and their memberships. Items belong to the list that holds them.

%{
#include <vorl/types/item.hpp>
%}

namespace vorl {

template <class ClusterT>
struct Owner {
    ClusterT* dest;
    unsigned short numac;

    explicit Owner(ClusterT* cluster, unsigned int num = 0);
    Owner(const Owner& other);

    Owner& operator=(const Owner& other);
    bool operator==(const Owner& other) const;
    bool operator==(const ClusterT* cluster) const;
    %extend {
        bool unequal(const Owner& other) const { return !(*self == other); }
        bool unequal(const ClusterT* cluster) const { return !(*self == cluster); }
    }
};

template <class ItemT>
struct ItemShare {
    ItemT* dest;
    Share share;

    ItemShare& operator=(const ItemShare& other);

    %extend {
        ItemShare(ItemT* dest, Share share = 1) { return new vorl::ItemShare<ItemT>{dest, share}; }
        ItemShare(const ItemShare& other) { return new vorl::ItemShare<ItemT>(other); }
    }
};

%nodefaultctor NodeI;
template <class LinksT>
class NodeI {
public:
    typedef std::vector<Owner<Cluster<LinksT>>> OwnersT;
    typedef std::vector<NodeI<LinksT>*> DescsT;

    %immutable;
    Id id;
    %mutable;
    unsigned int totac;

    virtual ~NodeI();

    virtual AccWeight weight() const;
    virtual void addWeight(AccWeight weight);
    virtual AccWeight ctxWeight(bool defined = true) const;
    virtual AccWeight nnodes() const;
    virtual void tidy();

    const DescsT& dsccs() const;
    const OwnersT& owncs() const;
};

template <class LinksT>
class Node : public NodeI<LinksT> {
public:
    typedef std::vector<Owner<Cluster<LinksT>>> OwnersT;

    %immutable;
    Id id;
    %mutable;
    LinksT links;

    explicit Node(Id id, Size reserve = 0);
    Node(Node&& other);
    virtual ~Node();

    virtual AccWeight ctxWeight(bool defined = true) const;
    const OwnersT& owncs() const;
};

template <class LinksT>
class Cluster : public NodeI<LinksT> {
public:
    typedef std::vector<Owner<Cluster<LinksT>>> OwnersT;
    typedef std::vector<NodeI<LinksT>*> DescsT;

    %immutable;
    Id id;
    LevelNum levnum;
    %mutable;
    std::vector<AccLink<LinksT>> links;
    DescsT des;

    Cluster(LevelNum levnum, Id id, Size reserve);
    Cluster(LevelNum levnum, Size reserve);
    %extend {
        Cluster(LevelNum levnum) { return new vorl::Cluster<LinksT>(levnum, vorl::Size{0}); }
    }
    virtual ~Cluster();

    virtual AccWeight ctxWeight(bool defined = true) const;
    const OwnersT& owncs() const;
};

%extend Cluster<UnweightedLinks> {
    Cluster(Cluster<UnweightedLinks>&& other) {
        return new vorl::Cluster<vorl::UnweightedLinks>(std::move(other));
    }
}

// The numbers of native methods stay what they are: 3 is that of a form which Java can't tell from
// another one.
%extend Cluster<WeightedLinks> {
    Cluster(unsigned int levnum) {
        return new vorl::Cluster<vorl::WeightedLinks>(levnum, vorl::Size{0});
    }
    Cluster(Cluster<WeightedLinks>&& other) {
        return new vorl::Cluster<vorl::WeightedLinks>(std::move(other));
    }
}

%template(Owner) Owner<Cluster<WeightedLinks>>;
%template(SOwner) Owner<Cluster<UnweightedLinks>>;
%template(NodeShare) ItemShare<Cluster<WeightedLinks>>;
%template(SNodeShare) ItemShare<Cluster<UnweightedLinks>>;
%template(NodeI) NodeI<WeightedLinks>;
%template(SNodeI) NodeI<UnweightedLinks>;
%template(Node) Node<WeightedLinks>;
%template(SNode) Node<UnweightedLinks>;
%template(SCluster) Cluster<UnweightedLinks>;
%template(Cluster) Cluster<WeightedLinks>;

}  // namespace vorl
