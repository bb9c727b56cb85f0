#include "network_input.hpp"

#include "errors.hpp"
#include "text_file.hpp"
#include "tokens.hpp"

#include <vorl/fileio/iotypes.hpp>
#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/types/trace.hpp>

#include <sys/mman.h>
#include <unistd.h>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <unordered_map>

namespace vorl::app {

namespace {

/// The header as the file's comment tells it.
struct Header {
    std::size_t line = 0;
    std::optional<Size> nodes;
    std::optional<Size> links;
    std::optional<bool> directed;
    std::optional<bool> weighted;
};

/// What a pass over the lines found.
struct Facts {
    Header header;
    Size links = 0;
    bool plain = true;  ///< no byte order mark and no carriage returns
    AccWeight weight = 0;
};

class LineChecker {
public:
    LineChecker(const std::string& file, bool readWeights)
        : m_file(file), m_readWeights(readWeights) {}

    Facts check(std::string_view text) {
        if (text.empty()) throw InputError(m_file + ": the file is empty, links are expected");
        if (text.starts_with("\xEF\xBB\xBF")) {
            m_facts.plain = false;
            text.remove_prefix(3);
        }
        bool body = false;
        while (!text.empty()) {
            ++m_line;
            const std::size_t end = std::min(text.find('\n'), text.size());
            std::string_view line = text.substr(0, end);
            text.remove_prefix(std::min(end + 1, text.size()));
            if (line.ends_with('\r')) {
                m_facts.plain = false;
                line.remove_suffix(1);
            }
            if (std::memchr(line.data(), '\0', line.size()))
                throw fault("a NUL byte: the file is binary, lines of text are expected");
            line = trimFront(line);
            if (line.empty()) continue;
            if (line.front() == '#') {
                if (!body && m_facts.header.line == 0) checkHeader(trimFront(line.substr(1)));
                continue;
            }
            body = true;
            checkLink(line);
        }
        checkTotals();
        return m_facts;
    }

private:
    InputError fault(const std::string& what) const { return InputError::at(m_file, m_line, what); }

    void checkHeader(std::string_view text) {
        const auto key = [&text](const char* name) { return takeKey(text, name); };
        const auto value = [&](const char* what) -> std::optional<Size> {
            if (text.empty()) return std::nullopt;
            const std::string_view token = takeValue(text);
            Size number = 0;
            const auto [last, err] =
                std::from_chars(token.data(), token.data() + token.size(), number);
            if (token.empty() || err != std::errc() || last != token.data() + token.size())
                throw fault(std::string("the header's number of ") + what + " is " + quoted(token) +
                            ", a whole number is expected");
            return number;
        };
        if (!key("nodes:")) return;
        Header& header = m_facts.header;
        header.line = m_line;
        header.nodes = value("nodes");
        if (header.nodes && *header.nodes > ID_MAX)
            throw fault("the header's number of nodes is " + std::to_string(*header.nodes) +
                        ", at most 4294967295 are possible");
        if (key("edges:")) {
            header.links = value("links");
            if (header.links) header.directed = false;
        } else if (key("arcs:")) {
            header.links = value("links");
            if (header.links) header.directed = true;
        }
        if (key("weighted:")) {
            const auto weighted = value("weights (0 or 1)");
            if (weighted && *weighted > std::numeric_limits<unsigned>::max())
                throw fault("the header's \"Weighted:\" is out of range, 0 or 1 is expected");
            if (weighted) header.weighted = *weighted != 0;
        }
        if (header.weighted && !*header.weighted) m_readWeights = false;
    }

    void checkId(std::string_view token, const char* what) const {
        Size id = 0;
        const auto [last, err] = std::from_chars(token.data(), token.data() + token.size(), id);
        if (err == std::errc::invalid_argument || last != token.data() + token.size())
            throw fault(std::string("the ") + what + " is " + quoted(token) +
                        ", an id of decimal digits is expected");
        if (err != std::errc() || id >= ID_NONE)
            throw fault(std::string("the ") + what + " is " + quoted(token) +
                        ", an id below 4294967295 is expected");
    }

