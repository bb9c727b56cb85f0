#include <vorl/reading/hierarchy_file.hpp>

#include <algorithm>
#include <charconv>
#include <map>
#include <numeric>

namespace vorl {

namespace {

/// Shares of items in others, gathered while items are walked.
using Shares = std::map<HierarchyFile::Item, double>;

std::vector<HierarchyFile::Share> listOf(const Shares& shares) {
    std::vector<HierarchyFile::Share> list;
    for (const auto& [item, share] : shares) list.push_back({item, std::min(share, 1.)});
    return list;
}

}  // namespace

HierarchyFile::Item HierarchyFile::formedOn(LevelNum level) const {
    return m_levels[level].end - (level == 0 ? m_nodes : m_levels[level - 1].end);
}

LevelNum HierarchyFile::levelOf(Item cluster) const {
    const auto level =
        std::upper_bound(m_levels.begin(), m_levels.end(), cluster,
                         [](Item item, const Level& other) { return item < other.end; });
    return static_cast<LevelNum>(level - m_levels.begin());
}

HierarchyFile::Item HierarchyFile::node(Id id) const {
    const Id number = m_nodeNumbers.find(id);
    if (number == ID_NONE)
        throw InputError(m_name + ": there is no node " + naming::plain(id, m_labels.get()));
    return number;
}

HierarchyFile::Item HierarchyFile::node(std::string_view name) const {
    Id id = 0;
    const auto [last, err] = std::from_chars(name.data(), name.data() + name.size(), id);
    const bool number = err == std::errc() && last == name.data() + name.size();
    const Id known = m_labels ? m_labels->find(name) : ID_NONE;
    if (known != ID_NONE || !number) id = known;
    if (id == ID_NONE) throw InputError(m_name + ": there is no node " + std::string(name));
    return node(id);
}

HierarchyFile::Item HierarchyFile::cluster(Id id) const {
    const Id number = m_clusterNumbers.find(id);
    if (number == ID_NONE) throw InputError(m_name + ": there is no cluster " + std::to_string(id));
    return m_nodes + number;
}

std::vector<HierarchyFile::Share> HierarchyFile::parts(Item cluster) const {
    std::vector<Share> list;
    for (Item item = 0; item < cluster; ++item)
        for (const Share& owner : owners(item))
            if (owner.item == cluster) list.push_back({item, owner.share});
    return list;
}

std::vector<HierarchyFile::Share> HierarchyFile::ancestors(Item item) const {
    Shares shares;
    for (const Share& owner : owners(item)) shares[owner.item] += owner.share;
    // Owners stand behind what they own, so that each is complete when the walk reaches it.
    for (auto at = shares.begin(); at != shares.end(); ++at)
        for (const Share& owner : owners(at->first)) shares[owner.item] += at->second * owner.share;
    return listOf(shares);
}

std::vector<HierarchyFile::Share> HierarchyFile::members(Item cluster) const {
    std::vector<double> shares(cluster + std::size_t{1});
    shares[cluster] = 1;
    std::vector<Share> list;
    for (Item item = cluster; item-- > 0;) {
        for (const Share& owner : owners(item))
            if (owner.item <= cluster) shares[item] += shares[owner.item] * owner.share;
        if (isNode(item) && shares[item] > 0) list.push_back({item, std::min(shares[item], 1.)});
    }
    std::reverse(list.begin(), list.end());
    return list;
}

bool HierarchyFile::standsAt(Item cluster, LevelNum level) const {
    const auto above = owners(cluster);
    return cluster < m_levels[level].end &&
           (above.empty() || above.front().item >= m_levels[level].end);
}

std::vector<HierarchyFile::Item> HierarchyFile::standingClusters() const {
    std::vector<Item> come(m_levels.size() + 1);
    std::vector<Item> gone(m_levels.size() + 1);
    for (Item cluster = m_nodes; cluster < m_ids.size(); ++cluster) {
        const auto above = owners(cluster);
        ++come[levelOf(cluster)];
        ++gone[above.empty() ? m_levels.size() : levelOf(above.front().item)];
    }
    std::vector<Item> standing(m_levels.size());
    Item count = 0;
    for (std::size_t level = 0; level < standing.size(); ++level)
        standing[level] = count += come[level] - gone[level];
    return standing;
}

LevelNum HierarchyFile::nearestLevel(Size wanted) const {
    if (m_levels.empty()) throw InputError(m_name + ": the hierarchy has no levels");
    const auto apart = [wanted](Size count) {
        return count < wanted ? wanted - count : count - wanted;
    };
    const std::vector<Item> standing = standingClusters();
    const auto nearest = std::min_element(standing.begin(), standing.end(),
                                          [&](Item a, Item b) { return apart(a) < apart(b); });
    return static_cast<LevelNum>(nearest - standing.begin());
}

HierarchyFile::Holders HierarchyFile::holders(LevelNum level) const {
    const Item end = m_levels[level].end;
    Holders result;
    auto& holders = result.at;
    holders.resize(end);
    // From the top down.
    for (Item item = end; item-- > 0;) {
        if (!isNode(item) && standsAt(item, level)) {
            holders[item] = {{item, 1}};
            continue;
        }
        const auto above = owners(item);
        if (above.empty() || above.front().item >= end) continue;
        std::vector<Share> rest = restOf(above, end, result);
        if (!rest.empty()) result.rest.emplace(item, std::move(rest));
        if (above.size() == 1) {
            holders[item] = holders[above.front().item];
            continue;
        }
        holders[item] = result.of(above);
    }
    return result;
}

std::vector<HierarchyFile::Share> HierarchyFile::Holders::of(std::span<const Share> owners) const {
    Shares sums;
    for (const Share& owner : owners)
        if (owner.item < at.size())
            for (const Share& holder : at[owner.item])
                sums[holder.item] += owner.share * holder.share;
    return listOf(sums);
}

/// What of owners lies above a level, where something of them holds below it.
std::vector<HierarchyFile::Share> HierarchyFile::restOf(std::span<const Share> owners, Item end,
                                                        const Holders& holders) {
    if (holders.rest.empty() && owners.back().item < end) return {};
    Shares sums;
    for (const Share& owner : owners) {
        if (owner.item >= end) {
            sums[owner.item] += owner.share;
        } else if (const auto rest = holders.rest.find(owner.item); rest != holders.rest.end()) {
            for (const Share& part : rest->second) sums[part.item] += owner.share * part.share;
        }
    }
    return listOf(sums);
}

HierarchyFile HierarchyFile::withLevels(std::span<const LevelNum> levels) const {
    HierarchyFile result;
    result.m_name = m_name;
    result.m_labels = m_labels;
    result.m_nodes = m_nodes;
    result.m_nodeNumbers = m_nodeNumbers;
    // What is still without owners, and what it is in the result.
    std::vector<Item> open(m_nodes);
    std::iota(open.begin(), open.end(), Item{0});
    std::vector<Item> number(m_ids.size(), 0);
    std::vector<std::vector<Share>> ownersOf(m_nodes);
    std::vector<Item> items = open;
    // Of what has owners in the result, but not all of them yet, those that are left.
    std::map<Item, std::vector<Share>> left;
    std::vector<Item> parted;
    for (const LevelNum level : levels) {
        const Holders holding = holders(level);
        const auto heldBy = [&](Item item) {
            const auto part = left.find(item);
            return part == left.end() ? holding.at[item] : holding.of(part->second);
        };
        std::vector<Size> holds(m_levels[level].end);
        for (const Item item : open)
            for (const Share& holder : heldBy(item)) ++holds[holder.item];
        std::vector<Item> still;
        std::vector<Item> formed;
        std::vector<std::pair<Item, std::vector<Share>>> taken;
        for (const Item item : open) {
            std::vector<Share> held = heldBy(item);
            if (held.empty() || held.front().item == item ||
                (!isNode(item) && held.size() == 1 && holds[held.front().item] == 1 &&
                 number[held.front().item] == 0)) {
                still.push_back(item);
                continue;
            }
            for (const Share& holder : held) {
                if (number[holder.item] == 0) formed.push_back(holder.item);
                number[holder.item] = std::max(number[holder.item], Item{1});
            }
            taken.emplace_back(item, std::move(held));
            const auto part = left.find(item);
            std::vector<Share> rest =
                restOf(part == left.end() ? owners(item) : std::span<const Share>(part->second),
                       m_levels[level].end, holding);
            if (!rest.empty()) {
                still.push_back(item);
                parted.push_back(item);
                left[item] = std::move(rest);
            }
        }
        std::sort(formed.begin(), formed.end());
        for (const Item cluster : formed) {
            number[cluster] = static_cast<Item>(items.size());
            items.push_back(cluster);
            ownersOf.emplace_back();
        }
        for (const auto& [item, held] : taken)
            for (const Share& holder : held)
                ownersOf[isNode(item) ? item : number[item]].push_back(
                    {number[holder.item], holder.share});
        still.insert(still.end(), formed.begin(), formed.end());
        open = std::move(still);
        result.m_levels.push_back({static_cast<Item>(items.size()), open.size()});
    }
    // What lies above the last level is shared out among the owners that there are.
    for (const Item item : parted) {
        std::vector<Share>& all = ownersOf[isNode(item) ? item : number[item]];
        double sum = 0;
        for (const Share& owner : all) sum += owner.share;
        for (Share& owner : all) owner.share /= sum;
    }
    for (Item item = 0; item < items.size(); ++item) {
        result.m_ids.push_back(m_ids[items[item]]);
        result.m_lines.push_back(m_lines[items[item]]);
        if (item >= m_nodes) result.m_clusterNumbers.append(result.m_ids.back());
        result.m_owners.insert(result.m_owners.end(), ownersOf[item].begin(), ownersOf[item].end());
        result.m_begins.push_back(result.m_owners.size());
    }
    return result;
}

ClustersFile HierarchyFile::cut(LevelNum level) const {
    const Item end = m_levels[level].end;
    // The clusters that hold each item.
    const auto holders = this->holders(level).at;

    ClustersFile file;
    file.name = m_name;
    file.numbered = true;
    file.labels = m_labels;
    file.toldNodes = m_nodes;
    std::vector<std::size_t> places(end + std::size_t{1});
    std::vector<Item> order(m_nodes);
    for (Item node = 0; node < m_nodes; ++node) {
        order[node] = node;
        for (const Share& holder : holders[node]) ++places[holder.item + 1];
        if (!holders[node].empty()) file.nodes.push_back(id(node));
    }
    std::sort(file.nodes.begin(), file.nodes.end());
    std::sort(order.begin(), order.end(), [&](Item a, Item b) { return id(a) < id(b); });
    for (Item item = 0; item < end; ++item) places[item + 1] += places[item];
    for (Item item = m_nodes; item < end; ++item)
        if (places[item] != places[item + 1])
            file.clusters.push_back({m_lines[item], id(item), places[item], places[item + 1]});
    file.members.resize(places[end]);
    file.shares.resize(places[end]);
    bool anyStated = false;
    for (const Item node : order) {
        const std::size_t count = holders[node].size();
        const auto even = vorl::Share{1} / static_cast<vorl::Share>(count);
        const bool stated =
            std::any_of(holders[node].begin(), holders[node].end(), [&](const Share& holder) {
                return !equal(static_cast<vorl::Share>(holder.share), even, count);
            });
        anyStated = anyStated || stated;
        for (const Share& holder : holders[node]) {
            const std::size_t place = places[holder.item]++;
            file.members[place] = id(node);
            if (stated) file.shares[place] = static_cast<vorl::Share>(holder.share);
        }
    }
    if (!anyStated) file.shares.clear();
    return file;
}

}  // namespace vorl
