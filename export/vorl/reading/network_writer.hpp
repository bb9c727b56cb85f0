/// @file
/// The text of a network.
#pragma once

#include <vorl/reading/network_scan.hpp>
#include <vorl/types/export.hpp>
#include <vorl/types/flags.hpp>

#include <optional>
#include <string>

namespace vorl {

/// Builds the text of a network, link by link.
///
/// Links of one source that follow each other share a line where the format allows for it, so that
/// the nodes appear in the same order in every format.
class VORL_API NetworkWriter {
public:
    /// @param format RCG, NSE or NSA
    /// @param facts of the network to be written
    NetworkWriter(FileFormat format, const NetworkFacts& facts);

    /// @param ln between nodes by id
    void add(const RawLink& ln);
    /// Ends the text and gives it away.
    std::string take();

private:
    void startSection(bool arcs);

    FileFormat m_format;
    bool m_weighted;
    std::string m_text;
    std::optional<bool> m_arcs;  ///< the open section is one of arcs
    std::optional<Id> m_src;     ///< source of the open line
};

}  // namespace vorl
