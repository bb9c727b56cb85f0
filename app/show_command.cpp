#include "show_command.hpp"

#include "clusters_input.hpp"
#include "output_text.hpp"

#include <algorithm>
#include <vector>

namespace vorl::app {

namespace {

using Item = HierarchyFile::Item;
using Shares = std::vector<HierarchyFile::Share>;

/// `[...]` with the text of each thing.
template <class ThingsT, class TextT>
std::string jsonList(const ThingsT& things, TextT text) {
    std::string list;
    for (const auto& thing : things) list += (list.empty() ? "" : ", ") + text(thing);
    return "[" + list + "]";
}

/// The id of an item, or the name of a node between quotes.
std::string jsonItem(const HierarchyFile& file, Item item) {
    if (!file.isNode(item) || !file.labels() || !file.labels()->has(file.id(item)))
        return std::to_string(file.id(item));
    return jsonQuoted(file.nodeName(item));
}

std::string nameOf(const HierarchyFile& file, Item item) {
    return file.isNode(item) ? printable(file.nodeName(item)) : std::to_string(file.id(item));
}

std::string jsonShare(const HierarchyFile& file, const HierarchyFile::Share& part) {
    return std::string("{\"") + (file.isNode(part.item) ? "node" : "cluster") +
           "\": " + jsonItem(file, part.item) + ", \"share\": " + jsonNumber(part.share) + "}";
}

Shares sharesOf(std::span<const HierarchyFile::Share> shares) {
    return {shares.begin(), shares.end()};
}

/// A few of the items with their shares, those of 1 alone.
std::string listed(const HierarchyFile& file, const Shares& parts) {
    constexpr std::size_t most = 12;
    std::string text;
    for (std::size_t i = 0; i < std::min(parts.size(), most); ++i) {
        text += (i ? ", " : "") + nameOf(file, parts[i].item);
        if (parts[i].share < 1) text += ":" + number(parts[i].share, 4);
    }
    return text + (parts.size() > most ? ", ..." : "");
}

/// The clusters at the root.
std::vector<Item> rootOf(const HierarchyFile& file) {
    std::vector<Item> root;
    for (Item item = file.nodes(); item < file.nodes() + file.clusters(); ++item)
        if (file.owners(item).empty()) root.push_back(item);
    return root;
}

std::string hierarchyAsText(const HierarchyFile& file) {
    std::string text = file.name() + ": " + counted(file.nodes(), "node") + ", " +
                       counted(file.clusters(), "cluster") + " on " +
                       counted(file.levels(), "level") + "\n";
    if (file.levels() == 0) return text;
    text += "\n level      formed   clusters there\n";
    const std::vector<Item> standing = file.standingClusters();
    for (LevelNum level = 0; level < file.levels(); ++level)
        text += format("%6u%12s%17s\n", level, grouped(file.formedOn(level)).c_str(),
                       grouped(standing[level]).c_str());
    const std::vector<Item> root = rootOf(file);
    text += "\n" + counted(root.size(), "cluster") + " at the root: ";
    Shares whole;
    for (const Item item : root) whole.push_back({item, 1});
    return text + listed(file, whole) + "\n";
}

std::string hierarchyAsJson(const HierarchyFile& file) {
    std::string levels;
    const std::vector<Item> standing = file.standingClusters();
    for (LevelNum level = 0; level < file.levels(); ++level)
        levels += (level == 0 ? "{" : ", {") +
                  ("\"clusters\": " + std::to_string(file.formedOn(level))) +
                  ", \"fullsize\": " + std::to_string(file.heightOf(level)) +
                  ", \"standing_clusters\": " + std::to_string(standing[level]) + "}";
    return "{\"file\": " + jsonQuoted(file.name()) +
           ", \"nodes\": " + std::to_string(file.nodes()) +
           ", \"clusters\": " + std::to_string(file.clusters()) + ", \"levels\": [" + levels +
           "], \"root\": " +
           jsonList(rootOf(file), [&](Item item) { return std::to_string(file.id(item)); }) + "}\n";
}

std::string nodeAsText(const HierarchyFile& file, Item node) {
    std::string text = "node " + nameOf(file, node);
    const Shares path = file.ancestors(node);
    if (path.empty()) return text + " is in no cluster\n";
    text += ": in " + counted(path.size(), "cluster") +
            "\n\n level     cluster     share       nodes\n";
    for (const auto& [cluster, share] : path)
        text += format("%6u%12s%10s%12s%s\n", file.levelOf(cluster),
                       std::to_string(file.id(cluster)).c_str(), number(share, 4).c_str(),
                       grouped(file.members(cluster).size()).c_str(),
                       file.owners(cluster).empty() ? "  root" : "");
    return text;
}

std::string nodeAsJson(const HierarchyFile& file, Item node) {
    return "{\"node\": " + jsonItem(file, node) + ", \"clusters\": " +
           jsonList(file.ancestors(node),
                    [&](const HierarchyFile::Share& part) {
                        return "{\"level\": " + std::to_string(file.levelOf(part.item)) +
                               ", \"cluster\": " + std::to_string(file.id(part.item)) +
                               ", \"share\": " + jsonNumber(part.share) +
                               ", \"nodes\": " + std::to_string(file.members(part.item).size()) +
                               ", \"root\": " +
                               (file.owners(part.item).empty() ? "true" : "false") + "}";
                    }) +
           "}\n";
}

std::string clusterAsText(const HierarchyFile& file, Item cluster) {
    const Shares members = file.members(cluster);
    const Shares parts = file.parts(cluster);
    const Shares owners = sharesOf(file.owners(cluster));
    double size = 0;
    for (const auto& member : members) size += member.share;
    std::string text = "cluster " + std::to_string(file.id(cluster)) + ": formed on level " +
                       std::to_string(file.levelOf(cluster)) + ", " +
                       counted(members.size(), "node");
    if (size < static_cast<double>(members.size()) * (1 - 1e-9))
        text += " with shares of " + number(size, 6) + " in all";
    text += "\n\nowners     " + (owners.empty() ? "none, it is at the root" : listed(file, owners));
    const bool ofNodes = !parts.empty() && file.isNode(parts.front().item);
    text += std::string("\nparts      ") + grouped(parts.size()) +
            (ofNodes ? " node" : " cluster") + (parts.size() == 1 ? ": " : "s: ") +
            listed(file, parts) + "\n\n      node     share\n";
    for (const auto& [node, share] : members)
        text += format("%10s%10s\n", nameOf(file, node).c_str(), number(share, 4).c_str());
    return text;
}

std::string clusterAsJson(const HierarchyFile& file, Item cluster) {
    const auto list = [&](const Shares& shares) {
        return jsonList(shares,
                        [&](const HierarchyFile::Share& part) { return jsonShare(file, part); });
    };
    return "{\"cluster\": " + std::to_string(file.id(cluster)) +
           ", \"level\": " + std::to_string(file.levelOf(cluster)) +
           ", \"owners\": " + list(sharesOf(file.owners(cluster))) +
           ", \"parts\": " + list(file.parts(cluster)) +
           ", \"members\": " + list(file.members(cluster)) + "}\n";
}

}  // namespace

void run(const ShowCommand& command) {
    const HierarchyFile file = readHierarchy(command.file);
    if (command.node) {
        const Item node = file.node(*command.node);
        print(command.json ? nodeAsJson(file, node) : nodeAsText(file, node));
    } else if (command.cluster) {
        const Item cluster = file.cluster(*command.cluster);
        print(command.json ? clusterAsJson(file, cluster) : clusterAsText(file, cluster));
    } else {
        print(command.json ? hierarchyAsJson(file) : hierarchyAsText(file));
    }
}

}  // namespace vorl::app
