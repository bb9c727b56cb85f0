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

NetworkTable readTable(const ReadOptions& options, const std::function<bool(Id)>& wanted) {
    const auto source = openInput(options);
    NodeNames names(options.labels);
    NetworkTable table;
    std::vector<bool> seen;
    const auto see = [&](Id number) {
        if (number >= seen.size()) seen.resize(std::max<Size>(number + Size{1}, 2 * seen.size()));
        table.linked += !seen[number];
        seen[number] = true;
    };
    ScanOptions scan = scanOptions(options);
    scan.mayLackLinks = true;
    table.facts = scanNetwork(*source, options.file, scan, names, [&](const RawLink& ln) {
        const RawLink named{names.id(ln.src), names.id(ln.dst), ln.weight, ln.arc};
        if (wanted && !(wanted(named.src) && wanted(named.dst))) return;
        see(ln.src);
        see(ln.dst);
        table.links.push_back(named);
    });
    table.nodes = names.ids();
    if (wanted) std::erase_if(table.nodes, [&](Id node) { return !wanted(node); });
    if (names.labels()->size() != 0) table.labels = names.labels();
    if (!table.facts.doubt.empty()) tell(options.file + ": " + table.facts.doubt);
    return table;
}

Size dropLinkless(NetworkTable& table) {
    const Size before = table.nodes.size();
    if (before == table.linked) return 0;
    std::vector<Id> linked;
    linked.reserve(2 * table.links.size());
    for (const RawLink& ln : table.links) linked.insert(linked.end(), {ln.src, ln.dst});
    std::sort(linked.begin(), linked.end());
    return std::erase_if(table.nodes, [&linked](Id node) {
        return !std::binary_search(linked.begin(), linked.end(), node);
    });
}

NetworkFormat outputFormat(const std::string& file, NetworkFormat told) {
    const NetworkFormat format = told == NetworkFormat::UNKNOWN ? formatByName(file) : told;
    if (format == NetworkFormat::UNKNOWN)
        throw UsageError(file +
                         ": the format can't be told from the name; it is nse (edges), nsa (arcs), "
                         "rcg (sections), list, mtx, metis, pajek, gml, graphml or json, give it "
                         "with --to");
    return format;
}

void requireHolds(NetworkFormat format, const NetworkTable& network, const std::string& file) {
    const std::string what = obstacle(format, network);
    if (!what.empty()) throw InputError(InputError::Parts{.file = file, .wrong = what});
}

char separatorOf(const std::string& file) { return plainName(file).ends_with(".csv") ? ',' : '\t'; }

TableForm tableFormOf(const std::string& file) {
    const std::string name = plainName(file);
    return name.ends_with(".json")  ? TableForm::JSON
           : name.ends_with(".csv") ? TableForm::COMMAS
                                    : TableForm::TABS;
}

InputError engineFault(const std::string& file, std::string what) {
    while (what.ends_with('\n')) what.pop_back();
    return InputError(file + ": " + what);
}

InputError beyondEngine(const std::string& file, const std::overflow_error& err) {
    return engineFault(file,
                       std::string("no hierarchy can be built, the network is beyond what the "
                                   "engine counts (\"vorl communities\" finds its communities): ") +
                           err.what());
}

void requireOneStandardInput(const std::string& first, const std::string& second) {
    if (first == STANDARD_INPUT && second == STANDARD_INPUT)
        throw UsageError("only one of the files can be the standard input");
}

}  // namespace vorl::app
