/// @file
/// Writer of clusters.
#pragma once

#include <vorl/fileio/iotypes.hpp>
#include <vorl/hierarchy/hierarchy.hpp>

namespace vorl {

/// Writes clusters of a hierarchy in the format CNL: a line of node ids for each cluster, with
/// shares where these are uneven and with the cluster's id, as the file format asks.
template <class LinksT>
class VORL_API CnlPrinter {
public:
    explicit CnlPrinter(const Hierarchy<LinksT>& hier) : m_hier(hier) {}

    /// Writes one structure of output. Nothing is written for a hierarchy without levels.
    ///
    /// @param fouts a file for each level, one file for the other structures
    /// @param clsfmt structure, filtering and file format, a mask of `ClsOutFmt`
    /// @param fltMembers leave out the nodes whose id has the bit 0x80000000
    /// @param blev first level to write
    /// @param elev level behind the last one
    /// @param levStepRatio ratio of the numbers of clusters of two levels in turn, in [0, 1];
    ///     1 writes each level
    /// @param signif bounds of the significant clusters, needed for their structures
    /// @throws std::invalid_argument for an undefined structure or file format, a ratio out of
    ///     range, or levels and files that don't fit the hierarchy
    /// @throws std::logic_error if there are more files than the ratio finds levels
    /// @throws std::ios_base::failure if writing fails
    void output(FileWrappers& fouts, ClsOutFmtBase clsfmt, bool fltMembers = false,
                LevelNum blev = 0, LevelNum elev = LEVEL_NONE, float levStepRatio = 1,
                const SignifclsOptions* signif = nullptr) const;

private:
    const Hierarchy<LinksT>& m_hier;
};

extern template class CnlPrinter<UnweightedLinks>;
extern template class CnlPrinter<WeightedLinks>;

}  // namespace vorl
