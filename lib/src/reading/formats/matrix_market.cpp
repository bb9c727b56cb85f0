// The reader of sparse matrices in the format MatrixMarket, whose rows and columns are nodes.
#include "network_reader.hpp"

#include <algorithm>
#include <cctype>

namespace vorl::detail {

namespace {

class MatrixMarketReader : public LineNetworkReader {
public:
    using LineNetworkReader::LineNetworkReader;

protected:
    void readLine(std::string_view line) override {
        if (m_line == 1)
            readBanner(line);
        else if (line.front() == '%')
            return;
        else if (!m_banner)
            throw fault("the file begins without \"%%MatrixMarket\"");
        else if (m_facts.headerLine == 0)
            readSize(line);
        else
            readEntry(line);
    }

    void atEnd() override {
        if (m_facts.headerLine == 0) throw fault("the file ends without the size of the matrix");
        if (m_entries != m_told)
            throw headerFault("the header tells of " + grouped(m_told) + " entries, the file has " +
                              grouped(m_entries));
        requireLikelyNodes(*m_facts.nodes);
        addPlaces();
    }

private:
    static std::string nextWord(std::string_view& line) {
        return lowered(nextToken(line).substr(0, LONGEST_NAME));
    }

    void readBanner(std::string_view line) {
        if (nextWord(line) != "%%matrixmarket")
            throw fault("the file begins with " + quoted(rawLine()) +
                        ", \"%%MatrixMarket\" is expected");
        const auto expect = [this](const char* what, const std::string& word,
                                   std::initializer_list<const char*> words, const char* expected) {
            if (std::find(words.begin(), words.end(), word) == words.end())
                throw fault(what, word, std::string(expected) + " is expected");
        };
        expect("the object", nextWord(line), {"matrix"}, "matrix");
        expect("the form of the matrix", nextWord(line), {"coordinate"}, "coordinate");
        const std::string field = nextWord(line);
        expect("the field of the matrix", field, {"real", "double", "integer", "pattern"},
               "real, integer or pattern");
        const std::string symmetry = nextWord(line);
        expect("the symmetry of the matrix", symmetry, {"general", "symmetric"},
               "general or symmetric");
        m_values = field != "pattern";
        m_symmetric = symmetry == "symmetric";
        m_arcs = m_options.directed.value_or(!m_symmetric);
        m_facts.toldDirected = m_arcs;
        m_facts.dialect = symmetry + " matrix, values " + field;
        m_banner = true;
    }

    void readSize(std::string_view line) {
        const Size rows = toCount(nextToken(line), "rows");
        const Size columns = toCount(nextToken(line), "columns");
        m_told = toCount(nextToken(line), "entries");
        if (!trimFront(line).empty())
            throw fault("found " + quoted(line) + " behind the size of the matrix");
        if (rows != columns)
            throw fault("the matrix has " + grouped(rows) + " rows and " + grouped(columns) +
                        " columns, as many are expected; links between two kinds of nodes can "
                        "stand in a list, with names that tell them apart");
        tellPlaces(rows);
    }

    void readEntry(std::string_view line) {
        if (++m_entries > m_told)
            throw fault("the header tells of " + grouped(m_told) +
                        " entries, this is a further one");
        const Id row = toPlace(nextToken(line), "row");
        const Id column = toPlace(nextToken(line), "column");
        const std::string_view value = nextToken(line);
        if (m_values && value.empty()) throw fault("the entry has no value");
        if (!m_values && !value.empty())
            throw fault("the entry has the value " + quoted(value) + ", a pattern has none");
        if (!trimFront(line).empty()) throw fault("found " + quoted(line) + " behind the entry");
        const LinkWeight weight = m_values ? takeWeight(value) : LinkWeight{1};
        // The lower half of a symmetric matrix stands there, and its links begin at the columns.
        if (m_symmetric)
            addLinkOf(column, row, weight, m_arcs);
        else
            addLinkOf(row, column, weight, m_arcs);
    }

    bool m_banner = false;
    bool m_values = false;
    bool m_symmetric = false;
    bool m_arcs = false;
    Size m_told = 0;
    Size m_entries = 0;
};

}  // namespace

std::unique_ptr<NetworkReader> matrixMarketReader(Lines& lines, const ScanOptions& options,
                                                  NodeNames& nodes, const LinkVisitor& visit) {
    return std::make_unique<MatrixMarketReader>(lines, options, nodes, visit);
}

}  // namespace vorl::detail
