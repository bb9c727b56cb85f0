#include "convert_command.hpp"

#include "errors.hpp"
#include "output_text.hpp"
#include "output_tree.hpp"
#include "progress_line.hpp"
#include "text_output.hpp"

#include <algorithm>

namespace vorl::app {

namespace {

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
    const NetworkTable network = readTable(command.read);
    requireHolds(format, network, command.read.file);
    writeText(networkText(format, network, separatorOf(command.output)), files, command.output);
    const NetworkFacts& facts = network.facts;
    if (!command.quiet && !files.isStandardOutput())
        printAfter(
            {command.output},
            command.output + ": " +
                counted(std::max<Size>(facts.nodes.value_or(0), network.nodes.size()), "node") +
                ", " + counted(facts.links(), "link") + zeroWeights(facts, command.read.zeros) +
                "\n");
}

}  // namespace vorl::app
