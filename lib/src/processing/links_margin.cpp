#include <vorl/processing/links_margin.hpp>

#include <algorithm>
#include <cmath>

namespace vorl {

Id reducedLinksMarg(Id nodesNum, Reduction reduction) {
    const Reduction core = reduction & Reduction::CORE_MASK;
    if (core == Reduction::NONE) return 0;
    const Id least = core == Reduction::SEVERE ? 3 : 5;
    if (nodesNum <= least) return 0;
    return std::max(least, static_cast<Id>(std::lround(std::log(static_cast<double>(nodesNum)))));
}

double detail::topLinkCoef(Reduction core, Id i, Id n) {
    const double coef = 2.0 * i / (n - 2);
    return core == Reduction::SEVERE ? std::sqrt(coef) : coef;
}

}  // namespace vorl
