// The memory that a run may take by what its user says.
#pragma once

#include <cstddef>
#include <string>

namespace vorl::app {

/// Memory that the program holds before it reads anything, in bytes.
std::size_t ownMemory();

/// Ends what goes beyond as a lack of memory.
/// @param most bytes of all data of the process
void limitMemory(std::size_t most);

/// What is told of a lack of memory: the limit, if it is one that was set.
std::string lackOfMemory();

}  // namespace vorl::app
