// Calls what the library exports, so that a symbol that isn't exported fails to link, and checks
// that the answers are those of the library: main NETWORK.nse FOLDER
#include <vorl/fileio/iotypes.hpp>
#include <vorl/fileio/parse_number.hpp>
#include <vorl/fileio/parser_cnl.hpp>
#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/fileio/parser_rcg.hpp>
#include <vorl/fileio/printer_cnl.hpp>
#include <vorl/fileio/printer_rhb.hpp>
#include <vorl/graph.hpp>
#include <vorl/processing/intrinsics.hpp>
#include <vorl/processing/links_margin.hpp>
#include <vorl/processing/validation.hpp>
#include <vorl/reading/network.hpp>
#include <vorl/shared/operations.hpp>
#include <vorl/types/text.hpp>
#include <vorl/types/trace.hpp>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

using namespace vorl;

int faults = 0;

void check(bool holds, const std::string& what) {
    if (holds) return;
    std::cerr << "wrong: " << what << "\n";
    ++faults;
}

/// Two triangles with a link between them.
template <bool WEIGHTED, bool DIRECTED>
void fill(Graph<WEIGHTED>& graph) {
    graph.addNodes(3);
    graph.addNodes(NodesIdsT{3, 4, 5});
    graph.template addLink<DIRECTED>(0, 1);
    graph.template addNodeLinks<DIRECTED>(2, {InpLink<WEIGHTED>(0), InpLink<WEIGHTED>(1)});
    graph.template addNodeAndLinks<DIRECTED>(
        3, {InpLink<WEIGHTED>(4), InpLink<WEIGHTED>(5), InpLink<WEIGHTED>(2)});
    graph.template addLink<DIRECTED>(4, 5);
}

template <bool WEIGHTED, bool DIRECTED>
void useEngine(const std::string& folder) {
    const std::string kind =
        std::string(WEIGHTED ? "weighted" : "unweighted") + (DIRECTED ? " arcs" : " edges");
    Graph<WEIGHTED> graph;
    fill<WEIGHTED, DIRECTED>(graph);
    const auto hierarchy = graph.buildHierarchy();
    check(hierarchy->root().size() == 2, "root of " + kind);
    check(hierarchy == graph.hierarchy() && graph.node(5)->owncs().size() == 1, "node of " + kind);
    const auto& cluster = *hierarchy->root().front();
    check(hierarchy->unwrap(cluster).size() == 3 && cluster.nnodes() == 3 &&
              cluster.dsccs().size() + hierarchy->levels().size() > 1,
          "nodes of " + kind);

    OutputOptions output;
    output.clsfile = folder + "/clusters.cnl";
    output.clsfmt = toMask(ClsOutFmt::ROOT) | toMask(ClsOutFmt::EXTENDED);
    hierarchy->output(output);

    FileWrappers files;
    files.emplace_back(std::fopen((folder + "/again.cnl").c_str(), "w"));
    CnlPrinter(*hierarchy).output(files, output.clsfmt);
    FileWrapper description(std::fopen((folder + "/again.rhb").c_str(), "w"));
    RhbPrinter(*hierarchy).output(description);
    outpel(cluster, description);
    description.reset();
    files.clear();

    const auto last = static_cast<LevelNum>(hierarchy->levels().size() - 1);
    check(levelsByStep(*hierarchy, 0, last, 1).back() == last, "levels of " + kind);
    writeLevels(*hierarchy, levelsAround(*hierarchy, 2), output.clsfmt, folder + "/levels.cnl");
    writeDescription(*hierarchy, folder + "/levels.rhb");

    Graph<WEIGHTED> measured;
    fill<WEIGHTED, DIRECTED>(measured);
    Intrinsics measures(IntrinsicsFlags::ALL);
    const Size count = evaluateClusters(measures, measured, folder + "/again.cnl");
    check(count == 2 && std::fabs(measures.cdn - hierarchy->score().conductance) < 1e-6f,
          "measures of " + kind);

    Graph<WEIGHTED> loaded;
    fill<WEIGHTED, DIRECTED>(loaded);
    Clusters<typename Graph<WEIGHTED>::LinksT> clusters;
    const AccWeight weight = loadClusters<CnlParser>(clusters, loaded, folder + "/clusters.cnl");
    check(clusters.size() == 2 && weight == hierarchy->weight(), "loaded clusters of " + kind);
    Intrinsics modularity(IntrinsicsFlags::MODULARITY);
    intrinsicMeasures<DIRECTED>(modularity, clusters, weight, 1);
    check(modularity.mod > -1, "modularity of " + kind);
}