    void checkLink(std::string_view line) {
        checkId(nextToken(line), "source");
        const std::string_view dest = nextToken(line);
        if (dest.empty()) throw fault("a single id, a source and a destination are expected");
        checkId(dest, "destination");
        ++m_facts.links;
        const std::string_view token = m_readWeights ? nextToken(line) : std::string_view();
        if (token.empty()) {
            m_facts.weight += 1;
            return;
        }
        double weight = 0;
        const auto [last, err] = std::from_chars(token.data(), token.data() + token.size(), weight);
        const bool whole = last == token.data() + token.size();
        if (err == std::errc::invalid_argument || !whole || std::isnan(weight))
            throw fault("the weight is " + quoted(token) + ", a number is expected");
        if (token.front() == '-')
            throw fault("the weight is " + quoted(token) + ", it must not be negative");
        // The library holds 32-bit weights, and refuses those that these can't tell from 0.
        if (err != std::errc() || weight > std::numeric_limits<float>::max() ||
            (weight != 0 && weight < std::numeric_limits<float>::min()))
            throw fault("the weight is " + quoted(token) +
                        ", 0 or a number from 1.2e-38 to 3.4e38 is expected");
        m_facts.weight += weight == 0 ? 1 : weight;
    }

    void checkTotals() const {
        if (m_facts.links == 0)
            throw InputError::at(m_file, m_line, "the file ends without a link");
        const Header& header = m_facts.header;
        if (header.links && *header.links != m_facts.links)
            throw InputError::at(m_file, header.line,
                                 "the header tells of " + std::to_string(*header.links) +
                                     " links, the file has " + std::to_string(m_facts.links));
        if (header.nodes && *header.nodes == ID_MAX)
            throw InputError::at(m_file, header.line,
                                 "the header tells of 4294967295 nodes, more than there can be");
        // Weights are compared at 32 bits, both directions counted.
        if (2 * m_facts.weight > std::numeric_limits<float>::max())
            throw InputError(m_file + ": the weights add up to more than 1.7e38");
    }

    const std::string& m_file;
    bool m_readWeights;
    std::size_t m_line = 0;
    Facts m_facts;
};

/// A file in memory, for input that the library's parsers wouldn't take as it stands.
class MemoryFile {
public:
    MemoryFile() : m_file(memfd_create("vorl", MFD_CLOEXEC)) {
        if (m_file < 0) throw InputError(std::string("memory file: ") + std::strerror(errno));
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(m_file); }

