#include <vorl/types/progress.hpp>

#include <utility>

namespace vorl {

namespace {

thread_local Progress* listening = nullptr;

}  // namespace

Progress* Progress::current() noexcept { return listening; }

ProgressScope::ProgressScope(Progress* progress) noexcept
    : m_former(std::exchange(listening, progress)) {}

ProgressScope::~ProgressScope() { listening = m_former; }

}  // namespace vorl
