/// @file
/// The text of a network.
#pragma once

#include <vorl/reading/network_scan.hpp>
#include <vorl/types/export.hpp>

#include <optional>
#include <string>

namespace vorl {

/// Builds the text of a network, link by link.
///
/// Links of one source that follow each other share a line where the format allows for it, so that
/// the nodes appear in the same order in every format.
class VORL_API NetworkWriter {
public:
    /// @param facts     of the network to be written
    /// @param labels    the names that ids of nodes stand for, which only some formats hold; null
    ///     for none
    /// @param separator between the columns of a list
    NetworkWriter(NetworkFormat format, const NetworkFacts& facts, const Labels* labels = nullptr,
                  char separator = '\t');

    /// @param ln between nodes by id
    void add(const RawLink& ln);
    /// Ends the text and gives it away.
    std::string take();

private:
    void startSection(bool arcs);
    void addRow(const RawLink& ln);

    NetworkFormat m_format;
    bool m_weighted;
    bool m_directed;
    const Labels* m_labels;
    char m_separator;
    std::string m_text;
    std::optional<bool> m_arcs;  ///< the open section is one of arcs
    std::optional<Id> m_src;     ///< source of the open line
};

}  // namespace vorl
