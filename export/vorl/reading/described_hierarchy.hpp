/// @file
/// The description of a hierarchy that was built.
#pragma once

#include <vorl/hierarchy/hierarchy.hpp>
#include <vorl/reading/hierarchy_file.hpp>
#include <vorl/types/export.hpp>

#include <string>

namespace vorl {

/// What the file of a hierarchy describes, but with shares that aren't rounded, and without lines.
/// @param name  for messages
template <class LinksT>
VORL_API HierarchyFile describedHierarchy(const Hierarchy<LinksT>& hier, const std::string& name);

}  // namespace vorl
