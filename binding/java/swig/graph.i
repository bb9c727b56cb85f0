// The builder of a network and the collectors of its faults.

%{
#include <vorl/graph.hpp>
#include <vorl/processing/struct_errors.hpp>

namespace vorl::java {

// The heading of a collector, which only refers to it.
struct Heading {
    std::string text;

    virtual ~Heading() = default;
};

template <class ErrorsT>
struct OwnErrors : Heading, ErrorsT {
    explicit OwnErrors(const char* heading) : ErrorsT(nullptr) {
        text = heading;
        this->message = text.c_str();
    }
};

// Takes over what the other one has collected, and a copy of its heading.
inline StructErrors& assign(StructErrors& errors, const StructErrors& other) {
    std::string text = other.message;
    errors = other;
    if (auto* const own = dynamic_cast<Heading*>(&errors)) {
        own->text = std::move(text);
        errors.message = own->text.c_str();
    }
    return errors;
}

}  // namespace vorl::java
%}

%typemap(check) const char* message %{
  if (!$1) {
    SWIG_JavaThrowException(jenv, SWIG_JavaNullPointerException, "null string");
    return $null;
  }
%}
%feature("action") vorl::StructErrors::operator= %{
  result = &vorl::java::assign(*arg1, *arg2);
%}

%shared_handle(Graph, GraphPtr, vorl::Graph<true>)
%shared_handle(SGraph, SGraphPtr, vorl::Graph<false>)

namespace vorl {

template <bool LINKS_WEIGHTED>
class Graph;

%template(GraphPtr) shared_ptr<Graph<true>>;
%template(SGraphPtr) shared_ptr<Graph<false>>;

%nodefaultctor StructErrors;
class StructErrors {
public:
    static const Size ERRORS_MAX;
    %immutable;
    const char* message;
    %mutable;
    Size size;

    virtual ~StructErrors();
    virtual void show() const;
    bool defined() const;

    StructErrors& operator=(const StructErrors& other);
};

class StructNodeErrors : public StructErrors {
public:
    std::array<Id, 8> nids;

    virtual ~StructNodeErrors();
    Size add(Id nid);

    %extend {
        StructNodeErrors(const char* message) {
            return new vorl::java::OwnErrors<vorl::StructNodeErrors>(message);
        }
    }
};

class StructLinkErrors : public StructErrors {
public:
    std::array<LinkSrcDstId, 8> lids;

    virtual ~StructLinkErrors();
    Size add(LinkSrcDstId&& lid);

    %extend {
        StructLinkErrors(const char* message) {
            return new vorl::java::OwnErrors<vorl::StructLinkErrors>(message);
        }
    }
};

template <bool LINKS_WEIGHTED>
class Graph {
public:
    static const bool IS_WEIGHTED;
    typedef std::vector<Link<LinkWeight, LINKS_WEIGHTED>> LinksT;
    typedef std::vector<InpLink<LINKS_WEIGHTED>> InpLinksT;
    typedef std::unordered_map<Id, Node<LinksT>*> IdNodesT;

    explicit Graph(Id nodesNum = 0, bool shuffle = false, bool sumdups = false,
                   Reduction reduction = Reduction::NONE);
    ~Graph();

    shared_ptr<Graph<LINKS_WEIGHTED>> toSharedPtr();
    void reset(Id nodesNum = 0, bool shuffle = false, bool sumdups = false,
               Reduction reduction = Reduction::NONE);

    bool directed() const;
    bool reduced() const;
    Nodes<LinksT>& nodes();
    Node<LinksT>* node(Id id);
    shared_ptr<Hierarchy<LinksT>> hierarchy();
    shared_ptr<Hierarchy<LinksT>> buildHierarchy(const ClusterOptions& options = ClusterOptions());

    void addNodes(Id nodesNum, Id firstId = 0, StructNodeErrors* errors = nullptr);
    void addNodes(const std::vector<Id>& ids, StructNodeErrors* errors = nullptr);

    template <bool DIRECTED>
    void addLink(Id src, Id dst, LinkWeight weight = 1, StructLinkErrors* errors = nullptr);
    template <bool DIRECTED>
    void addNodeLinks(Id id, const InpLinksT& links, StructLinkErrors* errors = nullptr);
    template <bool DIRECTED>
    void addNodeAndLinks(Id id, const InpLinksT& links, StructLinkErrors* errors = nullptr);

    %template(addArc) addLink<true>;
    %template(addEdge) addLink<false>;
    %template(addNodeArcs) addNodeLinks<true>;
    %template(addNodeEdges) addNodeLinks<false>;
    %template(addNodeAndArcs) addNodeAndLinks<true>;
    %template(addNodeAndEdges) addNodeAndLinks<false>;

    shared_ptr<Nodes<LinksT>> release(IdNodesT* idnodes = nullptr, bool* directed = nullptr);
};

%template(Graph) Graph<true>;
%template(SGraph) Graph<false>;

}  // namespace vorl
