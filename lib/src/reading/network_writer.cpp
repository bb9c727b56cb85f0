#include <vorl/reading/network_writer.hpp>

#include <charconv>
#include <utility>

namespace vorl {

NetworkWriter::NetworkWriter(FileFormat format, const NetworkFacts& facts)
    : m_format(format), m_weighted(facts.weighted) {
    const std::string weighted = m_weighted ? "1" : "0";
    if (format == FileFormat::RCG) {
        m_text = "/Graph weighted:" + weighted + "\n";
        if (facts.nodes) m_text += "/Nodes " + std::to_string(*facts.nodes);
        if (facts.firstId) m_text += " " + std::to_string(*facts.firstId);
        if (facts.nodes) m_text += "\n";
        return;
    }
    if (!facts.nodes) return;
    m_text = "# Nodes: " + std::to_string(*facts.nodes);
    // Edges among arcs are written as two arcs, and their number isn't told then.
    if (format == FileFormat::NSE) m_text += ", Edges: " + std::to_string(facts.edges);
    if (format == FileFormat::NSA && facts.edges == 0)
        m_text += ", Arcs: " + std::to_string(facts.arcs);
    m_text += ", Weighted: " + weighted + "\n";
}

void NetworkWriter::startSection(bool arcs) {
    if (m_src) m_text += '\n';
    m_src.reset();
    m_text += arcs ? "/Arcs\n" : "/Edges\n";
    m_arcs = arcs;
}

void NetworkWriter::add(const RawLink& ln) {
    char digits[32];
    const auto append = [&](auto value) {
        m_text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    };
    if (m_format != FileFormat::RCG) {
        append(ln.src);
        m_text += ' ';
        append(ln.dst);
        if (m_weighted) {
            m_text += ' ';
            append(ln.weight);
        }
        m_text += '\n';
        if (m_format == FileFormat::NSA && !ln.arc && ln.src != ln.dst)
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
