/// @file
/// Text forms of the enumerations, and small operations on option masks.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/flags.hpp>
#include <vorl/types/options.hpp>

#include <string>

namespace vorl {

/// Text of a value; with `bitstr` "0b" and its 8 binary digits, whatever the value is. A value
/// without a text fails an assertion.
VORL_API std::string to_string(State value, bool bitstr = false);
VORL_API std::string to_string(Clustering value, bool bitstr = false);
VORL_API std::string to_string(SzFnName value, bool bitstr = false);
VORL_API std::string to_string(LevMargKind value, bool bitstr = false);
VORL_API std::string to_string(ClsOutFmt value, bool bitstr = false);
VORL_API std::string to_string(Reduction value, bool bitstr = false);
VORL_API std::string to_string(Speedup value, bool bitstr = false);
VORL_API std::string to_string(Validation value, bool bitstr = false);
VORL_API std::string to_string(IntrinsicsFlags value, bool bitstr = false);
VORL_API std::string to_string(FileFormat value, bool bitstr = false);
VORL_API std::string strClsOutFmt(ClsOutFmtBase mask, bool bitstr = false);

/// Whether the mask holds the flag, compared within the field that the flag belongs to.
VORL_API bool isset(ClsOutFmtBase mask, ClsOutFmt flag);
/// Whether the output structure is one of custom levels.
VORL_API bool anycustlevs(ClsOutFmtBase mask);
/// Whether the output structure is one of significant clusters.
VORL_API bool anysignif(ClsOutFmtBase mask);

/// "yes" or "no".
VORL_API std::string toYesNo(bool value);
/// Extends a text to `width` characters, at the front or at the end.
VORL_API std::string pad(std::string&& text, std::uint8_t width, char fill = ' ',
                         bool front = true);

/// Least and greatest base of a root size function.
inline constexpr std::uint8_t rbmin = 2;
inline constexpr std::uint8_t rbmax = 8;

/// The function that computes the root of a base, rounded to the nearest whole number.
/// @throws std::invalid_argument for a base outside [rbmin, rbmax].
VORL_API ClsSizeFn rootOf(std::uint8_t base);

/// Facts about the built library.
struct VORL_API BuildInfo {
    const char* revision;   ///< number, slash, twelve hexadecimal digits
    Clustering clustering;  ///< the built algorithm
    const char* compiler;   ///< with its version and the revision of the binding generator
    const char* langenv;    ///< the language environment
    const char* time;       ///< date and time of the build

    /// The part of `revision` before the first "/".
    std::string rev() const;
    /// All fields, one a line.
    std::string summary() const;
};

/// The record of this library.
VORL_API const BuildInfo& libBuild();

/// Revision of the binding generator.
VORL_API const char* swigRevision();

}  // namespace vorl
