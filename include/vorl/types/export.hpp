/// @file
/// Visibility of the library's symbols: everything is hidden unless marked with VORL_API.
#pragma once

#if defined(VORL_STATIC)
#define VORL_API
#else
#define VORL_API __attribute__((visibility("default")))
#endif
