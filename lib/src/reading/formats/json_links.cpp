// The reader of JSON documents with lists of nodes and links.
#include "../json_text.hpp"
#include "keyed_nodes.hpp"

namespace vorl::detail {

namespace {

class JsonReader : public NetworkReader {
public:
    JsonReader(Lines& lines, const ScanOptions& options, NodeNames& nodes, const LinkVisitor& visit)
        : NetworkReader(lines, options, nodes, visit),
          m_text(lines, m_line),
          m_keyed(nodes),
          m_arcs(options.directed.value_or(false)) {}

protected:
    void readAll() override {
        if (m_text.peek() == '\0' && m_lines.bytes() == 0) return;
        if (m_text.peek() != '{') throw fault("found " + m_text.shown() + ", \"{\" is expected");
        m_text.readObject([this](const std::string& key) { readTop(key); });
        if (m_text.peek() != '\0') throw fault("found " + m_text.shown() + " behind the document");
        if (!m_links)
            throw fault("the document has no \"links\" or \"edges\", but " +
                        (m_others.empty() ? "no keys" : m_others));
        m_facts.toldDirected = m_arcs;
    }

private:
    /// Keeps the first keys of the document, for a message.
    void keep(const std::string& key) {
        if (m_keys++ < 8)
            m_others += (m_others.empty() ? "" : ", ") + quoted(key);
        else if (m_keys == 9)
            m_others += ", ...";
    }

    void readTop(const std::string& key) {
        keep(key);
        if (key == "directed") {
            const std::string word = m_text.readScalar();
            if (word != "true" && word != "false")
                throw fault("directed", word, "true or false is expected");
            if (m_links && !m_options.directed && word == "true")
                throw fault("\"directed\" stands behind the links, it is expected before them");
            m_arcs = m_options.directed.value_or(word == "true");
        } else if (key == "nodes") {
            if (m_links) throw fault("the nodes stand behind the links, they are expected before");
            m_listed = true;
            m_text.readArray([this] { readNode(); });
        } else if (key == "links" || key == "edges") {
            m_links = true;
            m_text.readArray([this] { readLink(); });
        } else {
            m_text.skip();
        }
    }

    void readNode() {
        const std::string place = std::to_string(m_count++);
        std::optional<std::string> id;
        std::optional<std::string> name;
        if (m_text.peek() == '{')
            m_text.readObject([&](const std::string& key) {
                const bool named = key == "name" || key == "label";
                if (m_text.peek() == '{' || m_text.peek() == '[' || !(key == "id" || named))
                    return m_text.skip();
                (named ? name : id) = m_text.readScalar();
            });
        else
            id = m_text.readScalar();
        const auto faults = [this](const std::string& what) { return fault(what); };
        // Nodes without ids are called by their places.
        m_byPlace = m_byPlace || (!id && m_count == 1);
        if (m_byPlace == id.has_value())
            throw fault("some nodes have an id, and others don't, all or none are expected");
        const std::string& own = id ? *id : name && !name->empty() ? *name : place;
        m_keyed.add(m_byPlace ? place : *id, own, faults);
    }

    void readLink() {
        std::optional<std::string> src;
        std::optional<std::string> dst;
        std::optional<std::string> weight;
        const std::size_t begin = m_line;
        m_text.readObject([&](const std::string& key) {
            std::optional<std::string>* const value = key == "source"   ? &src
                                                      : key == "target" ? &dst
                                                      : isWeight(lowered(key), weight.has_value())
                                                          ? &weight
                                                          : nullptr;
            if (!value || m_text.peek() == '[') return m_text.skip();
            if (m_text.peek() == '{' && value != &weight) return readEnd(*value);
            *value = m_text.readScalar();
        });
        if (!src || !dst) {
            m_line = begin;
            throw fault(std::string("the link has no ") + (src ? "target" : "source"));
        }
        const auto faults = [this](const std::string& what) { return fault(what); };
        const LinkWeight value =
            weight && *weight != "null" && m_readWeights ? takeWeight(*weight) : LinkWeight{1};
        if (!m_listed) return addNamedLink(*src, *dst, value, m_arcs);
        const Id source = m_keyed.find(*src, "source", faults);
        addLink(source, m_keyed.find(*dst, "target", faults), value, m_arcs);
    }

    /// An end of a link that is told as the whole node.
    void readEnd(std::optional<std::string>& end) {
        m_text.readObject([&](const std::string& key) {
            if (key == "id" && m_text.peek() != '{' && m_text.peek() != '[')
                end = m_text.readScalar();
            else
                m_text.skip();
        });
    }

    JsonText m_text;
    KeyedNodes m_keyed;
    bool m_arcs;
    bool m_listed = false;   // there is a list of nodes
    bool m_links = false;    // the links have begun
    bool m_byPlace = false;  // links call nodes by their places
    Size m_count = 0;        // of the nodes
    std::string m_others;    // keys of the document
    Size m_keys = 0;         // their number
};

}  // namespace

std::unique_ptr<NetworkReader> jsonReader(Lines& lines, const ScanOptions& options,
                                          NodeNames& nodes, const LinkVisitor& visit) {
    return std::make_unique<JsonReader>(lines, options, nodes, visit);
}

}  // namespace vorl::detail
