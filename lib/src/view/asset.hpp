// The template of the page, which is made in view/ and kept in view/dist.
#pragma once

#include <string_view>

namespace vorl::view {

/// HTML with marks for what differs between pages: {{title}}, {{packing}} and {{data}}.
std::string_view asset();

}  // namespace vorl::view
