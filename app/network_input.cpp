#include "network_input.hpp"

#include "errors.hpp"
#include "output_text.hpp"

#include <algorithm>

namespace vorl::app {

void showWarnings(const NetworkReport& network, const ReadOptions& options) {
    for (const std::string& warning : network.warnings) tell(options.file + ": " + warning);
    if (network.zeroWeights != 0 && options.zeros == ZeroWeights::ONE)
        tell("--zero-weights drop leaves out links of weight 0");
}

std::unique_ptr<Source> openInput(const ReadOptions& options) {
    return openSource(options.file,
                      options.memoryLimit != 0 ? options.memoryLimit : vorl::memoryLimit());
}

LinkTable::LinkTable(const ReadOptions& options, const std::function<bool(const RawLink&)>& taken) {
    const auto source = openInput(options);
    NodeNames nodes;
    std::vector<bool> seen;
    const auto see = [&](Id number) {
        if (number >= seen.size()) seen.resize(std::max<Size>(number + Size{1}, 2 * seen.size()));
        linked += !seen[number];
        seen[number] = true;
    };
    facts = scanNetwork(*source, options.file, scanOptions(options), nodes, [&](const RawLink& ln) {
        const RawLink named{nodes.id(ln.src), nodes.id(ln.dst), ln.weight, ln.arc};
        if (taken && !taken(named)) return;
        see(ln.src);
        see(ln.dst);
        links.push_back(named);
    });
}

FileFormat outputFormat(const std::string& file, FileFormat told) {
    try {
        return networkFormat({.file = file, .format = told});
    } catch (const UnknownFormat& err) {
        throw UsageError(std::string(err.what()) + ", give it with --to");
    }
}

void requireOneStandardInput(const std::string& first, const std::string& second) {
    if (first == STANDARD_INPUT && second == STANDARD_INPUT)
        throw UsageError("only one of the files can be the standard input");
}

}  // namespace vorl::app
