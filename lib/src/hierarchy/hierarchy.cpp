#include <vorl/hierarchy/hierarchy.hpp>

namespace vorl {

template <class LinksT>
Hierarchy<LinksT>::Hierarchy() {}

template <class LinksT>
Hierarchy<LinksT>::Hierarchy(Hierarchy&& other) noexcept
    : m_nodes(std::move(other.m_nodes)),
      m_levels(std::move(other.m_levels)),
      m_root(std::move(other.m_root)),
      m_score(other.m_score) {}

template <class LinksT>
Hierarchy<LinksT>::~Hierarchy() {}

#define VORL_INSTANTIATE(LinksT)                                 \
    template Hierarchy<LinksT>::Hierarchy();                     \
    template Hierarchy<LinksT>::Hierarchy(Hierarchy&&) noexcept; \
    template Hierarchy<LinksT>::~Hierarchy();

VORL_INSTANTIATE(UnweightedLinks)
VORL_INSTANTIATE(WeightedLinks)

#undef VORL_INSTANTIATE

}  // namespace vorl
