#include <vorl/types/trace.hpp>

namespace vorl {

std::FILE* ftrace = stderr;

void traceBuffered(bool buffered) { ftrace = buffered ? stdout : stderr; }

bool traceBuffered() { return ftrace != stderr; }

}  // namespace vorl
