#include "network_input.hpp"

#include "errors.hpp"
#include "output_text.hpp"

#include <vorl/reading/text_file.hpp>

namespace vorl::app {

void showWarnings(const Network& network, const ReadOptions& options) {
    for (const std::string& warning : network.warnings) tell(options.file + ": " + warning);
    if (network.zeroWeights != 0 && options.zeros == ZeroWeights::ONE)
        tell("--zero-weights drop leaves out links of weight 0");
}

std::size_t memoryLimit(const ReadOptions& options) {
    return options.memoryLimit != 0 ? options.memoryLimit : vorl::memoryLimit();
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
