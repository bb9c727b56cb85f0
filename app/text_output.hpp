// Writing of one text.
#pragma once

#include "output_tree.hpp"

#include <string>

namespace vorl::app {

/// Writes the text where the files go, and gives it its name.
/// @param name of the file, which may ask for compression
/// @throws InputError
void writeText(std::string text, OutputTree& files, const std::string& name);

}  // namespace vorl::app
