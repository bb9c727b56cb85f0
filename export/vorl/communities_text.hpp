/// @file
/// Communities as the texts that files hold.
#pragma once

#include <vorl/communities.hpp>
#include <vorl/types/export.hpp>
#include <vorl/types/labels.hpp>
#include <vorl/types/membership_table.hpp>

#include <span>
#include <string>

namespace vorl {

/// The communities in the format CNL, a line each in the order of their numbers. A share stands
/// behind each node that is in several, with the digits that read back as the same number.
/// @param labels the names that ids of nodes stand for, null for none
VORL_API std::string clustersText(const Communities& found, const Labels* labels = nullptr);

/// A line "node community share" for each membership, by ascending node, falling share and
/// ascending community.
/// @param labels as above
VORL_API std::string tableText(const Communities& found, TableForm form,
                               const Labels* labels = nullptr);

/// Any communities in arrays, such as those of another origin. None is without members.
struct CommunityArrays {
    std::span<const Size> ends;     ///< where the members of each community end
    std::span<const Id> members;    ///< nodes by their ids
    std::span<const Share> shares;  ///< of each member
    Size nodes = 0;                 ///< how many nodes there are, also of no community
};

/// @name The same texts of such communities
/// @throws std::invalid_argument for a community without members
/// @{
VORL_API std::string clustersText(const CommunityArrays& found, const Labels* labels = nullptr);
VORL_API std::string tableText(const CommunityArrays& found, TableForm form,
                               const Labels* labels = nullptr);
/// @}

}  // namespace vorl
