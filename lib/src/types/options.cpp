#include <vorl/types/options.hpp>

#include <vorl/types/assert.hpp>
#include <vorl/types/text.hpp>
#include <vorl/types/trace.hpp>

#include <cmath>
#include <stdexcept>

namespace vorl {

ClusterOptions::ClusterOptions(float gam, float filter, Validation valid, Coupling rmax,
                               Reduction reduct, Speedup speed, float gain, bool trace)
    : gamma(gam),
      filterMarg(filter),
      validation(valid),
      rootMax(rmax),
      reduction(reduct),
      speedup(speed),
      gainMarg(gain),
      modtrace(trace) {
    validate();
}

void ClusterOptions::validate() const {
    if (gamma > 1)
        VORL_TRACE("validate(), invalid gamma: %G\n", gamma);
    else if (filterMarg < 0 || filterMarg > 1)
        VORL_TRACE("validate(), invalid filterMarg: %G\n", filterMarg);
    else if (gainMarg > 1)
        VORL_TRACE("validate(), invalid gainMarg: %G\n", gainMarg);
    else
        return;
    throw std::invalid_argument("ClusterOptions::validate(), invalid attribute(s).\n");
}

void CustlevsOptions::validate() const {
    if (!(clsrstep < 0 || clsrstep > 1)) return;
    VORL_TRACE("validate(), invalid clsrstep: %G\n", clsrstep);
    throw std::invalid_argument("CustlevsOptions::validate(), invalid attribute(s).\n");
}

void CustlevsOptions::reset() { *this = CustlevsOptions(); }

const float SignifclsOptions::dropRatio = 0x1.152aaap-3f;

SignifclsOptions::SignifclsOptions(bool extended) {
    SignifclsOptions::reset(extended);
    validate();
}

SignifclsOptions::~SignifclsOptions() = default;

void SignifclsOptions::reset(bool extended) {
    densdrop = extended ? 1 - dropRatio : 1;
    wrstep = extended ? dropRatio : 1;
    szmin = 0;
    wrange = extended;
}

void SignifclsOptions::validate() const {
    if (densdrop < 0 || densdrop > 1)
        VORL_TRACE("validate(), invalid densdrop: %G\n", densdrop);
    else if (wrstep < 0 || (wrange && wrstep > 0.5f) || (!wrange && wrstep == 0))
        VORL_TRACE("validate(), invalid wrstep: %G, wrange: %u\n", wrstep, unsigned{wrange});
    else
        return;
    throw std::invalid_argument("SignifclsOptions::validate(), invalid attribute(s).\n");
}

SignifclsExtoptions::SignifclsExtoptions() : SignifclsOptions(false) {}

SignifclsExtoptions::~SignifclsExtoptions() = default;

void SignifclsExtoptions::reset(bool extended) {
    SignifclsOptions::reset(extended);
    clszminf = nullptr;
}

namespace {

std::uint32_t sizeLog2(std::uint32_t size) {
    return static_cast<std::uint32_t>(std::lround(std::log2(static_cast<double>(size))));
}

std::uint32_t sizeLogE(std::uint32_t size) {
    return static_cast<std::uint32_t>(std::lround(std::log(static_cast<double>(size))));
}

template <unsigned BASE>
std::uint32_t sizeRoot(std::uint32_t size) {
    return static_cast<std::uint32_t>(std::lround(std::pow(static_cast<double>(size), 1.0 / BASE)));
}

/// Dispatches a base to its function by halving the range of bases.
template <unsigned LOW, unsigned HIGH>
ClsSizeFn rootFunction(unsigned base) {
    if constexpr (HIGH - LOW == 1) {
        return sizeRoot<LOW>;
    } else {
        constexpr unsigned middle = LOW + (HIGH - LOW) / 2;
        return base < middle ? rootFunction<LOW, middle>(base) : rootFunction<middle, HIGH>(base);
    }
}

}  // namespace

ClsSizeFn rootOf(std::uint8_t base) {
    if (base < rbmin || base > rbmax)
        throw std::invalid_argument("rootOf(), the base is out of the template params: " +
                                    std::to_string(base) + "not E [2, 9)");
    return rootFunction<rbmin, rbmax + 1>(base);
}

void SignifclsExtoptions::setClszminf(SzFnName name) {
    switch (name) {
        case SzFnName::NONE: clszminf = nullptr; break;
        case SzFnName::CLSSZ_ROOT2:
        case SzFnName::CLSSZ_ROOT4: clszminf = rootOf(toMask(name)); break;
        case SzFnName::CLSSZ_LOG2: clszminf = sizeLog2; break;
        case SzFnName::CLSSZ_LOGE: clszminf = sizeLogE; break;
        default: VORL_ASSERT(false, "setClszminf(), unknown funcname specified");
    }
}

}  // namespace vorl
