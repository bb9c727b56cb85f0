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

void checkFormat(const ConvertCommand& command, FileFormat format, const NetworkFacts& facts,
                 Size linked) {
    const auto refuse = [&](const std::string& what) {
        throw InputError(command.read.file + ": " + what);
    };
    if (format == FileFormat::NSE && facts.arcs != 0)
        refuse("the network has arcs, which the format nse can't hold; nsa or rcg can");
    if (format != FileFormat::RCG && facts.firstId && *facts.nodes > linked)
        refuse(counted(*facts.nodes - linked, "node") +
               " without a link can't be told in the formats nse and nsa");
}

std::string zeroWeights(const NetworkFacts& facts, ZeroWeights zeros) {
    if (facts.zeroWeights == 0) return "";
    return ", " + counted(facts.zeroWeights, "link") + " of weight 0 " +
           (zeros == ZeroWeights::DROP ? "left out" : "written as 1");
}

}  // namespace

void run(const ConvertCommand& command) {
    const FileFormat format = outputFormat(command.output, command.format);
    networkFormat(command.read);  // an unknown one is told before files are touched
    requireOther(command.output, command.read.file);
    OutputTree files(command.output, false, command.parents);
    files.protect(command.read.file);
    auto [facts, links, linked] = LinkTable(command.read);
    checkFormat(command, format, facts, linked);
    facts.nodes = std::max<Size>(facts.nodes.value_or(0), linked);

    NetworkWriter writer(format, facts);
    for (const RawLink& ln : links) writer.add(ln);
    writeText(writer.take(), files, command.output);
    if (!command.quiet && !files.isStandardOutput())
        printAfter({command.output}, command.output + ": " + counted(*facts.nodes, "node") + ", " +
                                         counted(facts.links(), "link") +
                                         zeroWeights(facts, command.read.zeros) + "\n");
}

}  // namespace vorl::app
