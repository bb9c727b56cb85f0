#include "convert_command.hpp"

#include "errors.hpp"
#include "output_text.hpp"
#include "output_tree.hpp"
#include "progress_line.hpp"
#include "text_output.hpp"

#include <vorl/reading/network_text.hpp>
#include <vorl/reading/text_file.hpp>
#include <vorl/types/id_numbers.hpp>

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
    const FileFormat inputFormat = networkFormat(command.read);
    requireOther(command.output, command.read.file);
    OutputTree files(command.output, false, command.parents);
    files.protect(command.read.file);
    const TextFile file(command.read.file, textLimit(memoryLimit(command.read)));
    const auto scan = [&](const LinkVisitor& visit) {
        return scanNetwork(file.text(), command.read.file, inputFormat, !command.read.unweighted,
                           visit, command.read.zeros);
    };
    IdNumbers linked;
    NetworkFacts facts = scan([&](const RawLink& ln) {
        linked.number(ln.src);
        linked.number(ln.dst);
    });
    checkFormat(command, format, facts, linked.size());
    facts.nodes = std::max<Size>(facts.nodes.value_or(0), linked.size());

    NetworkWriter writer(format, facts);
    scan([&](const RawLink& ln) { writer.add(ln); });
    writeText(writer.take(), files, command.output);
    if (!command.quiet && !files.isStandardOutput())
        printAfter({command.output}, command.output + ": " + counted(*facts.nodes, "node") + ", " +
                                         counted(facts.links(), "link") +
                                         zeroWeights(facts, command.read.zeros) + "\n");
}

}  // namespace vorl::app
