#include "guard.hpp"

#include "errors.hpp"
#include "output_tree.hpp"

#include <vorl/types/assert.hpp>

#include <unistd.h>
#include <cstdio>

namespace vorl::app {

void guardAssertions() {
    setAssertionHandler([](const char* text, const char* file, int line) noexcept {
        OutputTree::discardCurrent();
        std::fprintf(stderr,
                     "vorl: a fault of the program itself: %s (%s:%d); please report it, with the "
                     "command and what it read\n",
                     text, file, line);
        std::fflush(stderr);
        // What waits to be printed is no whole result.
        _exit(INPUT_FAULT);
    });
}

}  // namespace vorl::app
