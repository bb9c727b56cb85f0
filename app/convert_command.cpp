#include "convert_command.hpp"

#include "errors.hpp"
#include "output_text.hpp"
#include "output_tree.hpp"
#include "progress_line.hpp"
#include "text_output.hpp"

#include <vorl/reading/network_writer.hpp>

#include <algorithm>
#include <optional>

namespace vorl::app {

namespace {

void checkFormat(const ConvertCommand& command, NetworkFormat format, const NetworkFacts& facts,
                 Size linked, Size nodes, bool names) {
    const auto refuse = [&](const std::string& what) {
        throw InputError(command.read.file + ": " + what);
    };
    const bool numbers = format == NetworkFormat::NSE || format == NetworkFormat::NSA ||
                         format == NetworkFormat::RCG;
    if (names && numbers)
        refuse(std::string("nodes have names, which the format ") + nameOf(format) +
               " can't hold; list can");
    if (format == NetworkFormat::NSE && facts.arcs != 0)
        refuse("the network has arcs, which the format nse can't hold; nsa or rcg can");
    if (nodes == linked || (format == NetworkFormat::RCG && facts.firstId)) return;
    refuse(counted(nodes - linked, "node") +
           (format == NetworkFormat::RCG ? " without a link can't be told in the format rcg, whose "
                                           "nodes have ids that follow each other"
            : format == NetworkFormat::LIST
                ? " without a link can't be told in a list"
                : " without a link can't be told in the formats nse and "
                  "nsa"));
}

std::string zeroWeights(const NetworkFacts& facts, ZeroWeights zeros) {
    if (facts.zeroWeights == 0) return "";
    return ", " + counted(facts.zeroWeights, "link") + " of weight 0 " +
           (zeros == ZeroWeights::DROP ? "left out" : "written as 1");
}

}  // namespace

void run(const ConvertCommand& command) {
    const NetworkFormat format = outputFormat(command.output, command.format);
    requireOther(command.output, command.read.file);
    OutputTree files(command.output, false, command.parents);
    files.protect(command.read.file);
    auto [facts, links, linked, nodes, labels] = LinkTable(command.read);
    checkFormat(command, format, facts, linked, nodes, labels != nullptr);
    facts.nodes = std::max<Size>(facts.nodes.value_or(0), linked);

    NetworkWriter writer(format, facts, labels.get(), separatorOf(command.output));
    for (const RawLink& ln : links) writer.add(ln);
    writeText(writer.take(), files, command.output);
    if (!command.quiet && !files.isStandardOutput())
        printAfter({command.output}, command.output + ": " + counted(*facts.nodes, "node") + ", " +
                                         counted(facts.links(), "link") +
                                         zeroWeights(facts, command.read.zeros) + "\n");
}

}  // namespace vorl::app
