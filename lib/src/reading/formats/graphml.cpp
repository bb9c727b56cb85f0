// The reader of the format GraphML: XML with nodes, edges and data of both, parsed as it comes.
#include "../system_library.hpp"
#include "keyed_nodes.hpp"

#if __has_include(<expat.h>)
#include <expat.h>
#endif

#include <exception>
#include <limits>
#include <new>
#include <unordered_map>
#include <vector>

namespace vorl::detail {

#ifdef XML_MAJOR_VERSION
namespace {

struct Expat {
    SystemLibrary library{"libexpat.so.1"};
    decltype(XML_ParserCreate)* create =
        library.function<decltype(XML_ParserCreate)>("XML_ParserCreate");
    decltype(XML_ParserFree)* end = library.function<decltype(XML_ParserFree)>("XML_ParserFree");
    decltype(XML_Parse)* parse = library.function<decltype(XML_Parse)>("XML_Parse");
    decltype(XML_StopParser)* stop = library.function<decltype(XML_StopParser)>("XML_StopParser");
    decltype(XML_SetUserData)* setData =
        library.function<decltype(XML_SetUserData)>("XML_SetUserData");
    decltype(XML_SetElementHandler)* onElement =
        library.function<decltype(XML_SetElementHandler)>("XML_SetElementHandler");
    decltype(XML_SetCharacterDataHandler)* onText =
        library.function<decltype(XML_SetCharacterDataHandler)>("XML_SetCharacterDataHandler");
    decltype(XML_SetEntityDeclHandler)* onEntity =
        library.function<decltype(XML_SetEntityDeclHandler)>("XML_SetEntityDeclHandler");
    decltype(XML_SetSkippedEntityHandler)* onSkipped =
        library.function<decltype(XML_SetSkippedEntityHandler)>("XML_SetSkippedEntityHandler");
    decltype(XML_GetCurrentLineNumber)* line =
        library.function<decltype(XML_GetCurrentLineNumber)>("XML_GetCurrentLineNumber");
    decltype(XML_GetCurrentByteIndex)* place =
        library.function<decltype(XML_GetCurrentByteIndex)>("XML_GetCurrentByteIndex");
    decltype(XML_GetErrorCode)* error =
        library.function<decltype(XML_GetErrorCode)>("XML_GetErrorCode");
    decltype(XML_ErrorString)* text =
        library.function<decltype(XML_ErrorString)>("XML_ErrorString");
};

bool isSpace(char c) { return isBlank(c) || c == '\n' || c == '\r'; }

/// The text with blanks for ends of lines.
std::string inOneLine(std::string text) {
    for (char& c : text)
        if (c == '\n') c = ' ';
    return text;
}

/// The same without blanks around it.
std::string trimmedLine(std::string_view text) {
    while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    return inOneLine(std::string(text));
}

class GraphmlReader : public NetworkReader {
public:
    GraphmlReader(Lines& lines, const ScanOptions& options, NodeNames& nodes,
                  const LinkVisitor& visit)
        : NetworkReader(lines, options, nodes, visit),
          m_expat(loadedFor<Expat>(lines.name(), "GraphML", "read")),
          m_parser(m_expat.create(nullptr), m_expat.end),
          m_keyed(nodes) {
        if (!m_parser) throw std::bad_alloc();
        m_expat.setData(m_parser.get(), this);
        m_expat.onElement(m_parser.get(), &GraphmlReader::startElement, &GraphmlReader::endElement);
        m_expat.onText(m_parser.get(), &GraphmlReader::takeText);
        m_expat.onEntity(m_parser.get(), &GraphmlReader::refuseEntity);
        m_expat.onSkipped(m_parser.get(), &GraphmlReader::refuseSkipped);
    }

protected:
    void readAll() override {
        // What isn't at its end is gone through again with each piece.
        constexpr std::size_t longest = std::size_t{1} << 24;
        constexpr std::size_t piece = std::size_t{1} << 18;
        std::size_t given = 0;
        std::size_t done = 0;
        for (std::string_view text = m_lines.nextPiece(); !text.empty();
             text = m_lines.nextPiece()) {
            for (; !text.empty(); text.remove_prefix(std::min(piece, text.size()))) {
                parse(text.substr(0, piece), false);
                given += std::min(piece, text.size());
                // Newer versions of the parser wait for more, and tell no place meanwhile.
                if (const auto place = m_expat.place(m_parser.get()); place > 0)
                    done = std::min(static_cast<std::size_t>(place), given);
                if (given - done > longest)
                    throw fault("a tag or a comment has more than " + bytes(longest) +
                                ", which is too much");
            }
        }
        if (given != 0) parse({}, true);
    }

private:
    enum Element { GRAPHML, KEY, DEFAULT, GRAPH, NODE, EDGE, DATA, OTHER };

