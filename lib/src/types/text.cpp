#include <vorl/types/text.hpp>

#include <vorl/types/assert.hpp>

namespace vorl {

namespace {

std::string bits(std::uint8_t mask) {
    std::string text = "0b";
    for (int bit = 7; bit >= 0; --bit) text += mask >> bit & 1 ? '1' : '0';
    return text;
}

const char* reject(const char* message) {
    VORL_ASSERT(false, message);
    return "";
}

}  // namespace

std::string to_string(State value, bool bitstr) {
    if (bitstr) return bits(toMask(value));
    std::string text;
    switch (toMask(value) & 7) {
        case toMask(State::UNDEFINED): text = "UNDEFINED"; break;
        case toMask(State::PERPAIR): text = "PERPAIR"; break;
        default: text = reject("toString(), invalid value of the flag");
    }
    if (xfurtherprop(value)) text += ", FURTHERPROP";
    if (xpropagated(value)) text += ", PROPAGATED";
    if (xinterlevprop(value)) text += ", INTERLEVPROP";
    return text;
}

std::string to_string(Clustering value, bool bitstr) {
    if (bitstr) return bits(toMask(value));
    std::string text;
    switch (toMask(value) & 0x0F) {
        case toMask(Clustering::CRISP_OVP): text = "CRISP_OVP"; break;
        case toMask(Clustering::FUZZY_OVP): text = "FUZZY_OVP"; break;
        case toMask(Clustering::NDET_COARSE): text = "NDET_COARSE"; break;
        default: text = reject("toString(), invalid value of the flag");
    }
    if (value & Clustering::CHAINS_EXTRA) text += ", CHAINS_EXTRA";
    if (value & Clustering::MCANDS_NOFLT) text += ", MCANDS_NOFLT";
    if (value & Clustering::OVERLAP_LINKS) text += ", OVERLAP_LINKS";
    if (value & Clustering::AUTO_GAMMA) text += ", AUTO_GAMMA";
    return text;
}

std::string to_string(SzFnName value, bool bitstr) {
    if (bitstr) return bits(toMask(value));
    switch (value) {
        case SzFnName::NONE: return "NONE";
        case SzFnName::CLSSZ_ROOT2: return "CLSSZ_ROOT2";
        case SzFnName::CLSSZ_ROOT4: return "CLSSZ_ROOT4";
        case SzFnName::CLSSZ_LOG2: return "CLSSZ_LOG2";
        case SzFnName::CLSSZ_LOGE: return "CLSSZ_LOGE";
    }
    return reject("strSzFnName(), invalid value of the SzFnName flag");
}

std::string to_string(LevMargKind value, bool bitstr) {
    if (bitstr) return bits(toMask(value));
    switch (value) {
        case LevMargKind::NONE: return "NONE";
        case LevMargKind::CLSNUM: return "CLSNUM";
        case LevMargKind::LEVID: return "LEVID";
        case LevMargKind::LEVSTEPNUM: return "LEVSTEPNUM";
    }
    return reject("strLevMargKind(), invalid value of the LevMargKind flag");
}

std::string to_string(ClsOutFmt value, bool bitstr) { return strClsOutFmt(toMask(value), bitstr); }

std::string strClsOutFmt(ClsOutFmtBase mask, bool bitstr) {
    if (bitstr) return bits(mask);
    if (mask == 0) return "NONE";
    std::string text;
    switch (toClsOutFmt(mask & toMask(ClsOutFmt::MASK_OUTSTRUCT))) {
        case ClsOutFmt::NONE: text = "NONE"; break;
        case ClsOutFmt::ROOT: text = "ROOT"; break;
        case ClsOutFmt::PERLEVEL: text = "PERLEVEL"; break;
        case ClsOutFmt::CUSTLEVS: text = "CUSTLEVS"; break;
        case ClsOutFmt::CUSTLEVS_APPROXNUM: text = "CUSTLEVS_APPROXNUM"; break;
        case ClsOutFmt::ALLCLS: text = "ALLCLS"; break;
        case ClsOutFmt::HIER: text = "HIER"; break;
        case ClsOutFmt::SIGNIF_OWNSDIR: text = "SIGNIF_OWNSDIR"; break;
        case ClsOutFmt::SIGNIF_OWNADIR: text = "SIGNIF_OWNADIR"; break;
        case ClsOutFmt::SIGNIF_OWNSHIER: text = "SIGNIF_OWNSHIER"; break;
        case ClsOutFmt::SIGNIF_OWNAHIER: text = "SIGNIF_OWNAHIER"; break;
        case ClsOutFmt::SIGNIF_DEFAULT: text = "SIGNIF_DEFAULT"; break;
        default: text = reject("strClsOutFmt(), invalid value of the OUTSTRUC flag");
    }
    if (mask & toMask(ClsOutFmt::MAXSHARE)) text += ", MAXSHARE";
    switch (toClsOutFmt(mask & toMask(ClsOutFmt::MASK_FILEFMT))) {
        case ClsOutFmt::PURE: text += ", PURE"; break;
        case ClsOutFmt::SIMPLE: text += ", SIMPLE"; break;
        case ClsOutFmt::SHARED: text += ", SHARED"; break;
        case ClsOutFmt::EXTENDED: text += ", EXTENDED"; break;
        default: text += reject("strClsOutFmt(), invalid value of the FILEFMT flag");
    }
    return text;
}

std::string to_string(Reduction value, bool bitstr) {
    if (bitstr) return bits(toMask(value));
    std::string text;
    switch (value & Reduction::CORE_MASK) {
        case Reduction::NONE: text = "NONE"; break;
        case Reduction::ACCURATE: text = "ACCURATE"; break;
        case Reduction::MEAN: text = "MEAN"; break;
        case Reduction::SEVERE: text = "SEVERE"; break;
        default: text = reject("toString(), invalid value of the flag");
    }
    const Reduction skip = value & Reduction::SKIP_MASK;
    if (skip == Reduction::SKIP_NODES)
        text += ", SKIP_NODES";
    else if (skip == Reduction::SKIP_CLUSTERS)
        text += ", SKIP_CLUSTERS";
    else if (skip != Reduction::NONE)
        text += ", SKIP_NODES, SKIP_CLUSTERS";
    if ((value & Reduction::CRITERIA_WEIGHT) != Reduction::NONE) text += ", CRITERIA_WEIGHT";
    return text;
}

std::string to_string(Speedup value, bool bitstr) {
    if (bitstr) return bits(toMask(value));
    switch (value) {
        case Speedup::NONE: return "NONE";
        case Speedup::COARSE: return "COARSE";
        case Speedup::ORDERDEP: return "ORDERDEP";
    }
    return reject("toString(), invalid value of the flag");
}

std::string to_string(Validation value, bool bitstr) {
    if (bitstr) return bits(toMask(value));
    switch (value) {
        case Validation::NONE: return "NONE";
        case Validation::STANDARD: return "STANDARD";
        case Validation::SEVERE: return "SEVERE";
    }
    return reject("toString(), invalid value of the flag");
}

std::string to_string(IntrinsicsFlags value, bool bitstr) {
    if (bitstr) return bits(toMask(value));
    if (value == IntrinsicsFlags::NONE) return "NONE";
    if (value == IntrinsicsFlags::ALL) return "ALL";
    std::string text;
    const auto append = [&](IntrinsicsFlags flag, const char* name) {
        if ((value & flag) == IntrinsicsFlags::NONE) return;
        if (!text.empty()) text += ", ";
        text += name;
    };
    append(IntrinsicsFlags::CONDUCTANCE, "CONDUCTANCE");
    append(IntrinsicsFlags::MODULARITY, "MODULARITY");
    append(IntrinsicsFlags::GAMMA, "GAMMA");
    return text;
}

std::string to_string(FileFormat value, bool bitstr) {
    if (bitstr) return bits(toMask(value));
    switch (value) {
        case FileFormat::UNKNOWN: return "UNKNOWN";
        case FileFormat::RCG: return "RCG";
        case FileFormat::NSE: return "NSE";
        case FileFormat::NSA: return "NSA";
        case FileFormat::CNL: return "CNL";
        case FileFormat::RHB: return "RHB";
    }
    return reject("toString(), invalid value of the FileFormat flag");
}

bool isset(ClsOutFmtBase mask, ClsOutFmt flag) {
    if (toMask(flag) < 16) return toMask(flag) == (mask & toMask(ClsOutFmt::MASK_OUTSTRUCT));
    if (toMask(flag) == 16) return mask & toMask(ClsOutFmt::MASK_FILTERING);
    return toMask(flag) == (mask & toMask(ClsOutFmt::MASK_FILEFMT));
}

bool anycustlevs(ClsOutFmtBase mask) {
    return isset(mask, ClsOutFmt::CUSTLEVS) || isset(mask, ClsOutFmt::CUSTLEVS_APPROXNUM);
}

bool anysignif(ClsOutFmtBase mask) {
    mask &= ClsOutFmt::MASK_OUTSTRUCT;
    return mask >= toMask(ClsOutFmt::RANGE_SIGNIF_LOW) &&
           mask <= toMask(ClsOutFmt::RANGE_SIGNIF_HIGH);
}

std::string toYesNo(bool value) { return value ? "yes" : "no"; }

std::string pad(std::string&& text, std::uint8_t width, char fill, bool front) {
    if (text.size() < width) text.insert(front ? 0 : text.size(), width - text.size(), fill);
    return std::move(text);
}

}  // namespace vorl
