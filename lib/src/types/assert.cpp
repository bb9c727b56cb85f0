#include <vorl/types/assert.hpp>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace vorl {

namespace {

std::atomic<AssertionHandler> assertionHandler = nullptr;

}  // namespace

void setAssertionHandler(AssertionHandler handler) noexcept { assertionHandler = handler; }

void assertionFailed(const char* condition, const char* text, const char* file, int line) noexcept {
    if (const AssertionHandler handler = assertionHandler) handler(text, file, line);
    std::fprintf(stderr, "%s:%d: %s [%s]\n", file, line, text, condition);
    std::abort();
}

}  // namespace vorl
