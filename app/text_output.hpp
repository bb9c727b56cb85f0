// Writing of one text.
#pragma once

#include "output_tree.hpp"

#include <string>

namespace vorl::app {

/// Writes the text where the files go, and gives it its name.
/// @param name of the file, for messages
/// @throws InputError
void writeText(const std::string& text, OutputTree& files, const std::string& name);

}  // namespace vorl::app
