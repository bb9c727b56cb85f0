// The reader of the formats NSE and NSA on any text behind a byte of options. A network that it
// accepts is clustered.
#include "../support/accepted_network.hpp"
#include "app/memory_file.hpp"

#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/types/trace.hpp>

#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace {

using namespace vorl;

template <class GraphT>
void read(const InpOptions& options) {
    std::shared_ptr<GraphT> graph;
    try {
        graph = NslParser(options).build<GraphT>();
    } catch (const std::invalid_argument&) {
        return;
    } catch (const std::domain_error&) {
        return;
    }
    test::requireOrder(*graph);
    if (test::isClusterable(*graph)) test::requireHierarchy(*graph);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ftrace = nullptr;
    if (size == 0) return 0;
    const app::MemoryFile file({reinterpret_cast<const char*>(data) + 1, size - 1});
    InpOptions options;
    options.filename = file.name();
    options.format = data[0] & 1 ? FileFormat::NSA : FileFormat::NSE;
    options.sumdups = data[0] & 4;
    if (data[0] & 2)
        read<Graph<false>>(options);
    else
        read<Graph<true>>(options);
    return 0;
}
