#include <vorl/hierarchy/level.hpp>

#include <stdexcept>
#include <string>

namespace vorl {

template <class LinksT>
Level<LinksT>::Level(Id size, Clusters<LinksT>&& cls) : fullsize(size), clusters(std::move(cls)) {
    if (fullsize == ID_NONE || fullsize < clusters.size())
        throw std::invalid_argument(
            "Level(), fullsize should be valid and not less than the clusters size: " +
            std::to_string(fullsize) + "\n");
}

template struct Level<UnweightedLinks>;
template struct Level<WeightedLinks>;

}  // namespace vorl