void useParsers(const std::string& network, const std::string& folder) {
    InpOptions input;
    input.filename = network;
    input.format = inpFileFmt(network.c_str());
    NslParser parser(input);
    const auto hierarchy = parser.build<Graph<false>>()->buildHierarchy();
    check(hierarchy->root().size() == 4, "clusters of karate");
    check(std::fabs(hierarchy->score().modularity - 0.412615f) < 1e-5f, "modularity of karate");

    const Network read = readNetwork({.file = network});
    check(!read.weighted && read.nodes == 34 && read.edges == 78, "network of karate");
    try {
        readNetwork({.file = folder + "/none.nse"});
        check(false, "a file that isn't there");
    } catch (const InputError& err) {
        check(std::string(err.what()).ends_with("none.nse: No such file or directory"), err.what());
    }

    input.filename = folder + "/network.rcg";
    input.format = FileFormat::RCG;
    std::ofstream(input.filename) << "/Graph weighted:1\n/Edges\n0> 1:0.5 2\n1> 2\n";
    check(RcgParser(input).build<Graph<true>>()->nodes().size() == 3, "nodes of rcg");
}

void useTheRest(const std::string& folder) {
    traceBuffered(false);
    check(!traceBuffered(), "trace");
    check(to_string(State::PROPAGATED) + to_string(Clustering::FUZZY_OVP) +
                  to_string(SzFnName::CLSSZ_LOG2) + to_string(LevMargKind::LEVID) +
                  to_string(toClsOutFmt(0x91)) + to_string(Reduction::MEAN) +
                  to_string(Speedup::COARSE) + to_string(Validation::SEVERE) +
                  to_string(IntrinsicsFlags::GAMMA) + to_string(FileFormat::NSA) +
                  strClsOutFmt(0x91) + toYesNo(true) + pad("1", 3) !=
              "",
          "texts");
    check(!isset(0xC5, ClsOutFmt::ROOT) && !anycustlevs(0xC5) && !anysignif(0xC5), "formats");
    check(!libBuild().rev().empty(), "build");
    SignifclsExtoptions significant;
    significant.setClszminf(SzFnName::CLSSZ_ROOT2);
    significant.validate();
    check(significant.clszminf(100) == 10, "size function");
    CustlevsOptions().validate();
    check(reducedLinksMarg(1000, Reduction::SEVERE) > 0, "margin of links");
    ensureDir(folder + "/made");
    validateVal<unsigned, unsigned long>(5, "5", false, nullptr);

    // Exceptions come over the border of the library with their types.
    bool caught = false;
    try {
        ClusterOptions(2.f);
    } catch (const std::invalid_argument&) {
        caught = true;
    }
    check(caught, "exception");

    Graph<true> graph;
    StructNodeErrors nodeErrors("nodes: ");
    StructLinkErrors linkErrors("links: ");
    graph.addNodes(2, 0, &nodeErrors);
    graph.addLink<false>(0, 1, 1, &linkErrors);
    graph.addLink<false>(0, 1, 1, &linkErrors);
    linkErrors.show();
    AccWeight weight = 2;
    Size links = 2;
    validate<false>(graph.nodes(), weight, links);
    check(links == 2, "validation");
    const auto nodes = graph.release();
    check(cluster(*nodes, true, ClusterOptions())->root().size() == 1, "pair");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    ftrace = nullptr;
    useEngine<false, false>(argv[2]);
    useEngine<true, false>(argv[2]);
    useEngine<false, true>(argv[2]);
    useEngine<true, true>(argv[2]);
    useParsers(argv[1], argv[2]);
    useTheRest(argv[2]);
    if (faults == 0) std::cout << "all as expected\n";
    return faults != 0;
}
