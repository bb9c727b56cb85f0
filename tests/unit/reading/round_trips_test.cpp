// Random networks with odd names, weights and isolated nodes through all formats, whole, in other
// clothes, and cut short.
#include "support/networks.hpp"
#include "support/scanned_network.hpp"

#include <vorl/types/characters.hpp>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>

namespace vorl::test {
namespace {

using Link = ScannedNetwork::Link;

/// A network by the names of its nodes, apart from all that the library holds of it.
struct Model {
    std::vector<std::string> names;
    std::vector<Link> links;  // source, destination, weight, arc
    bool directed = false;
    bool weighted = false;
};

std::string randomName(Random& rnd) {
    static constexpr std::array PIECES{"a",
                                       "B",
                                       "7",
                                       "0",
                                       "-3",
                                       "1e5",
                                       ".",
                                       "e",
                                       "\"",
                                       "'",
                                       "\\",
                                       " ",
                                       "  ",
                                       ",",
                                       ";",
                                       ":",
                                       ">",
                                       "#",
                                       "%",
                                       "*",
                                       "//",
                                       "{",
                                       "}",
                                       "[",
                                       "]",
                                       "&",
                                       "&#34;",
                                       "&amp;",
                                       "<",
                                       "=",
                                       "\xC3\xA4",
                                       "\xE2\x82\xAC",
                                       "\xF0\x9F\x98\x80",
                                       "\t",
                                       "node",
                                       "weight",
                                       "source",
                                       "null",
                                       "true",
                                       "\xEF\xBB\xBF"};
    std::string name;
    do name += PIECES[rnd.below(PIECES.size())];
    while (rnd.chance(0.6));
    return name;
}

/// @param named   with names, else with numbers from 1 on
/// @param whole   with whole numbers for weights
Model randomModel(Random& rnd, bool named, bool directed, bool mixed, bool whole) {
    Model model;
    model.weighted = rnd.chance(0.7);
    model.directed = directed;
    std::set<std::string> seen;
    const Id nodes = 2 + rnd.below(9);
    while (model.names.size() < nodes) {
        std::string name = std::to_string(model.names.size() + 1);
        if (named && rnd.chance(0.8)) name = randomName(rnd);
        if (seen.insert(name).second) model.names.push_back(name);
    }
    const Id linked = rnd.chance(0.5) ? nodes : 1 + rnd.below(nodes);
    std::set<std::pair<Id, Id>> pairs;
    for (Id i = 0; i < 1 + rnd.below(20); ++i) {
        const Id src = rnd.below(linked);
        const Id dst = rnd.below(linked);
        if (!pairs.insert(std::minmax(src, dst)).second || (whole && src == dst)) continue;
        LinkWeight weight = 1;
        if (model.weighted && whole) weight = static_cast<float>(1 + rnd.below(1u << 24));
        if (model.weighted && !whole)
            weight = std::ldexp(1 + static_cast<float>(rnd.below(1u << 23)) * 0x1p-23f,
                                static_cast<int>(rnd.below(240)) - 120);
        const bool arc = directed && !(mixed && rnd.chance(0.4));
        model.links.emplace_back(model.names[src], model.names[dst], weight, arc);
    }
    if (model.links.empty())
        model.links.emplace_back(model.names[0], model.names[1], 1.f, directed);
    return model;
}

/// The model in Pajek, the one format that holds whatever a model may have.
std::string pajekOf(const Model& model) {
    std::string text = "*Vertices " + std::to_string(model.names.size()) + "\n";
    std::map<std::string, std::size_t> places;
    for (const std::string& name : model.names) {
        text += std::to_string(places.emplace(name, places.size() + 1).first->second) + " \"";
        for (const char c : name)
            text += c == '"' || c == '&' ? "&#" + std::to_string(int{c}) + ";" : std::string(1, c);
        text += "\"\n";
    }
    for (const auto& [src, dst, weight, arc] : model.links) {
        char digits[32] = "";
        if (model.weighted)
            std::snprintf(digits, sizeof digits, " %.9g", static_cast<double>(weight));
        text += (arc ? "*Arcs\n" : "*Edges\n") + std::to_string(places[src]) + " " +
                std::to_string(places[dst]) + digits + "\n";
    }
    return text;
}

/// The links of a model as a format gives them back.
std::vector<Link> expectedLinks(const Model& model, NetworkFormat format) {
    std::vector<Link> links;
    const bool mixed = format == NetworkFormat::RCG || format == NetworkFormat::PAJEK ||
                       format == NetworkFormat::GRAPHML;
    const bool directed =
        format == NetworkFormat::NSA || std::any_of(model.links.begin(), model.links.end(),
                                                    [](const Link& ln) { return std::get<3>(ln); });
    for (const auto& [src, dst, weight, arc] : model.links) {
        if (arc || (directed && !mixed)) {
            links.emplace_back(src, dst, weight, true);
            if (!arc && src != dst) links.emplace_back(dst, src, weight, true);
        } else {
            links.emplace_back(std::min(src, dst), std::max(src, dst), weight, false);
        }
    }
    std::sort(links.begin(), links.end());
    return links;
}

/// Whether a format can hold a model, by what the documents tell of it.
bool holds(NetworkFormat format, const Model& model, bool named) {
    bool alone = false;
    for (const std::string& name : model.names)
        alone = alone || std::none_of(model.links.begin(), model.links.end(), [&](const Link& ln) {
                    return std::get<0>(ln) == name || std::get<1>(ln) == name;
                });
    bool arcs = false;
    bool selfs = false;
    for (const auto& [src, dst, weight, arc] : model.links) {
        arcs = arcs || arc;
        selfs = selfs || src == dst;
    }
    switch (format) {
        case NetworkFormat::NSE: return !named && !alone && !arcs;
        case NetworkFormat::NSA: return !named && !alone;
        case NetworkFormat::LIST: return !alone;
        case NetworkFormat::RCG:
        case NetworkFormat::MATRIX_MARKET: return !named;
        case NetworkFormat::METIS: return !named && !arcs && !selfs;
        default: return true;
    }
}

ScanOptions optionsFor(NetworkFormat format, const ScannedNetwork& network) {
    ScanOptions options{.format = format};
    if (format == NetworkFormat::LIST || format == NetworkFormat::MATRIX_MARKET)
        options.directed = network.table.facts.directed();
    return options;
}

void expectModel(const ScannedNetwork& read, const Model& model, NetworkFormat format,
                 const std::string& text) {
    const bool mixed = format == NetworkFormat::RCG || format == NetworkFormat::PAJEK ||
                       format == NetworkFormat::GRAPHML;
    std::vector<std::string> names = model.names;
    std::sort(names.begin(), names.end());
    EXPECT_EQ(read.named(mixed), expectedLinks(model, format)) << nameOf(format) << "\n" << text;
    EXPECT_EQ(read.names(false), names) << nameOf(format) << "\n" << text;
}

/// As other systems may write the same lines.
std::vector<std::string> otherClothes(const std::string& text, NetworkFormat format) {
    std::string crlf;
    for (const char c : text) crlf += c == '\n' ? "\r\n" : std::string(1, c);
    std::vector<std::string> all{crlf, "\xEF\xBB\xBF" + text};
    // In METIS an empty line is that of a node.
    if (format != NetworkFormat::METIS) {
        all.push_back(text.substr(0, text.size() - 1));
        all.push_back(text + "\n \t\n");
    }
    return all;
}

TEST(RoundTrips, AnyNetworkComesBackFromEachFormatThatHoldsIt) {
    Random rnd(11);
    std::map<NetworkFormat, int> held;
    for (int round = 0; round < 240; ++round) {
        const bool named = round % 2;
        const bool directed = round / 2 % 2;
        const bool whole = !named && round % 8 == 0;
        const Model model = randomModel(rnd, named, directed, round % 12 < 6, whole);
        const std::string first = pajekOf(model);
        const ScannedNetwork network(first, {.format = NetworkFormat::PAJEK});
        expectModel(network, model, NetworkFormat::PAJEK, first);
        const bool labelled = network.table.labels != nullptr;
        for (const auto& [word, format] : networkFormats()) {
            const bool metisWeights = format == NetworkFormat::METIS && model.weighted && !whole;
            const std::string obstacleText = obstacle(format, network.table);
            // Some of the names are numbers.
            if (!metisWeights && labelled == named) {
                const bool can = holds(format, model, labelled);
                EXPECT_EQ(obstacleText.empty(), can) << word << ": " << obstacleText << "\n"
                                                     << first;
            }
            if (!obstacleText.empty()) continue;
            ++held[format];
            const std::string text = networkText(format, network.table);
            const ScanOptions options = optionsFor(format, network);
            expectModel(ScannedNetwork(text, options), model, format, text);
            for (const std::string& other : otherClothes(text, format))
                expectModel(ScannedNetwork(other, options), model, format, other);
            if (HasFailure()) return;
        }
    }
    for (const auto& [word, format] : networkFormats()) EXPECT_GT(held[format], 10) << word;
}

TEST(RoundTrips, SeparatorsOfListsAreToldFromNames) {
    Random rnd(13);
    for (int round = 0; round < 100; ++round) {
        Model model = randomModel(rnd, true, round % 2, false, false);
        const ScannedNetwork network(pajekOf(model), {.format = NetworkFormat::PAJEK});
        if (!obstacle(NetworkFormat::LIST, network.table).empty()) continue;
        for (const char separator : {'\t', ',', ';', ' '}) {
            const std::string text = networkText(NetworkFormat::LIST, network.table, separator);
            expectModel(ScannedNetwork(text, optionsFor(NetworkFormat::LIST, network)), model,
                        NetworkFormat::LIST, text);
        }
        if (HasFailure()) return;
    }
}

TEST(RoundTrips, NoCutOfADocumentGoesUnnoticed) {
    Random rnd(17);
    for (int round = 0; round < 8; ++round) {
        const bool named = round % 2;
        const Model model = randomModel(rnd, named, round % 3 == 0, false, true);
        const ScannedNetwork network(pajekOf(model), {.format = NetworkFormat::PAJEK});
        for (const NetworkFormat format :
             {NetworkFormat::JSON, NetworkFormat::GML, NetworkFormat::GRAPHML, NetworkFormat::METIS,
              NetworkFormat::MATRIX_MARKET}) {
            if (!obstacle(format, network.table).empty()) continue;
            const std::string text = networkText(format, network.table);
            // The last number of a matrix may have lost digits without a trace, and the end of the
            // last line is no matter.
            std::size_t end = text.size() - 1;
            if (format == NetworkFormat::MATRIX_MARKET) end = text.find_last_of(" \n", end - 1) + 1;
            if (format == NetworkFormat::METIS && text[end - 1] == '\n') ++end;
            for (std::size_t size = 0; size < end; ++size)
                EXPECT_THROW(
                    ScannedNetwork(text.substr(0, size), {.format = format, .mayLackLinks = true}),
                    InputError)
                    << nameOf(format) << " " << size << "\n"
                    << text;
            if (HasFailure()) return;
        }
    }
}

/// Gives few bytes at a time.
class Trickle : public Source {
public:
    Trickle(std::string_view text, std::uint64_t seed) : m_rest(text), m_random(seed) {}

