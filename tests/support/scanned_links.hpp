/// @file
/// The links that a text of a network tells of, in words.
#pragma once

#include <vorl/reading/network_scan.hpp>

#include <string>
#include <string_view>

namespace vorl::test {

/// The links of a text, such as `a>b:2`, with `-` for edges.
/// @param all takes the names of all nodes, if it isn't null
inline std::string linksOf(std::string_view text, const ScanOptions& options,
                           std::string* all = nullptr) {
    TextSource source(text);
    NodeNames nodes;
    std::string result;
    scanNetwork(source, "f", options, nodes, [&](const RawLink& ln) {
        const auto name = [&](Id node) {
            return naming::plain(nodes.id(node), nodes.labels().get());
        };
        result += (result.empty() ? "" : " ") + name(ln.src) + (ln.arc ? ">" : "-") + name(ln.dst);
        if (ln.weight != 1) {
            result += ':' + std::to_string(ln.weight);
            while (result.back() == '0' || result.back() == '.') {
                const bool point = result.back() == '.';
                result.pop_back();
                if (point) break;
            }
        }
    });
    for (Id node = 0; all && node < nodes.size(); ++node)
        *all += (node ? " " : "") + naming::plain(nodes.id(node), nodes.labels().get());
    return result;
}

}  // namespace vorl::test
