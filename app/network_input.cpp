#include "network_input.hpp"

#include "errors.hpp"
#include "output_text.hpp"

#include <vorl/reading/pack.hpp>

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
    NodeNames names(options.labels);
    std::vector<bool> seen;
    const auto see = [&](Id number) {
        if (number >= seen.size()) seen.resize(std::max<Size>(number + Size{1}, 2 * seen.size()));
        linked += !seen[number];
        seen[number] = true;
    };
    facts = scanNetwork(*source, options.file, scanOptions(options), names, [&](const RawLink& ln) {
        const RawLink named{names.id(ln.src), names.id(ln.dst), ln.weight, ln.arc};
        if (taken && !taken(named)) return;
        see(ln.src);
        see(ln.dst);
        links.push_back(named);
    });
    nodes = names.size();
    if (names.labels()->size() != 0) labels = names.labels();
}

NetworkFormat outputFormat(const std::string& file, NetworkFormat told) {
    const NetworkFormat format = told == NetworkFormat::UNKNOWN ? formatByName(file) : told;
    if (format == NetworkFormat::UNKNOWN)
        throw UsageError(file +
                         ": the format can't be told from the name; it is nse (edges), nsa (arcs), "
                         "rcg (sections) or list, give it with --to");
    if (format > NetworkFormat::LIST)
        throw UsageError(file + ": networks are written as nse, nsa, rcg or list, and not as " +
                         nameOf(format));
    return format;
}

char separatorOf(const std::string& file) { return plainName(file).ends_with(".csv") ? ',' : '\t'; }

void requireOneStandardInput(const std::string& first, const std::string& second) {
    if (first == STANDARD_INPUT && second == STANDARD_INPUT)
        throw UsageError("only one of the files can be the standard input");
}

}  // namespace vorl::app