    std::size_t read(char* data, std::size_t most) override {
        const std::size_t count =
            m_rest.substr(0, std::min<std::size_t>(most, 1 + m_random.below(5))).copy(data, most);
        m_rest.remove_prefix(count);
        return count;
    }

private:
    std::string_view m_rest;
    Random m_random;
};

TEST(RoundTrips, PiecesOfAnInputAreNoMatter) {
    const auto tell = [](Source& source, const ScanOptions& options) {
        std::string told;
        NodeNames nodes;
        try {
            const NetworkFacts facts =
                scanNetwork(source, "f", options, nodes, [&](const RawLink& ln) {
                    told += std::to_string(ln.src) + ">" + std::to_string(ln.dst) + ":" +
                            std::to_string(ln.weight) + (ln.arc ? "a " : "e ");
                });
            told += nameOf(facts.format) + facts.dialect;
        } catch (const InputError& err) {
            told += err.what();
        }
        return told;
    };
    Random rnd(19);
    for (int round = 0; round < 30; ++round) {
        const Model model = randomModel(rnd, round % 2, round % 3 == 0, false, round % 4 == 0);
        const ScannedNetwork network(pajekOf(model), {.format = NetworkFormat::PAJEK});
        for (const auto& [word, format] : networkFormats()) {
            if (!obstacle(format, network.table).empty()) continue;
            std::string text = networkText(format, network.table);
            // Also with a fault somewhere, and with the format left to the first lines.
            if (rnd.chance(0.5)) text[rnd.below(static_cast<Id>(text.size()))] = '"';
            for (const NetworkFormat given : {format, NetworkFormat::UNKNOWN}) {
                TextSource whole(text);
                Trickle pieces(text, rnd.below(1000));
                EXPECT_EQ(tell(pieces, {.format = given}), tell(whole, {.format = given})) << text;
            }
        }
    }
}

}  // namespace
}  // namespace vorl::test
