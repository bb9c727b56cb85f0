/// @file
/// Communities as the texts that files hold.
#pragma once

#include <vorl/communities.hpp>
#include <vorl/types/export.hpp>

#include <string>

namespace vorl {

/// The communities in the format CNL, a line each in the order of their numbers. A share stands
/// behind each node that is in several, with the digits that read back as the same number.
VORL_API std::string clustersText(const Communities& found);

/// A line "node community share" for each membership, by ascending node, below a line of names.
/// @param separator between the columns, such as a tab or a comma
VORL_API std::string tableText(const Communities& found, char separator);

}  // namespace vorl
