/// @file
/// Where the bytes of an input come from.
#pragma once

#include <vorl/types/export.hpp>

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vorl {

/// The name that stands for the standard input.
inline constexpr const char* STANDARD_INPUT = "-";

/// The memory of the machine, or of the control group of the process, but for an eighth; in bytes.
/// It is asked for once.
VORL_API std::size_t memoryLimit();

/// Bytes that are read once, from the first to the last.
class VORL_API Source {
public:
    Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    virtual ~Source();

    /// Reads on.
    /// @param most  above 0
    /// @return how many bytes were read; 0 at the end
    /// @throws InputError if they can't be read or unpacked
    virtual std::size_t read(char* data, std::size_t most) = 0;
    /// The number of all bytes, if it is known beforehand.
    virtual std::optional<std::size_t> size() const { return std::nullopt; }
};

/// A text in memory, which must outlive it.
class VORL_API TextSource : public Source {
public:
    explicit TextSource(std::string_view text) : m_size(text.size()), m_rest(text) {}

    std::size_t read(char* data, std::size_t most) override;
    std::optional<std::size_t> size() const override { return m_size; }

private:
    std::size_t m_size;
    std::string_view m_rest;
};

/// What is left of a stream, which must outlive it.
class VORL_API StreamSource : public Source {
public:
    /// @param name  for messages
    StreamSource(std::istream& stream, std::string name);

    std::size_t read(char* data, std::size_t most) override;

private:
    std::istream& m_stream;
    std::string m_name;
};

/// Opens a file. Bytes are unpacked as they come where they are compressed by gzip or zstd, which
/// the first ones tell. The file is read and not mapped, lest one that shrinks meanwhile stop the
/// process.
/// @param name   of the file, "-" for the standard input
/// @param memory bytes that may be needed in all, of which an unpacker's window may take half
/// @throws InputError if it can't be opened
VORL_API std::unique_ptr<Source> openSource(const std::string& name,
                                            std::size_t memory = memoryLimit());

}  // namespace vorl
