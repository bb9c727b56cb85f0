#include <vorl/reading/network_writer.hpp>

#include <algorithm>
#include <charconv>
#include <utility>

namespace vorl {

NetworkWriter::NetworkWriter(NetworkFormat format, const NetworkFacts& facts, const Labels* labels,
                             char separator)
    : m_format(format),
      m_weighted(facts.weighted),
      m_directed(facts.directed()),
      m_labels(labels),
      m_separator(separator) {
    if (format == NetworkFormat::LIST) {
        m_text = "source,target,weight\n";
        if (!m_weighted) m_text.replace(m_text.rfind(','), m_text.npos, "\n");
        std::replace(m_text.begin(), m_text.end(), ',', m_separator);
        return;
    }
    const std::string weighted = m_weighted ? "1" : "0";
    if (format == NetworkFormat::RCG) {
        m_text = "/Graph weighted:" + weighted + "\n";
        if (facts.nodes) m_text += "/Nodes " + std::to_string(*facts.nodes);
        if (facts.firstId) m_text += " " + std::to_string(*facts.firstId);
        if (facts.nodes) m_text += "\n";
        return;
    }
    if (!facts.nodes) return;
    m_text = "# Nodes: " + std::to_string(*facts.nodes);
    // Edges among arcs are written as two arcs, and their number isn't told then.
    if (format == NetworkFormat::NSE) m_text += ", Edges: " + std::to_string(facts.edges);
    if (format == NetworkFormat::NSA && facts.edges == 0)
        m_text += ", Arcs: " + std::to_string(facts.arcs);
    m_text += ", Weighted: " + weighted + "\n";
}

void NetworkWriter::startSection(bool arcs) {
    if (m_src) m_text += '\n';
    m_src.reset();
    m_text += arcs ? "/Arcs\n" : "/Edges\n";
    m_arcs = arcs;
}

/// A row of a list. Edges among arcs are two arcs.
void NetworkWriter::addRow(const RawLink& ln) {
    naming::appendCell(m_text, ln.src, m_labels, m_separator);
    m_text += m_separator;
    naming::appendCell(m_text, ln.dst, m_labels, m_separator);
    if (m_weighted) {
        char digits[32];
        m_text += m_separator;
        m_text.append(digits, std::to_chars(digits, digits + sizeof digits, ln.weight).ptr);
    }
    m_text += '\n';
    if (m_directed && !ln.arc && ln.src != ln.dst) addRow({ln.dst, ln.src, ln.weight, true});
}

void NetworkWriter::add(const RawLink& ln) {
    if (m_format == NetworkFormat::LIST) return addRow(ln);
    char digits[32];
    const auto append = [&](auto value) {
        m_text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    };
    if (m_format != NetworkFormat::RCG) {
        append(ln.src);
        m_text += ' ';
        append(ln.dst);
        if (m_weighted) {
            m_text += ' ';
            append(ln.weight);
        }
        m_text += '\n';
        if (m_format == NetworkFormat::NSA && !ln.arc && ln.src != ln.dst)
            add({ln.dst, ln.src, ln.weight, true});
        return;
    }
    if (m_arcs != ln.arc) startSection(ln.arc);
    if (m_src != ln.src) {
        if (m_src) m_text += '\n';
        append(ln.src);
        m_text += '>';
        m_src = ln.src;
    }
    m_text += ' ';
    append(ln.dst);
    if (m_weighted) {
        m_text += ':';
        append(ln.weight);
    }
}

std::string NetworkWriter::take() {
    if (m_src) m_text += '\n';
    return std::move(m_text);
}

}  // namespace vorl
