/// @file
/// Writer of the description of a whole hierarchy.
#pragma once

#include <vorl/fileio/iotypes.hpp>
#include <vorl/hierarchy/hierarchy.hpp>

namespace vorl {

/// Writes a hierarchy in the format RHB: each node with its owners, then level by level each
/// cluster with its owners.
template <class LinksT>
class VORL_API RhbPrinter {
public:
    explicit RhbPrinter(const Hierarchy<LinksT>& hier) : m_hier(hier) {}

    /// @throws std::ios_base::failure if writing fails
    void output(FileWrapper& fout) const;

private:
    const Hierarchy<LinksT>& m_hier;
};

/// Writes the line of an item: its id, and its owners with shares where these are uneven.
template <class ItemT>
VORL_API void outpel(const ItemT& item, FileWrapper& fout);

}  // namespace vorl
