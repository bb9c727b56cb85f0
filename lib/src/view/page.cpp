// The page: its template with the data of a hierarchy.
#include "asset.hpp"
#include "pieces.hpp"
#include "scene.hpp"
#include "sections.hpp"

#include <vorl/reading/input_error.hpp>
#include <vorl/reading/pack.hpp>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string_view>

namespace vorl::view {

namespace {

/// A coordinate in [-1, 1] as one of 65535 steps.
std::uint16_t step(double at) {
    return static_cast<std::uint16_t>(std::floor((std::clamp(at, -1., 1.) + 1) * 32767 + 0.5));
}

/// How many nodes each cluster has, each of them once, and what their shares add up to; by the item
/// less the number of nodes.
struct Contents {
    std::vector<std::uint32_t> members;
    std::vector<double> size;

    explicit Contents(const HierarchyFile& file) : members(file.clusters()), size(file.clusters()) {
        const Item end = file.nodes() + file.clusters();
        std::vector<std::vector<Item>> nodes(file.clusters());
        std::vector<Item> left(file.clusters());  // owners that a list is still to go to
        const auto of = [&file](Item cluster) { return cluster - file.nodes(); };
        for (Item node = 0; node < file.nodes(); ++node)
            for (const auto& owner : file.owners(node)) {
                nodes[of(owner.item)].push_back(node);
                size[of(owner.item)] += owner.share;
            }
        std::vector<Item> merged;
        for (Item cluster = file.nodes(); cluster < end; ++cluster) {
            std::vector<Item>& own = nodes[of(cluster)];
            std::sort(own.begin(), own.end());
            own.erase(std::unique(own.begin(), own.end()), own.end());
            members[of(cluster)] = static_cast<std::uint32_t>(own.size());
            for (const auto& owner : file.owners(cluster)) {
                auto& above = nodes[of(owner.item)];
                above.insert(above.end(), own.begin(), own.end());
                size[of(owner.item)] += size[of(cluster)] * owner.share;
            }
            std::vector<Item>().swap(own);
        }
    }
};

class Writer {
public:
    Writer(const FlatNetwork& network, const HierarchyFile& file, const ViewOptions& options)
        : m_network(network), m_options(options), m_scene(network, file, options) {}

    std::string data() {
        addClusters();
        addPlaces();
        addNodes();
        addPieces();
        return m_sections.text(facts());
    }

private:
    const Nest& nest() const { return m_scene.nest; }

    std::string facts() const {
        const FlatNetwork& net = m_network;
        std::string facts = "\"format\":1,\"nodes\":" + std::to_string(net.size()) +
                            ",\"links\":" + std::to_string(linkCount()) +
                            ",\"directed\":" + (m_options.directed ? "true" : "false") +
                            ",\"weighted\":" + (m_options.weighted ? "true" : "false") +
                            ",\"level\":" + std::to_string(m_scene.first) + ",\"levels\":[";
        const std::vector<Item> standing = m_file.standingClusters();
        for (LevelNum level = 0; level < m_file.levels(); ++level)
            facts += (level == 0 ? "[" : ",[") + std::to_string(m_scene.levels[level]) + "," +
                     std::to_string(standing[level]) + "]";
        facts += "],\"palette\":[";
        for (const Colour& colour : PALETTE)
            facts += std::string("[\"") + colour.light + "\",\"" + colour.dark + "\"],";
        return facts + "[\"" + NEUTRAL.light + "\",\"" + NEUTRAL.dark + "\"]]";
    }

    /// Links between two nodes and self links, each once.
    Size linkCount() const {
        Size selfs = 0;
        for (const AccWeight self : m_network.self) selfs += self > 0;
        return m_network.neighbour.size() / 2 + selfs;
    }

    void addClusters() {
        std::vector<std::uint32_t> id, parent, level, places, own, last, members;
        std::vector<float> size, x, y, r, shares;
        std::vector<std::uint32_t> sharers, owners;
        std::string colour;
        const Contents contents(m_file);
        for (Number i = 0; i < nest().clusters.size(); ++i) {
            const Nest::Cluster& cluster = nest().clusters[i];
            const Item place = cluster.item - m_file.nodes();
            id.push_back(i == 0 ? 0 : m_file.id(cluster.item));
            parent.push_back(i == 0 ? 0 : cluster.parent);
            level.push_back(i == 0 ? m_file.levels() : m_file.levelOf(cluster.item));
            own.push_back(cluster.own - cluster.places);
            members.push_back(i == 0 ? static_cast<std::uint32_t>(m_network.size())
                                     : contents.members[place]);
            size.push_back(static_cast<float>(i == 0 ? cluster.mass : contents.size[place]));
            const Circle& circle = m_scene.map.clusters[i];
            x.push_back(static_cast<float>(circle.x));
            y.push_back(static_cast<float>(circle.y));
            r.push_back(static_cast<float>(circle.r));
            colour += static_cast<char>(m_scene.colour[i]);
            if (i == 0) continue;
            const auto all = m_file.owners(cluster.item);
            if (all.size() < 2) continue;
            for (const auto& owner : all) {
                sharers.push_back(i);
                owners.push_back(nest().numbers[owner.item - m_file.nodes()]);
                shares.push_back(static_cast<float>(owner.share));
            }
        }
        m_sections.addNumbers("cluster.id", id);
        m_sections.addNumbers("cluster.parent", parent);
        m_sections.addNumbers("cluster.level", level);
        m_sections.addNumbers("cluster.own", own);
        m_sections.addNumbers("cluster.members", members);
        m_sections.addFloats("cluster.size", size);
        m_sections.addFloats("cluster.x", x);
        m_sections.addFloats("cluster.y", y);
        m_sections.addFloats("cluster.r", r);
        m_sections.addBytes("cluster.colour", colour);
        m_sections.addNumbers("shared.cluster", sharers);
        m_sections.addNumbers("shared.owner", owners);
        m_sections.addFloats("shared.share", shares);
    }

