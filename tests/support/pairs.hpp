// Links as arrays.
#pragma once

#include <vorl/flat_network.hpp>

#include <vector>

namespace vorl::test {

struct Pairs {
    std::vector<Id> src;
    std::vector<Id> dst;
    std::vector<LinkWeight> weight;

    void add(Id a, Id b, LinkWeight w) {
        src.push_back(a);
        dst.push_back(b);
        weight.push_back(w);
    }
    FlatNetwork network() const { return FlatNetwork::ofPairs(src, dst, weight); }
};

}  // namespace vorl::test