    void write(std::string_view text) {
        while (!text.empty()) {
            const ssize_t count = ::write(m_file, text.data(), text.size());
            if (count < 0) throw InputError(std::string("memory file: ") + std::strerror(errno));
            text.remove_prefix(static_cast<std::size_t>(count));
        }
    }
    std::string name() const { return "/proc/self/fd/" + std::to_string(m_file); }

private:
    int m_file;
};

/// The text without byte order mark and carriage returns at line ends.
std::string normalised(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\r' || (i + 1 < text.size() && text[i + 1] != '\n')) result += text[i];
    return result;
}

/// The edges or arcs with the weights of repeated ones added up, one a line, in the order of their
/// first appearance. The library leaves a repeat of the last link of a list out of the sum.
std::string summed(std::string_view text, bool directed, bool readWeights) {
    struct Sum {
        Id src;
        Id dst;
        double weight;
    };
    std::vector<Sum> sums;
    std::unordered_map<Size, std::size_t> places;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = trimFront(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.empty() || line.front() == '#') continue;
        Sum sum{0, 0, 0};
        const std::string_view src = nextToken(line);
        const std::string_view dst = nextToken(line);
        std::from_chars(src.data(), src.data() + src.size(), sum.src);
        std::from_chars(dst.data(), dst.data() + dst.size(), sum.dst);
        const std::string_view token = readWeights ? nextToken(line) : std::string_view();
        std::from_chars(token.data(), token.data() + token.size(), sum.weight);
        if (sum.weight == 0) sum.weight = 1;
        const bool swap = !directed && sum.dst < sum.src;
        const Size key = swap ? Size{sum.dst} << 32 | sum.src : Size{sum.src} << 32 | sum.dst;
        const auto [place, added] = places.emplace(key, sums.size());
        if (added)
            sums.push_back(sum);
        else
            sums[place->second].weight += sum.weight;
    }
    std::string result;
    for (const Sum& sum : sums) {
        char line[64];
        result.append(line, static_cast<std::size_t>(std::snprintf(
                                line, sizeof line, "%u %u %.9g\n", sum.src, sum.dst, sum.weight)));
    }
    return result;
}

/// Runs the operation and gives the lines that it traced.
template <class OperationT>
std::vector<std::string> traced(OperationT operation) {
    char* data = nullptr;
    std::size_t size = 0;
    std::FILE* const former = std::exchange(ftrace, open_memstream(&data, &size));
    const auto restore = [&] {
        if (ftrace) std::fclose(ftrace);
        ftrace = former;
    };
    try {
        operation();
    } catch (...) {
        restore();
        std::free(data);
        throw;
    }
    restore();
    std::vector<std::string> lines;
    std::string_view text(data ? data : "", size);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    std::free(data);
    return lines;
}

}  // namespace

Network readNetwork(const ReadOptions& options) {
    InpOptions input;
    input.format = options.format;
    input.filename = options.file;
    input.shuffle = options.shuffle;
    if (input.format == FileFormat::UNKNOWN) input.format = inpFileFmt(options.file.c_str());
    if (input.format == FileFormat::RCG)
        throw UsageError(options.file + ": networks in the format rcg can't be read yet");
    if (input.format == FileFormat::UNKNOWN)
        throw UsageError(options.file +
                         ": the format can't be told from the name, give it with --format");

    const TextFile file(options.file);
    const Facts facts = LineChecker(options.file, !options.unweighted).check(file.text());
    const Header& header = facts.header;

    Network network;
    network.directed = header.directed.value_or(input.format == FileFormat::NSA);
    network.weighted = !options.unweighted && header.weighted.value_or(true);
    network.links = facts.links;

    std::optional<MemoryFile> memory;
    if (!facts.plain || options.sumDuplicates) {
        std::string text = normalised(file.text());
        if (options.sumDuplicates) {
            text = summed(text, network.directed, network.weighted);
            network.weighted = true;
            input.format = network.directed ? FileFormat::NSA : FileFormat::NSE;
        }
        memory.emplace().write(text);
        input.filename = memory->name();
    }
    network.warnings = traced([&] {
        NslParser parser(input);
        if (network.directed || network.weighted) {
            const auto graph = parser.build<Graph<true>>(network.weighted);
            network.nodes = graph->nodes().size();
            network.graph = graph;
        } else {
            const auto graph = parser.build<Graph<false>>();
            network.nodes = graph->nodes().size();
            network.graph = graph;
        }
    });
    if (header.nodes && *header.nodes < network.nodes)
        throw InputError::at(options.file, header.line,
                             "the header tells of " + std::to_string(*header.nodes) +
                                 " nodes, the file has " + std::to_string(network.nodes));
    if (header.nodes && *header.nodes > network.nodes) {
        if (*header.nodes > file.text().size())
            throw InputError::at(options.file, header.line,
                                 "the header tells of " + std::to_string(*header.nodes) +
                                     " nodes, the file has " + std::to_string(network.nodes));
        network.warnings.push_back("the header tells of " + std::to_string(*header.nodes) +
                                   " nodes, " + std::to_string(network.nodes) +
                                   " have a link; the others are left out");
    }
    return network;
}

}  // namespace vorl::app
