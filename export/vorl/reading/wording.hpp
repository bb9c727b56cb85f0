/// @file
/// Numbers and counts as messages and files tell them, the same in every locale.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/numbers.hpp>

#include <string>

namespace vorl {

/// The number as `%.9g` prints it; 9 significant digits read back as the same 32-bit number.
VORL_API std::string number(double value, int digits = 9);
/// 1234567 as 1,234,567.
VORL_API std::string grouped(Size value);
/// As a person writes it: 1,234,567 whole, 1,234.5 to six digits, 0.0625, 1e+20.
VORL_API std::string readable(double value);
/// "1 node", "2 nodes".
VORL_API std::string counted(Size count, const char* thing);
/// 1536 as 1.5 KiB.
VORL_API std::string bytes(Size size);

}  // namespace vorl
