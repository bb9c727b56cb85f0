// How much memory there is for a process.
#pragma once

#include <cstddef>
#include <string>

namespace vorl {

/// The memory of the machine, or what the control groups of this process allow, if that is less.
/// @param root  of the file system with the folders `proc` and `sys`
/// @return bytes; the largest number if nothing is known
std::size_t systemMemory(const std::string& root = "/");

}  // namespace vorl
