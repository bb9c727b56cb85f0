/// @file
/// Reader of the readable network format: sections of nodes, edges and arcs.
#pragma once

#include <vorl/graph.hpp>
#include <vorl/types/options.hpp>

#include <fstream>
#include <memory>
#include <optional>
#include <string>

namespace vorl {

/// Reads a network in the format RCG.
///
/// The file consists of sections: an optional "/Graph [weighted:0|1] [validated:0|1]", an optional
/// "/Nodes [number [first id]]", then "/Edges" and "/Arcs" in any order with lines of
/// `src> dst[:weight] dst[:weight] ...`. Lines that begin with "#" are comments.
class VORL_API RcgParser {
public:
    /// Opens the file and reads through to its first section of links.
    /// @throws std::invalid_argument if the format of the options isn't RCG, or for a bad value
    /// @throws std::ios_base::failure if the file can't be opened or read
    /// @throws std::domain_error if a section is unknown or out of order
    explicit RcgParser(const InpOptions& opts);

    /// Whether the links have weights, as the graph section tells; true without one.
    bool weighted() const { return m_weighted; }
    /// Whether the file claims that its links are valid; nothing depends on it.
    bool validated() const { return m_validated; }

    /// Nodes are created in an order that is drawn with the seed, the same on every run and
    /// machine, whatever the options say of shuffling. Links are stored in the order of the file.
    void shuffleBy(std::uint64_t seed) { m_seed = seed; }

    /// Reads the links into a new graph; to be called once.
    ///
    /// The weight of a link defaults to 1, and a weight of 0 reads as 1. Repeated nodes and links
    /// are traced. Nodes are created beforehand if the file gives their number and first id; a
    /// number of 0 with a first id fails an assertion.
    /// @throws std::ios_base::failure if the file can't be read
    /// @throws std::invalid_argument for an id or a weight that can't be read
    /// @throws std::domain_error for an unknown section
    /// @throws std::out_of_range for a node that wasn't announced, if nodes are
    template <class GraphT>
    std::shared_ptr<GraphT> build();

    /// Reads one line of links into the graph.
    /// @param graph takes the links
    /// @param line the text of the line, up to its NUL
    /// @param directed whether they are arcs
    /// @param errors collects repeated links, may be null
    /// @throws as `build`
    template <class GraphT>
    void parseLinks(GraphT& graph, const char* line, bool directed, StructLinkErrors* errors);

private:
    enum Section : std::uint8_t { NONE, GRAPH, NODES, EDGES, ARCS };

    void header();
    void graphValues(const char* pos);
    void nodesValues(const char* pos);

    static const char* const m_spaces;

    std::ifstream m_file;
    std::string m_line;
    bool m_shuffle;
    std::optional<std::uint64_t> m_seed;
    bool m_sumdups;
    Section m_bodysect = NONE;  ///< the section being read
    bool m_weighted = true;
    bool m_validated = false;
    bool m_directed = false;  ///< an arcs section has been seen
    Id m_ndsnum = 0;          ///< number of nodes given by the nodes section
    Id m_startid = ID_NONE;   ///< first id given there; ID_NONE while nodes aren't announced
    Size m_size = ~Size{0};   ///< size of the file in bytes, all bits set while unknown
};

extern template std::shared_ptr<Graph<false>> RcgParser::build();
extern template std::shared_ptr<Graph<true>> RcgParser::build();
extern template void RcgParser::parseLinks(Graph<false>&, const char*, bool, StructLinkErrors*);
extern template void RcgParser::parseLinks(Graph<true>&, const char*, bool, StructLinkErrors*);

}  // namespace vorl
