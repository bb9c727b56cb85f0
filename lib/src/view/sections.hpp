// The data of a page as one run of bytes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vorl::view {

/// Named arrays behind each other. The text begins with the length of a table in JSON, in four
/// bytes, the lowest first; then comes the table, filled up with blanks to a multiple of 8, and the
/// arrays, each filled up likewise with zeros. Numbers stand with their lowest bytes first.
///
/// Whole numbers that lie close to the ones before are told by the differences: twice the
/// difference, less 1 if it is negative and its sign turned, in groups of 7 bits, the lowest first,
/// of which all but the last have the eighth bit set.
class Sections {
public:
    void addBytes(const char* name, std::string_view bytes) { add(name, "bytes", bytes); }
    void addFloats(const char* name, const std::vector<float>& values);
    void addShorts(const char* name, const std::vector<std::uint16_t>& values);
    /// Numbers below 2^32, by their differences.
    void addNumbers(const char* name, const std::vector<std::uint32_t>& values);

    /// @param facts what the table tells beside the arrays: members of a JSON object
    std::string text(const std::string& facts) const;

private:
    void add(const char* name, const char* kind, std::string_view bytes);

    std::string m_table;
    std::string m_bytes;
};

/// The bytes in the 64 letters of RFC 4648.
std::string base64(std::string_view bytes);

}  // namespace vorl::view
