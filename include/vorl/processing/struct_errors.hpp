/// @file
/// Collectors of faults in the input that don't stop an operation.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/link.hpp>
#include <vorl/types/numbers.hpp>

#include <array>

namespace vorl {

/// Counts faults, and keeps the first ones of them.
class VORL_API StructErrors {
public:
    /// Number of entries kept.
    static constexpr Size ERRORS_MAX = 8;

    const char* message;  ///< heading of the report, not owned
    Size size = 0;        ///< number of all reported faults

    explicit StructErrors(const char* msg) : message(msg) {}
    StructErrors(const StructErrors&) = default;
    StructErrors& operator=(const StructErrors&) = default;
    virtual ~StructErrors();

    /// Prints the heading, the entries kept and the number of the others on the trace; nothing
    /// where there is no fault.
    virtual void show() const = 0;
    /// Whether a fault has been reported.
    bool defined() const { return size != 0; }

protected:
    /// Ends the report: the number of faults that weren't kept, and a line end.
    void showRemainErrs() const;
};

/// Faults of nodes.
class VORL_API StructNodeErrors : public StructErrors {
public:
    std::array<Id, ERRORS_MAX> nids{ID_NONE};

    using StructErrors::StructErrors;

    /// @return the number of all reported faults
    Size add(Id nid);
    void show() const override;
};

/// Faults of links.
class VORL_API StructLinkErrors : public StructErrors {
public:
    std::array<LinkSrcDstId, ERRORS_MAX> lids;

    using StructErrors::StructErrors;

    /// @return the number of all reported faults
    Size add(LinkSrcDstId&& lid);
    void show() const override;
};

}  // namespace vorl
