/// @file
/// Option records of a build, of input and of output.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/flags.hpp>
#include <vorl/types/numbers.hpp>

#include <string>

namespace vorl {

/// Options of a build.
struct VORL_API ClusterOptions {
    /// Resolution of the clustering gain: a negative value finds the resolution by itself, for each
    /// pair of items (the dynamic gamma); 0 merges whatever is linked; 1 is the resolution of the
    /// modularity; more means smaller clusters. A build takes any finite value, while `validate`,
    /// and with it the constructor, refuses those above 1: set the field for them.
    float gamma = -1;
    /// Filter margin of the candidates, in [0, 1]. Accepted and printed; it changes no result.
    float filterMarg = 0.01f;
    Validation validation = Validation::STANDARD;
    /// The largest wanted size of the root; 0 means no limit.
    Coupling rootMax = 0;
    Reduction reduction = Reduction::NONE;
    Speedup speedup = Speedup::NONE;
    /// A level that raises the modularity by no more than this is the last, at most 1; acts only
    /// with `modtrace`. -1 stops only at a fall by 1 or more.
    float gainMarg = -1;
    /// Compute and trace the modularity of each level.
    bool modtrace = false;

    /// Sets the given fields and validates them.
    /// @throws std::invalid_argument as `validate` does.
    explicit ClusterOptions(float gamma = -1, float filterMarg = 0.01f,
                            Validation validation = Validation::STANDARD, Coupling rootMax = 0,
                            Reduction reduction = Reduction::NONE, Speedup speedup = Speedup::NONE,
                            float gainMarg = -1, bool modtrace = false);

    /// @throws std::invalid_argument "ClusterOptions::validate(), invalid attribute(s).\n" if a
    /// field is out of its range; the value is traced.
    void validate() const;
};

/// Levels of a custom range.
struct VORL_API CustlevsOptions {
    LevMargKind levmarg = LevMargKind::NONE;
    LevelNum margmin = LEVEL_NONE;  ///< lower margin, LEVEL_NONE while unset
    LevelNum margmax = LEVEL_NONE;  ///< upper margin, LEVEL_NONE while unset
    /// Ratio of the numbers of clusters of two levels to write, in [0, 1]; 0 means every level
    /// within the margins.
    float clsrstep = 1;

    /// @throws std::invalid_argument "CustlevsOptions::validate(), invalid attribute(s).\n".
    void validate() const;
    /// Restores the defaults.
    void reset();
};

/// Which clusters count as significant.
class VORL_API SignifclsOptions {
public:
    /// exp(-2).
    static const float dropRatio;

    float densdrop;       ///< the ratio to which a cluster's density must drop, in [0, 1]
    float wrstep;         ///< weight step ratio of a cluster to its owner
    std::uint32_t szmin;  ///< the least size of a cluster, in nodes
    bool wrange;          ///< `wrstep` applies as a range on both sides of the weight

    /// Fills the record as `reset` does and validates it.
    explicit SignifclsOptions(bool extended = false);
    SignifclsOptions(const SignifclsOptions&) = default;
    SignifclsOptions& operator=(const SignifclsOptions&) = default;
    virtual ~SignifclsOptions();

    /// Restores the defaults: no constraint, or with `extended` those of the drop ratio.
    virtual void reset(bool extended);

    /// @throws std::invalid_argument "SignifclsOptions::validate(), invalid attribute(s).\n".
    void validate() const;
};

/// A function from the number of nodes to the least size of a cluster.
using ClsSizeFn = std::uint32_t (*)(std::uint32_t);

/// `SignifclsOptions` with a size function.
class VORL_API SignifclsExtoptions : public SignifclsOptions {
public:
    /// Gives `szmin` from the number of nodes of the network when `szmin` is 0; may be null.
    ClsSizeFn clszminf = nullptr;

    SignifclsExtoptions();
    SignifclsExtoptions(const SignifclsExtoptions&) = default;
    SignifclsExtoptions& operator=(const SignifclsExtoptions&) = default;
    ~SignifclsExtoptions() override;

    void reset(bool extended) override;
    void setClszminf(SzFnName name);
};

/// Options of `Hierarchy::output`.
struct OutputOptions {
    ClsOutFmtBase clsfmt = 0;               ///< output structure, filtering and file format
    CustlevsOptions custlevs;               ///< counts when `anycustlevs(clsfmt)`
    mutable SignifclsExtoptions signifcls;  ///< counts when `anysignif(clsfmt)`
    std::string clsfile = "clusters.cnl";   ///< base name of the output file
    bool fltMembers = false;  ///< leave out the members whose id has the bit 0x80000000
};

/// Options of the parsers of networks.
struct VORL_API InpOptions {
    FileFormat format = FileFormat::UNKNOWN;
    std::string filename;
    bool sumdups = false;  ///< accumulate the weights of duplicate links rather than skip them
    bool shuffle = false;  ///< shuffle the input nodes and links
};

}  // namespace vorl
