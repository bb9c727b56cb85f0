// The map as a picture for papers.
#include "scene.hpp"

#include <vorl/types/plain_text.hpp>

#include <algorithm>
#include <cmath>

namespace vorl::view {

namespace {

constexpr double HALF = 500;  // of the picture's side
constexpr std::size_t DOTS = 50000;

class Svg {
public:
    Svg(const FlatNetwork& network, const HierarchyFile& file, const ViewOptions& options)
        : m_network(network), m_options(options), m_scene(network, file, options) {}

    std::string text() {
        const std::string side = std::to_string(static_cast<int>(2 * HALF));
        m_text =
            "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + side + " " + side +
            "\" font-family=\"Helvetica, Arial, sans-serif\" text-anchor=\"middle\">\n<title>" +
            escaped(m_options.title) + "</title>\n";
        for (Number i = 0; i < m_scene.nest.clusters.size(); ++i) addCluster(i);
        if (m_scene.nest.node.size() <= DOTS) {
            for (Number i = 0; i < m_scene.nest.node.size(); ++i) addDot(i);
            for (Number i = 0; i < m_scene.nest.node.size(); ++i) addName(i);
        }
        for (Number i = 1; i < m_scene.nest.clusters.size(); ++i)
            if (m_scene.base[i] == i) addLabel(i);
        return m_text + "</svg>\n";
    }

private:
    static std::string at(double value) { return format("%.2f", HALF * (value * 0.99 + 1)); }
    static std::string length(double value) { return format("%.2f", HALF * 0.99 * value); }

    const char* colour(Number cluster) const {
        const std::uint8_t own = m_scene.colour[cluster];
        return own == GREY ? NEUTRAL.light : PALETTE[own].light;
    }

    void addCircle(double x, double y, double r, const std::string& attributes) {
        m_text += "<circle cx=\"" + at(x) + "\" cy=\"" + at(y) + "\" r=\"" + length(r) + "\" " +
                  attributes + "/>\n";
    }

    void addCluster(Number cluster) {
        const Circle& circle = m_scene.map.clusters[cluster];
        if (circle.r * HALF < 0.3) return;
        const bool above = m_scene.base[cluster] == NONE;
        const bool grey = above || m_scene.colour[cluster] == GREY;
        const std::string tone = grey ? NEUTRAL.light : colour(cluster);
        addCircle(circle.x, circle.y, circle.r,
                  "fill=\"" + tone + "\" fill-opacity=\"" +
                      (above                              ? "0.08"
                       : m_scene.base[cluster] == cluster ? "0.2"
                                                          : "0.12") +
                      "\" stroke=\"" + tone + "\" stroke-opacity=\"0.7\" stroke-width=\"" +
                      (m_scene.base[cluster] == cluster ? "1.2" : "0.6") + "\"");
    }

    double radius(Number place) const {
        return m_scene.map.unit * std::sqrt(m_scene.nest.share[place]);
    }

    void addDot(Number place) {
        const bool shared = m_scene.nest.share[place] < 1;
        const Number cluster = m_scene.nest.clusterOf[place];
        addCircle(m_scene.map.x[place], m_scene.map.y[place], radius(place),
                  std::string("fill=\"") + colour(cluster) + "\"" +
                      (shared ? " stroke=\"#222222\" stroke-width=\"0.8\"" : ""));
    }

    /// A text that fits into a circle, if it is large enough to be read.
    void addText(double x, double y, double r, const std::string& text, double largest,
                 const char* style) {
        const double wide = std::max(1., static_cast<double>(characters(text)) * 0.58);
        const double size = std::min(largest, 2 * 0.88 * r * HALF / std::max(wide, 1.5));
        if (size < 4) return;
        m_text += "<text x=\"" + at(x) + "\" y=\"" +
                  format("%.2f", HALF * (y * 0.99 + 1) + size * 0.35) + "\" font-size=\"" +
                  format("%.1f", size) + "\" " + style + ">" + escaped(text) + "</text>\n";
    }

    static std::size_t characters(const std::string& text) {
        return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
            return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
        }));
    }

    void addName(Number place) {
        const Id id = m_network.ids[m_scene.nest.node[place]];
        addText(m_scene.map.x[place], m_scene.map.y[place], radius(place),
                naming::plain(id, m_options.labels.get()), 14, "fill=\"#ffffff\"");
    }

    void addLabel(Number cluster) {
        const Circle& circle = m_scene.map.clusters[cluster];
        if (m_scene.nest.size(cluster) < 2) return;
        const std::string id = std::to_string(m_file.id(m_scene.nest.clusters[cluster].item));
        addText(circle.x, circle.y - circle.r * 0.86, circle.r / 3, id, 18,
                "font-weight=\"bold\" fill=\"#222222\" stroke=\"#ffffff\" stroke-width=\"3\" "
                "paint-order=\"stroke\"");
    }

    const FlatNetwork& m_network;
    const ViewOptions& m_options;
    Scene m_scene;
    const HierarchyFile& m_file = m_scene.file;
    std::string m_text;
};

}  // namespace

}  // namespace vorl::view

namespace vorl {

std::string viewSvg(const FlatNetwork& network, const HierarchyFile& hierarchy,
                    const ViewOptions& options) {
    return view::Svg(network, hierarchy, options).text();
}

}  // namespace vorl
