// The reader of the format CNL on any text behind a byte of options, on a fixed network. Clusters
// that the program calls strict are loaded and measured.
#include "../support/accepted_network.hpp"

#include <vorl/fileio/parser_cnl.hpp>
#include <vorl/reading/clusters_file.hpp>
#include <vorl/reading/memory_file.hpp>
#include <vorl/shared/operations.hpp>
#include <vorl/types/trace.hpp>

#include <strings.h>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using namespace vorl;

constexpr Id NODES = 120;

/// A ring with chords.
template <bool DIRECTED, class GraphT>
GraphT ring() {
    GraphT graph(NODES);
    graph.addNodes(NODES);
    for (Id i = 0; i < NODES; ++i) {
        graph.template addLink<DIRECTED>(i, (i + 1) % NODES, 0.5f);
        graph.template addLink<DIRECTED>(i, (i * 7 + 5) % NODES, 1.5f);
    }
    return graph;
}

/// Whether the text asks for what the reader stops the process over: counts in the header that
/// are wrong, or a node twice in one line with shares.
bool breaksTheContract(const std::string& text) {
    std::istringstream lines(text);
    Size rows = 0;
    std::set<Size> told;
    for (std::string line; std::getline(lines, line);) {
        const char* pos = line.c_str() + std::min(line.find_first_not_of(" \t"), line.size());
        if (*pos == '#') {
            // Any count of any comment is looked at, although just one of them is the header.
            for (const char* key = pos; *key != '\0'; ++key)
                if (strncasecmp(key, "clusters:", 9) == 0)
                    told.insert(std::strtoull(key + 9, nullptr, 10));
                else if (strncasecmp(key, "nodes:", 6) == 0 &&
                         static_cast<Id>(std::strtoull(key + 6, nullptr, 10)) - 1 < NODES - 1)
                    return true;
            continue;
        }
        if (*pos == '\0') continue;
        ++rows;
        char* mark;
        std::strtoull(pos, &mark, 10);
        if (*mark == '>') pos = mark + 1;
        std::set<Size> members;
        bool twice = false;
        bool shares = false;
        while (*pos != '\0') {
            twice |= !members.insert(std::strtoull(pos, nullptr, 10)).second;
            shares |= std::strchr(pos, ':') != nullptr;
            pos += std::strcspn(pos, " \t");
            pos += std::strspn(pos, " \t");
        }
        if (twice && shares) return true;
    }
    told.erase(0);
    return told.size() > 1 || (told.size() == 1 && *told.begin() != rows);
}

template <class GraphT>
void build(GraphT graph, const std::string& name) {
    typename GraphT::IdNodesT idnodes;
    const auto nodes = graph.release(&idnodes);
    std::shared_ptr<RawMembership<typename GraphT::LinksT>> membership;
    try {
        membership = CnlParser(name).build<typename GraphT::LinksT>(idnodes);
    } catch (const std::invalid_argument&) {
        return;
    } catch (const std::out_of_range&) {
        return;
    }
    for (const auto& [node, shares] : membership->ndshares)
        test::require(!shares.empty() && shares.size() <= node->owners.size(),
                      "shares don't belong to the clusters of their node");
    for (const auto& cl : membership->clusters)
        for (const auto* member : cl.des)
            test::require(std::find(member->owners.begin(), member->owners.end(), &cl) !=
                              member->owners.end(),
                          "a member doesn't know its cluster");
}

/// Loads and measures the clusters, which must be strict.
template <class GraphT, class MakeT>
void load(const ClustersFile& file, MakeT make, const std::string& name) {
    const std::set<Id> owned(file.nodes.begin(), file.nodes.end());
    double expected = 0;
    GraphT graph = make();
    for (const auto& node : graph.nodes())
        if (owned.contains(node.id)) {
            expected += node.weight();
            for (const auto& ln : node.links)
                if (owned.contains(ln.dest->id)) expected += double{ln.weight};
        }
    Clusters<typename GraphT::LinksT> clusters;
    try {
        loadClusters<CnlParser>(clusters, graph, name);
    } catch (const std::string& message) {
        test::require(false, message.c_str());
    }
    test::require(clusters.size() == file.clusters.size(), "the library reads other clusters");
    double weight = 0;
    for (const auto& cl : clusters) {
        weight += cl.weight();
        for (const auto& ln : cl.links) weight += ln.weight;
    }
    // An unweighted back link that the validation creates has a weight.
    if (GraphT::IS_WEIGHTED)
        test::require(std::abs(weight - expected) <= 1e-4 * (1 + expected), "weight is lost");

    if (clusters.empty()) return;
    Intrinsics intr;
    GraphT another = make();
    test::require(evaluateClusters(intr, another, name) == clusters.size(), "a cluster is lost");
    test::require(intr.cdn >= 0 && intr.cdn <= 1, "the conductance is out of range");
    test::require(std::abs(intr.mod) <= 1 && intr.gamma >= 0, "a measure is out of range");
}

template <bool DIRECTED, class GraphT>
void read(const std::string& text) {
    const MemoryFile file(text);
    if (!breaksTheContract(text)) build(ring<DIRECTED, GraphT>(), file.name());
    try {
        const ClustersFile clusters = parseClusters(text, "fuzz");
        const bool known = clusters.nodes.empty() || clusters.nodes.back() < NODES;
        const bool plain = text.find('\r') == std::string::npos && !text.starts_with("\xEF");
        if (clusters.deviations.empty() && !clusters.severalLevels && known && plain)
            load<GraphT>(clusters, ring<DIRECTED, GraphT>, file.name());
    } catch (const InputError&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ftrace = nullptr;
    if (size == 0) return 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0] & 3) {
        case 0: read<false, Graph<true>>(text); break;
        case 1: read<true, Graph<true>>(text); break;
        case 2: read<false, Graph<false>>(text); break;
        default: read<true, Graph<false>>(text);
    }
    return 0;
}
