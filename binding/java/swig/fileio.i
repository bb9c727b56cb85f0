// Files: formats, readers and writers.

%{
#include <vorl/fileio/iotypes.hpp>
#include <vorl/fileio/parser_cnl.hpp>
#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/fileio/parser_rcg.hpp>
#include <vorl/fileio/printer_cnl.hpp>
#include <vorl/fileio/printer_rhb.hpp>
%}

%typemap(check) const char* filename %{
  if (!$1) {
    SWIG_JavaThrowException(jenv, SWIG_JavaNullPointerException, "null string");
    return $null;
  }
%}

// A printer writes into an open file.
%typemap(check) vorl::FileWrapper& fout %{
  if (!$1->fdescr()) {
    SWIG_JavaThrowException(jenv, SWIG_JavaNullPointerException, "the file is not open");
    return $null;
  }
%}

namespace vorl {

FileFormat inpFileFmt(const char* filename);
void ensureDir(const std::string& dir);

class FileWrapper {
public:
    explicit FileWrapper(std::FILE* file = nullptr, bool closable = true);
    FileWrapper(FileWrapper&& other);
    ~FileWrapper();

    FileWrapper& operator=(FileWrapper&& other);
    std::FILE* fdescr() const;
    int reset(std::FILE* file = nullptr, bool closable = true);
    std::FILE* release();
};

class NslParser {
public:
    explicit NslParser(const InpOptions& opts);
    ~NslParser();

    bool weighted() const;
    %extend {
        shared_ptr<Graph<true>> build() { return self->build<vorl::Graph<true>>(); }
        shared_ptr<Graph<false>> sbuild() { return self->build<vorl::Graph<false>>(); }
    }
};

class RcgParser {
public:
    explicit RcgParser(const InpOptions& opts);
    ~RcgParser();

    bool weighted() const;
    bool validated() const;
    %extend {
        shared_ptr<Graph<true>> build() { return self->build<vorl::Graph<true>>(); }
        shared_ptr<Graph<false>> sbuild() { return self->build<vorl::Graph<false>>(); }
    }
};

%nodefaultctor;
%nodefaultdtor;
template <class LinksT>
class NodesShares {};
%template(NodeShareMap) NodesShares<WeightedLinks>;
%template(SNodeShareMap) NodesShares<UnweightedLinks>;
%clearnodefaultctor;
%clearnodefaultdtor;

template <class LinksT>
struct RawMembership {
    %immutable;
    Clusters<LinksT> clusters;
    %mutable;
    NodesShares<LinksT> ndshares;

    RawMembership();
    RawMembership(RawMembership&& other);
    ~RawMembership();
    RawMembership& operator=(RawMembership&& other);
};

%template(RawMembership) RawMembership<WeightedLinks>;
%template(SRawMembership) RawMembership<UnweightedLinks>;

%newobject CnlParser::build;
%newobject CnlParser::sbuild;
class CnlParser {
public:
    explicit CnlParser(const std::string& filename);
    ~CnlParser();

    bool fuzzy() const;
    %extend {
        RawMembership<WeightedLinks>* build(
            std::unordered_map<Id, Node<WeightedLinks>*>& nodes) {
            return new vorl::RawMembership<vorl::WeightedLinks>(
                std::move(*self->build<vorl::WeightedLinks>(nodes)));
        }
        RawMembership<UnweightedLinks>* sbuild(
            std::unordered_map<Id, Node<UnweightedLinks>*>& nodes) {
            return new vorl::RawMembership<vorl::UnweightedLinks>(
                std::move(*self->build<vorl::UnweightedLinks>(nodes)));
        }
    }
};

%{
namespace vorl {

// As the loader, with the graph in a shared pointer.
template <class ParserT, class GraphT>
AccWeight loadClusters(Clusters<typename GraphT::LinksT>& clusters, shared_ptr<GraphT> graph,
                       const std::string& filename,
                       Validation validation = Validation::STANDARD) {
    return loadClusters<ParserT, GraphT>(clusters, *graph, filename, validation);
}

}  // namespace vorl
%}

template <class ParserT, class GraphT>
AccWeight loadClusters(Clusters<typename GraphT::LinksT>& clusters, GraphT& graph,
                       const std::string& filename, Validation validation = Validation::STANDARD);
template <class ParserT, class GraphT>
AccWeight loadClusters(Clusters<typename GraphT::LinksT>& clusters, shared_ptr<GraphT> graph,
                       const std::string& filename, Validation validation = Validation::STANDARD);

%template(sloadClusters) loadClusters<CnlParser, Graph<false>>;
%template(loadClusters) loadClusters<CnlParser, Graph<true>>;

template <class LinksT>
class RhbPrinter {
public:
    explicit RhbPrinter(const Hierarchy<LinksT>& hier);
    RhbPrinter(const RhbPrinter& other);
    ~RhbPrinter();

    void output(FileWrapper& fout) const;
};

template <class LinksT>
class CnlPrinter {
public:
    explicit CnlPrinter(const Hierarchy<LinksT>& hier);
    CnlPrinter(const CnlPrinter& other);
    ~CnlPrinter();

    void output(std::vector<FileWrapper>& fouts, ClsOutFmtBase clsfmt, bool fltMembers = false,
                LevelNum blev = 0, LevelNum elev = LEVEL_NONE, float levStepRatio = 1,
                const SignifclsOptions* signif = nullptr) const;
};

%template(RhbPrinter) RhbPrinter<WeightedLinks>;
%template(SRhbPrinter) RhbPrinter<UnweightedLinks>;
%template(CnlPrinter) CnlPrinter<WeightedLinks>;
%template(SCnlPrinter) CnlPrinter<UnweightedLinks>;

}  // namespace vorl
