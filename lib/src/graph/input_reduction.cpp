// Reduction of the links of one node as they arrive.
#include <vorl/graph.hpp>

#include <vorl/processing/links_margin.hpp>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <unordered_set>

namespace vorl {

void acsReduceLinks(Node<WeightedLinks>& node, InpLinks<true>& links,
                    IdNodes<WeightedLinks>& idnodes, Reduction reduction, Id linksMarg,
                    bool sumdups, StructLinkErrors* errors) {
    if (linksMarg == 0 || links.size() <= linksMarg) return;
    std::stable_sort(links.begin(), links.end(), cmpObjsWeight<InpLink<true>>);
    const auto n = static_cast<Id>(links.size());

    // The top links, from the second-heaviest downward; the heaviest isn't looked at.
    AccWeight wsum = 0;
    LinkWeight wmax = 0;
    Id selfs = 0;
    Id limit = n - 2;
    for (Id i = 0, pos = n - 2; i < n && i < linksMarg + selfs; ++i) {
        limit = pos;
        const InpLink<true>& ln = links[pos];
        if (ln.id == node.id)
            ++selfs;
        else if (reduction != Reduction::ACCURATE && wsum != 0)
            wsum += detail::topLinkCoef(reduction, i, n) * ln.weight;
        else if (wsum == 0)
            wsum = wmax = ln.weight;
        if (pos == 0) break;
        --pos;
    }
    if (equal(links.front().weight, links[limit].weight)) return;

    Id pos = 0;
    AccWeight acc = 0;
    const auto scan = [&] {
        while (less(2 * links[pos].weight, wmax) && pos != limit && less(acc, wsum))
            acc += links[pos++].weight;
    };
    if (reduction == Reduction::ACCURATE) {
        scan();
    } else if (limit != 0) {
        for (Id count = linksMarg + selfs;;) {
            scan();
            if (less(acc, wsum) || pos == limit) break;
            --limit;
            if (links[limit].id != node.id)
                wsum += detail::topLinkCoef(reduction, count++, n) * links[limit].weight;
            if (limit == pos) break;
        }
    }
    const LinkWeight tie = links[pos].weight;
    while (pos != 0 && equal(links[pos - 1].weight, tie)) --pos;

    std::unordered_set<Id> seen(pos);
    for (Id i = 0; i < pos; ++i) {
        const InpLink<true>& ln = links[i];
        if (!seen.insert(ln.id).second && !sumdups) {
            if (errors) errors->add({node.id, ln.id});
            continue;
        }
        if (ln.id == node.id) {
            node.addWeight(2.0 * ln.weight);
            continue;
        }
        try {
            Node<WeightedLinks>* dest = idnodes.at(ln.id);
            const AccWeight half = 0.5 * static_cast<AccWeight>(ln.weight);
            node.addWeight(half);
            dest->addWeight(half);
        } catch (const std::out_of_range& err) {
            throw std::out_of_range("acsReduceLinks(), the link with non-existent node is used: #" +
                                    std::to_string(ln.id) + "\n" + err.what());
        }
    }
    links.erase(links.begin(), links.begin() + pos);
}

}  // namespace vorl
