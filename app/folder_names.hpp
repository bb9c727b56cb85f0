// What is in a folder.
#pragma once

#include <string>
#include <vector>

namespace vorl::app {

/// The names of what is in a folder, in no order. The standard library's iterator ends the program
/// where it finds no memory.
/// @throws std::system_error
std::vector<std::string> namesIn(const std::string& folder);

}  // namespace vorl::app
