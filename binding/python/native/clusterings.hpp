#pragma once

#include <nanobind/nanobind.h>

namespace vorl::python {

void defineClusterings(nanobind::module_& module);
void defineHierarchies(nanobind::module_& module);

}  // namespace vorl::python
