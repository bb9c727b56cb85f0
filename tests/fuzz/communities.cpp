// Communities of tiny networks made of arbitrary bytes: whatever the links and weights, each node
// is shared out whole, and threads change nothing.
#include <vorl/communities.hpp>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

using namespace vorl;

void require(bool holds) {
    if (!holds) std::abort();
}

/// Links of one byte for each end, and with weights of 32 bits if the first byte is odd.
FlatNetwork networkOf(const std::uint8_t* data, std::size_t size) {
    std::vector<Id> src;
    std::vector<Id> dst;
    std::vector<LinkWeight> weights;
    const bool weighted = size != 0 && data[0] & 1;
    const std::size_t step = weighted ? 6 : 2;
    for (std::size_t at = 1; at + step <= size; at += step) {
        src.push_back(data[at] % 48);
        dst.push_back(data[at + 1] % 48);
        if (!weighted) continue;
        LinkWeight weight = 0;
        std::memcpy(&weight, data + at + 2, sizeof weight);
        // Sums of more than 32 bits hold are refused.
        weight = std::fabs(weight);
        weights.push_back(weight < 1e36f ? weight : 1);
    }
    return FlatNetwork::ofPairs(src, dst, weights);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const FlatNetwork network = networkOf(data, size);
    const Communities one = communities(network, {.threads = 1});
    const Communities two = communities(network, {.threads = 2, .starts = 6});
    require(std::isfinite(one.score().saving) && std::isfinite(one.score().gamma));
    for (Size place = 0; place < one.nodes(); ++place) {
        double sum = 0;
        for (const CommunityShare& part : one.of(place)) {
            require(part.share > 0 && part.community < one.count());
            sum += static_cast<double>(part.share);
        }
        require(std::abs(sum - 1) < 1e-6);
        require(std::equal(one.of(place).begin(), one.of(place).end(), two.of(place).begin(),
                           two.of(place).end()));
    }
    for (Id community = 0; community < one.count(); ++community)
        require(!one.members(community).empty());
    return 0;
}
