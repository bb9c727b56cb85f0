#include <vorl/processing/intrinsics.hpp>

#include <vorl/processing/gamma.hpp>
#include <vorl/processing/weights.hpp>
#include <vorl/types/plain_text.hpp>

#include <stdexcept>

namespace vorl {

namespace {

bool asksFor(const Intrinsics& intr, IntrinsicsFlags measure) {
    return (intr.flags & measure) != IntrinsicsFlags::NONE;
}

}  // namespace

template <bool NONSYMMETRIC, class LinksT>
void intrinsicMeasures(Intrinsics& intr, Clusters<LinksT>& cls, AccWeight weight, AccWeight gamma) {
    if (cls.empty() || !(weight > 0) || gamma < 0)
        throw std::invalid_argument(
            format("intrinsicMeasures(), clusters(%zu) should be supplied with the valid "
                   "weight(%f) and gamma(%f)\n",
                   cls.size(), weight, gamma));
    if (!intr.defined()) return;
    const bool conductance = asksFor(intr, IntrinsicsFlags::CONDUCTANCE);
    const bool modularity = asksFor(intr, IntrinsicsFlags::MODULARITY);
    const bool estimate = asksFor(intr, IntrinsicsFlags::GAMMA);
    if (cls.size() == 1) {
        if (conductance) intr.cdn = 1;
        if (modularity) intr.mod = 0;
        if (estimate) {
            intr.gamma = 1;
            intr.sgmod = 0;
        }
        return;
    }

    AccWeight ww = 0;
    AccWeight sw = 0;
    AccWeight modsum = 0;
    AccWeight condsum = 0;
    for (Cluster<LinksT>& cl : cls) {
        const auto self = findDest(cl.links.begin(), cl.links.end(), &cl);
        if (self != cl.links.end() && self->dest == &cl) {
            cl.addWeight(2 * self->weight);
            cl.links.erase(self);
        }
        const AccWeight s = cl.weight();
        const AccWeight ext = linksWeight<NONSYMMETRIC>(cl);
        const AccWeight w = s + ext;
        if (estimate) {
            ww += w * w;
            sw += s;
        }
        modsum += s - (w / weight * w) * gamma;
        if (conductance) condsum += ext / (w > 0.5 * weight ? weight - w : w);
    }

    if (modularity) intr.mod = static_cast<float>(modsum / weight);
    if (conductance) {
        const AccWeight count = static_cast<AccWeight>(cls.size());
        VORL_ASSERT(condsum > 0 && condsum < count,
                    "intrinsicMeasures(), conductance validation failed");
        intr.cdn = static_cast<float>(condsum / count);
    }
    if (estimate) {
        VORL_ASSERT(!less(weight, sw),
                    "intrinsicMeasures(), accumulated self-weight can't increase the network "
                    "weight");
        const AccWeight ew = ww / weight;
        const AccWeight g = sw == 0 || !less(sw, weight) ? 1 : newmanGamma(sw, ew, weight);
        intr.gamma = static_cast<float>(g);
        intr.sgmod = static_cast<float>((sw - g * ew) / weight);
    }
}

#define VORL_INSTANTIATE(NONSYMMETRIC, LinksT)                                             \
    template VORL_API void intrinsicMeasures<NONSYMMETRIC>(Intrinsics&, Clusters<LinksT>&, \
                                                           AccWeight, AccWeight);

VORL_INSTANTIATE(false, UnweightedLinks)
VORL_INSTANTIATE(true, UnweightedLinks)
VORL_INSTANTIATE(false, WeightedLinks)
VORL_INSTANTIATE(true, WeightedLinks)

#undef VORL_INSTANTIATE

}  // namespace vorl
