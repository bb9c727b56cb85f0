// Long work that Python can end, and look at.
#pragma once

#include <nanobind/nanobind.h>

#include <functional>

namespace vorl::python {

/// Does work on a thread of its own, without the interpreter's lock. The calling thread looks for
/// signals meanwhile, such as Ctrl-C, and ends the work if a handler raises.
///
/// @param tell is called from time to time with (stage, level or None, total, done), unless None;
///     what it raises ends the work, too
/// @throws what the work throws, or Python's exception that ended it
void watched(nanobind::handle tell, const std::function<void()>& work);

}  // namespace vorl::python
