/// @file
/// Reader of the plain network format: one link a line.
#pragma once

#include <vorl/graph.hpp>
#include <vorl/types/options.hpp>

#include <fstream>
#include <memory>
#include <optional>
#include <string>

namespace vorl {

/// Reads a network in the format NSL, in its flavours NSE (edges) and NSA (arcs).
///
/// A line holds `src dst [weight]`, separated by blanks or tabs. Lines that begin with "#" are
/// comments; one of those at the start can be the header "# Nodes: N, Edges: M, Weighted: 0|1"
/// (or "Arcs:"), which overrides the flavour of the options.
class VORL_API NslParser {
public:
    /// Opens the file and reads its header.
    /// @throws std::invalid_argument if the format of the options isn't NSE or NSA
    /// @throws std::ios_base::failure if the file can't be opened or read
    explicit NslParser(const InpOptions& opts);

    /// Whether the header tells of weights, or there is none.
    bool weighted() const { return m_weighted; }
    /// Whether the lines are arcs.
    bool directed() const { return m_directed; }

    /// Nodes are created in an order that is drawn with the seed, the same on every run and
    /// machine, whatever the options say of shuffling. Links are stored in the order of the file.
    void shuffleBy(std::uint64_t seed) { m_seed = seed; }

    /// Reads the body into a new graph; to be called once.
    ///
    /// The weight of a link defaults to 1, and a weight of 0 reads as 1. Repeated links are traced.
    /// @param weights whether the third column is read; never in a graph of unweighted links
    /// @throws std::ios_base::failure if the file can't be read
    /// @throws std::invalid_argument for an id or a weight that can't be read
    /// @throws std::domain_error for a line with a single id
    template <class GraphT>
    std::shared_ptr<GraphT> build(bool weights = true);

private:
    void header();
    bool parseHeader(const char* pos);
    Id estimateNodes() const;

    static const char* const m_spaces;

    Size m_size = ~Size{0};  ///< size of the file in bytes, all bits set while unknown
    std::ifstream m_file;
    std::string m_line;
    bool m_shuffle;
    std::optional<std::uint64_t> m_seed;
    bool m_sumdups;
    bool m_weighted = true;
    bool m_directed;
    Id m_ndsnum = 0;    ///< number of nodes given by the header
    Size m_lnsnum = 0;  ///< number of links given by the header
};

extern template std::shared_ptr<Graph<false>> NslParser::build(bool);
extern template std::shared_ptr<Graph<true>> NslParser::build(bool);

}  // namespace vorl