    /// What a key of data stands for.
    struct Key {
        std::string name;  // in small letters
        bool forNodes = true;
        bool forEdges = true;
    };
    /// What is told of a node or an edge.
    struct Values {
        std::optional<std::string> id;    // of an edge: source
        std::optional<std::string> name;  // of an edge: target
        std::optional<std::string> weight;
        bool arc = false;
        std::size_t line = 0;
    };

    void parse(std::string_view text, bool last) {
        const XML_Status status =
            m_expat.parse(m_parser.get(), text.data(), static_cast<int>(text.size()), last);
        if (m_error) std::rethrow_exception(m_error);
        m_line = m_expat.line(m_parser.get());
        if (status == XML_STATUS_OK) return;
        const XML_Error error = m_expat.error(m_parser.get());
        if (error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
        throw fault(std::string("the document isn't XML: ") + m_expat.text(error));
    }

    /// Calls a function for the parser, through which nothing may be thrown.
    template <class FunctionT>
    static void guarded(void* self, FunctionT function) {
        auto& reader = *static_cast<GraphmlReader*>(self);
        if (reader.m_error) return;
        try {
            function(reader);
        } catch (...) {
            reader.m_error = std::current_exception();
            reader.m_expat.stop(reader.m_parser.get(), XML_FALSE);
        }
    }

    static void XMLCALL startElement(void* self, const XML_Char* name, const XML_Char** values) {
        guarded(self, [=](GraphmlReader& reader) { reader.open(name, values); });
    }
    static void XMLCALL endElement(void* self, const XML_Char*) {
        guarded(self, [](GraphmlReader& reader) { reader.close(); });
    }
    static void XMLCALL takeText(void* self, const XML_Char* text, int length) {
        guarded(self, [=](GraphmlReader& reader) {
            if (reader.isIn(DATA) || reader.isIn(DEFAULT))
                appendBounded(reader.m_text, {text, static_cast<std::size_t>(length)});
        });
    }
    // Entities can stand for whole files, and for texts without bounds.
    static void XMLCALL refuseEntity(void* self, const XML_Char* name, int, const XML_Char*, int,
                                     const XML_Char*, const XML_Char*, const XML_Char*,
                                     const XML_Char*) {
        guarded(self, [=](GraphmlReader& reader) {
            reader.seeLine();
            throw reader.fault("the document declares the entity " + quoted(name) +
                               ", none is expected");
        });
    }
    static void XMLCALL refuseSkipped(void* self, const XML_Char* name, int) {
        guarded(self, [=](GraphmlReader& reader) {
            reader.seeLine();
            throw reader.fault("the entity " + quoted(name) + " isn't declared here");
        });
    }

    void seeLine() { m_line = m_expat.line(m_parser.get()); }
    bool isIn(Element element) const { return !m_open.empty() && m_open.back() == element; }

    void open(std::string_view name, const XML_Char** values) {
        constexpr std::size_t most = 1000;
        if (m_open.size() >= most) throw fault("more than 1,000 elements lie inside each other");
        // A name may have that of its name space in front.
        name.remove_prefix(name.rfind(':') + 1);
        const Element element = elementOf(name);
        if (element != OTHER && element != DEFAULT && element != DATA) seeLine();
        m_open.push_back(element);
        const auto value = [values](std::string_view key) -> std::optional<std::string> {
            for (std::size_t i = 0; values[i]; i += 2)
                if (values[i] == key) return values[i + 1];
            return std::nullopt;
        };
        switch (element) {
            case KEY: addKey(value("id"), value("attr.name"), value("for").value_or("all")); break;
            case GRAPH: openGraph(value("edgedefault")); break;
            case NODE:
                m_values = {};
                m_values.id = value("id");
                m_values.line = m_line;
                break;
            case EDGE:
                m_values = {value("source"), value("target"), {}, isArc(value("directed")), m_line};
                break;
            case DATA:
            case DEFAULT:
                m_text.clear();
                if (element == DATA) m_key = value("key").value_or("");
                break;
            case GRAPHML:
            case OTHER: break;
        }
    }

    Element elementOf(std::string_view name) {
        if (m_open.empty()) {
            seeLine();
            if (name != "graphml")
                throw fault("the document is one of " + quoted(name) +
                            ", one of \"graphml\" is expected");
            return GRAPHML;
        }
        const Element parent = m_open.back();
        if (parent == GRAPHML && name == "key") return KEY;
        if (parent == KEY && name == "default") return DEFAULT;
        if ((parent == GRAPHML || parent == NODE) && name == "graph") return GRAPH;
        if (parent == GRAPH && name == "node") return NODE;
        if (parent == GRAPH && name == "edge") return EDGE;
        if ((parent == NODE || parent == EDGE) && name == "data") return DATA;
        if (parent == GRAPH && name == "hyperedge") {
            seeLine();
            throw fault("found a hyperedge, an edge of two ends is expected");
        }
        return OTHER;
    }

    void addKey(const std::optional<std::string>& id, const std::optional<std::string>& name,
                const std::string& of) {
        if (!id) throw fault("the key has no id");
        m_key = *id;
        m_keys[*id] = {lowered(name.value_or(*id)), of == "node" || of == "all",
                       of == "edge" || of == "all"};
    }

    void openGraph(const std::optional<std::string>& direction) {
        if (m_open.size() == 2) {
            if (std::exchange(m_graph, true))
                throw fault("a second graph begins, a file of one is expected");
            if (!m_options.weightName.empty()) requireWeight();
        } else if (m_values.line != 0) {
            addNode();  // with a graph inside it
        }
        if (direction && *direction != "directed" && *direction != "undirected")
            throw fault("edgedefault", *direction, "directed or undirected is expected");
        m_directed = m_options.directed.value_or(direction == "directed");
        m_facts.toldDirected = m_facts.toldDirected || m_directed;
        m_defaults.push_back(m_directed);
    }

    void requireWeight() const {
        for (const auto& [id, key] : m_keys)
            if (key.forEdges && isWeight(key.name, false)) return;
        throw fault("there is no key of edges called " + quoted(m_options.weightName));
    }

    bool isArc(const std::optional<std::string>& directed) const {
        if (!directed || m_options.directed) return m_directed;
        if (*directed != "true" && *directed != "false" && *directed != "1" && *directed != "0")
            throw fault("directed", *directed, "true or false is expected");
        return *directed == "true" || *directed == "1";
    }

    void close() {
        const Element element = m_open.back();
        m_open.pop_back();
        switch (element) {
            case DEFAULT: {
                const Key& key = m_keys[m_key];
                if (key.forEdges && isWeight(key.name, m_weight.has_value()))
                    m_weight = trimmedLine(m_text);
                break;
            }
            case DATA: takeData(); break;
            case NODE:
                if (m_values.line != 0) addNode();
                break;
            case EDGE: addEdge(); break;
            case GRAPH:
                m_defaults.pop_back();
                if (!m_defaults.empty()) m_directed = m_defaults.back();
                break;
            case GRAPHML:
            case KEY:
            case OTHER: break;
        }
    }

    void takeData() {
        const auto found = m_keys.find(m_key);
        const std::string name = found == m_keys.end() ? lowered(m_key) : found->second.name;
        const bool known = found != m_keys.end();
        if (isIn(NODE)) {
            if (known && !found->second.forNodes) return;
            if (name == "label" || (name == "name" && !m_values.name))
                m_values.name = trimmedLine(m_text);
        } else if (isWeight(name, m_values.weight.has_value())) {
            if (known && !found->second.forEdges) return;
            m_values.weight = trimmedLine(m_text);
        }
    }

    auto faults() const {
        return
            [this](const std::string& what) { return InputError::at(m_file, m_values.line, what); };
    }

    void addNode() {
        if (!m_values.id) throw faults()("the node has no id");
        const bool named = m_values.name && !m_values.name->empty();
        m_keyed.add(*m_values.id, named ? *m_values.name : inOneLine(*m_values.id), faults());
        m_values = {};
    }

    void addEdge() {
        m_line = m_values.line;
        if (!m_values.id) throw fault("the edge has no source");
        if (!m_values.name) throw fault("the edge has no target");
        const Id src = m_keyed.find(*m_values.id, "source", faults());
        const Id dst = m_keyed.find(*m_values.name, "target", faults());
        const std::optional<std::string>& weight = m_values.weight ? m_values.weight : m_weight;
        addLink(src, dst, weight && m_readWeights ? takeWeight(*weight) : LinkWeight{1},
                m_values.arc);
        m_values = {};
    }

    const Expat& m_expat;
    const std::unique_ptr<XML_ParserStruct, decltype(XML_ParserFree)*> m_parser;
    std::exception_ptr m_error;  // that stopped the parser
    KeyedNodes m_keyed;
    std::vector<Element> m_open;
    std::unordered_map<std::string, Key> m_keys;
    std::string m_key;                    // of the data or the key at hand
    std::string m_text;                   // of it
    std::optional<std::string> m_weight;  // of edges that have none
    std::vector<bool> m_defaults;         // of the open graphs: edges are arcs
    bool m_directed = false;
    bool m_graph = false;
    Values m_values;
};

}  // namespace

std::unique_ptr<NetworkReader> graphmlReader(Lines& lines, const ScanOptions& options,
                                             NodeNames& nodes, const LinkVisitor& visit) {
    return std::make_unique<GraphmlReader>(lines, options, nodes, visit);
}
#else
std::unique_ptr<NetworkReader> graphmlReader(Lines& lines, const ScanOptions&, NodeNames&,
                                             const LinkVisitor&) {
    throw lackOf(lines.name(), "GraphML", "read", "the library was built without expat");
}
#endif

}  // namespace vorl::detail