    /// Nodes are numbered in the order of their first places.
    void addPlaces() {
        m_numbers.assign(m_network.size(), NONE);
        std::vector<std::uint32_t> nodes;
        std::vector<float> share;
        std::vector<std::uint16_t> x, y;
        for (Number i = 0; i < nest().node.size(); ++i) {
            Number& number = m_numbers[nest().node[i]];
            if (number == NONE) {
                number = static_cast<Number>(m_order.size());
                m_order.push_back(nest().node[i]);
            }
            nodes.push_back(number);
            share.push_back(static_cast<float>(nest().share[i]));
            const Circle& circle = m_scene.map.clusters[nest().clusterOf[i]];
            x.push_back(step((m_scene.map.x[i] - circle.x) / circle.r));
            y.push_back(step((m_scene.map.y[i] - circle.y) / circle.r));
        }
        m_sections.addFloats("place.unit", {static_cast<float>(m_scene.map.unit)});
        m_sections.addNumbers("place.node", nodes);
        m_sections.addFloats("place.share", share);
        m_sections.addShorts("place.x", x);
        m_sections.addShorts("place.y", y);
    }

    void addNodes() {
        std::vector<std::uint32_t> id, degree;
        std::vector<float> weight;
        std::string names;
        for (const Id node : m_order) {
            id.push_back(m_network.ids[node]);
            degree.push_back(static_cast<std::uint32_t>(m_network.degree(node)));
            double sum = m_network.self[node];
            for (Size i = m_network.begin[node]; i < m_network.begin[node + 1]; ++i)
                sum += static_cast<double>(m_network.weight[i]);
            weight.push_back(static_cast<float>(sum));
            if (!m_options.labels) continue;
            if (m_options.labels->has(id.back())) names += m_options.labels->text(id.back());
            names += '\0';
        }
        m_sections.addNumbers("node.id", id);
        m_sections.addNumbers("node.degree", degree);
        if (m_options.weighted) m_sections.addFloats("node.weight", weight);
        if (m_options.labels) m_sections.addBytes("node.names", names);
        m_sections.addBytes("title", m_options.title);
    }

    void addPieces() {
        std::vector<std::uint32_t> clusters, links, drawn, counts, ends, a, b;
        std::vector<std::uint16_t> x, y;
        std::vector<float> weight, bundled;
        for (const Piece& piece :
             pieces(m_network, nest(), m_scene.map, m_scene.base, m_options.threads)) {
            clusters.push_back(piece.cluster);
            links.push_back(static_cast<std::uint32_t>(piece.links));
            drawn.push_back(static_cast<std::uint32_t>(piece.drawing.links.size()));
            for (std::size_t i = 0; i < piece.nodes.size(); ++i) {
                x.push_back(step(piece.drawing.x[i]));
                y.push_back(step(piece.drawing.y[i]));
            }
            // Of each node the number of its links to later ones, and their other ends.
            std::size_t at = 0;
            for (std::uint32_t i = 0; i < piece.nodes.size(); ++i) {
                const std::size_t first = at;
                for (; at < piece.drawing.links.size() && piece.drawing.links[at].a == i; ++at) {
                    ends.push_back(piece.drawing.links[at].b);
                    weight.push_back(piece.drawing.links[at].weight);
                }
                counts.push_back(static_cast<std::uint32_t>(at - first));
            }
        }
        m_sections.addNumbers("piece.cluster", clusters);
        m_sections.addNumbers("piece.links", links);
        m_sections.addNumbers("piece.drawn", drawn);
        m_sections.addShorts("piece.x", x);
        m_sections.addShorts("piece.y", y);
        m_sections.addNumbers("piece.counts", counts);
        m_sections.addNumbers("piece.ends", ends);
        if (m_options.weighted) m_sections.addFloats("piece.weight", weight);
        for (const Bundle& bundle : bundles(m_network, nest())) {
            a.push_back(bundle.a);
            b.push_back(bundle.b);
            bundled.push_back(static_cast<float>(bundle.weight));
        }
        m_sections.addNumbers("bundle.a", a);
        m_sections.addNumbers("bundle.b", b);
        m_sections.addFloats("bundle.weight", bundled);
    }

    const FlatNetwork& m_network;
    const ViewOptions& m_options;
    Scene m_scene;
    const HierarchyFile& m_file = m_scene.file;
    Sections m_sections;
    std::vector<Number> m_numbers;
    std::vector<Id> m_order;
};

/// The data with the word for how they are packed.
std::pair<std::string, const char*> packedData(std::string data) {
    try {
        return {packed(data, "data.gz"), "gzip"};
    } catch (const InputError&) {
        return {std::move(data), "none"};
    }
}

}  // namespace

}  // namespace vorl::view

namespace vorl {

std::string viewPage(const FlatNetwork& network, const HierarchyFile& hierarchy,
                     const ViewOptions& options) {
    const auto [data, packing] = view::packedData(view::Writer(network, hierarchy, options).data());
    std::string_view rest = view::asset();
    std::string page;
    const auto fillIn = [&](std::string_view mark, const std::string& text) {
        const std::size_t at = rest.find(mark);
        if (at == std::string_view::npos) throw std::logic_error("viewPage(), no place for data\n");
        page += rest.substr(0, at);
        page += text;
        rest.remove_prefix(at + mark.size());
    };
    fillIn("{{title}}", view::escaped(options.title));
    fillIn("{{packing}}", packing);
    fillIn("{{data}}", view::base64(data));
    return page += rest;
}

}  // namespace vorl
