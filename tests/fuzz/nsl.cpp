// The reader of the formats NSE and NSA on any text behind a byte of options. A network that it
// accepts is clustered.
#include "../support/accepted_network.hpp"

#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/types/trace.hpp>

#include <cstddef>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vorl;
    ftrace = nullptr;
    if (size == 0) return 0;
    test::requireReading<NslParser>(data[0], {reinterpret_cast<const char*>(data) + 1, size - 1},
                                    data[0] & 1 ? FileFormat::NSA : FileFormat::NSE);
    return 0;
}
