#include <vorl/processing/struct_errors.hpp>
#include <vorl/types/trace.hpp>

#include <algorithm>

namespace vorl {

StructErrors::~StructErrors() = default;

void StructErrors::showRemainErrs() const {
    if (size > ERRORS_MAX)
        VORL_TRACE(" ...(and %lu more)\n", size - ERRORS_MAX);
    else
        VORL_TRACE("\n");
}

Size StructNodeErrors::add(Id nid) {
    if (size < ERRORS_MAX) nids[size] = nid;
    return ++size;
}

void StructNodeErrors::show() const {
    if (!defined()) return;
    VORL_TRACE("%s", message);
    for (Size i = 0; i < std::min(size, ERRORS_MAX); ++i) VORL_TRACE(" %u", nids[i]);
    showRemainErrs();
}

Size StructLinkErrors::add(LinkSrcDstId&& lid) {
    if (size < ERRORS_MAX) lids[size] = lid;
    return ++size;
}

void StructLinkErrors::show() const {
    if (!defined()) return;
    VORL_TRACE("%s", message);
    for (Size i = 0; i < std::min(size, ERRORS_MAX); ++i)
        VORL_TRACE(" %u->%u", lids[i].sid, lids[i].did);
    showRemainErrs();
}

}  // namespace vorl
