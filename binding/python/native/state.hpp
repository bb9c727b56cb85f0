// A hierarchy as arrays, so that it can be kept and moved.
#pragma once

#include "arrays.hpp"

#include <vorl/hierarchy/hierarchy.hpp>

#include <memory>

namespace vorl::python {

/// All of a hierarchy but the links and weights of its items.
template <class LinksT>
nb::dict stateOf(const Hierarchy<LinksT>& hier);

/// The hierarchy of such a state.
/// @throws std::invalid_argument if the state is broken
std::shared_ptr<Hierarchy<WeightedLinks>> restored(const nb::dict& state);

}  // namespace vorl::python
