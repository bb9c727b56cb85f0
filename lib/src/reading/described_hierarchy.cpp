#include <vorl/reading/described_hierarchy.hpp>

#include <vorl/types/item_map.hpp>

namespace vorl {

template <class LinksT>
HierarchyFile describedHierarchy(const Hierarchy<LinksT>& hier, const std::string& name) {
    using Item = HierarchyFile::Item;
    HierarchyFile file;
    file.m_name = name;
    file.m_nodes = static_cast<Item>(hier.nodes().size());
    ItemMap<const Cluster<LinksT>, Item> places;
    Item next = file.m_nodes;
    for (const auto& level : hier.levels()) {
        for (const auto& cl : level.clusters) {
            places.insert(&cl, next++);
            file.m_clusterNumbers.append(cl.id);
        }
        file.m_levels.push_back({next, level.fullsize});
    }
    file.m_ids.reserve(next);
    file.m_lines.resize(next);
    const auto describe = [&](const auto& item) {
        file.m_ids.push_back(item.id);
        for (const auto& owner : item.owners)
            file.m_owners.push_back(
                {places.find(owner.dest)->second,
                 item.owners.size() == 1 ? 1. : static_cast<double>(owner.numac) / item.totac});
        file.m_begins.push_back(file.m_owners.size());
    };
    for (const auto& node : hier.nodes()) {
        file.m_nodeNumbers.append(node.id);
        describe(node);
    }
    for (const auto& level : hier.levels())
        for (const auto& cl : level.clusters) describe(cl);
    return file;
}

template VORL_API HierarchyFile describedHierarchy(const Hierarchy<UnweightedLinks>&,
                                                   const std::string&);
template VORL_API HierarchyFile describedHierarchy(const Hierarchy<WeightedLinks>&,
                                                   const std::string&);

}  // namespace vorl
