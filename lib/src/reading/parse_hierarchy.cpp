// The reader of the format RHB.
#include "node_words.hpp"
#include "settling.hpp"

#include <vorl/reading/hierarchy_file.hpp>
#include <vorl/reading/tokens.hpp>
#include <vorl/reading/wording.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

namespace vorl {

class HierarchyReader {
public:
    explicit HierarchyReader(std::shared_ptr<Labels> known) : m_words(std::move(known)) {}

    HierarchyFile read(Lines& lines) {
        m_file.m_name = lines.name();
        while (lines.next()) {
            m_line = lines.number();
            const std::string_view line = trimFront(lines.line());
            if (line.empty() || line.front() == '#') continue;
            if (line.front() == '/')
                readSection(line);
            else
                readItem(line);
        }
        if (m_section == BEGIN) throw fault("the file ends, \"/Hierarchy\" is expected");
        endSection();
        if (m_section == HIERARCHY) throw fault("the file ends, \"/Nodes\" is expected");
        if (m_file.levels() != m_levels)
            throw fault("the file ends after " + counted(m_file.levels(), "level") +
                        ", its header tells of " + grouped(m_levels));
        if (m_file.clusters() != m_clusters)
            throw fault("the file has " + counted(m_file.clusters(), "cluster") +
                        ", its header tells of " + grouped(m_clusters));
        resolveOwners();
        m_file.m_labels = m_words.labels();
        return std::move(m_file);
    }

private:
    enum Section { BEGIN, HIERARCHY, NODES, LEVEL };

    InputError fault(const std::string& what) const {
        return faultAt(std::max<std::size_t>(m_line, 1), what);
    }
    InputError faultAt(std::size_t line, const std::string& what) const {
        return InputError::at(m_file.m_name, line, what);
    }

    Size toCount(std::string_view token, const std::string& what) const {
        std::uint32_t value = 0;
        const auto [last, err] = std::from_chars(token.data(), token.data() + token.size(), value);
        if (token.empty() || err != std::errc() || last != token.data() + token.size())
            throw fault(what + " is " + quoted(token) +
                        ", a whole number below 4294967296 is expected");
        return value;
    }

    /// The number of `key:number`, cut off the line.
    Size takeCount(std::string_view& line, std::string_view key) const {
        std::string_view token = nextToken(line);
        if (!token.starts_with(key) || token.substr(key.size()).empty() || token[key.size()] != ':')
            throw fault("found " + quoted(token) + ", \"" + std::string(key) +
                        ":\" and a number are expected");
        return toCount(token.substr(key.size() + 1), "\"" + std::string(key) + ":\"");
    }

    void readSection(std::string_view line) {
        const std::string_view word = nextToken(line);
        const auto expect = [&](bool right, const char* expected) {
            if (!right) throw fault("found " + quoted(word) + ", " + expected + " is expected");
        };
        if (m_section == BEGIN) {
            expect(word == "/Hierarchy", "\"/Hierarchy\"");
            m_levels = takeCount(line, "levels");
            m_clusters = takeCount(line, "clusters");
            m_section = HIERARCHY;
        } else if (m_section == HIERARCHY) {
            expect(word == "/Nodes", "\"/Nodes\"");
            m_told = toCount(nextToken(line), "the number of nodes");
            m_section = NODES;
        } else {
            expect(word == "/Level", "\"/Level\"");
            endSection();
            const Size index = toCount(nextToken(line), "the number of the level");
            if (index != m_file.levels() || index >= m_levels)
                throw fault("found level " + std::to_string(index) + ", " +
                            (m_file.levels() < m_levels ? "level " + std::to_string(m_file.levels())
                                                        : "no further level") +
                            " is expected");
            m_told = takeCount(line, "pure");
            m_fullsize = takeCount(line, "extended");
            m_section = LEVEL;
        }
        m_sectionLine = m_line;
        if (!trimFront(line).empty())
            throw fault("found " + quoted(line) + " behind the section's values");
    }

    /// Takes the items of the section over.
    void endSection() {
        const Size count = m_file.m_ids.size() - m_sectionBegin;
        if (m_section >= NODES && count != m_told)
            throw faultAt(m_sectionLine,
                          "the section tells of " +
                              counted(m_told, m_section == NODES ? "node" : "cluster") +
                              ", it has " + grouped(count));
        m_sectionBegin = m_file.m_ids.size();
        if (m_section == LEVEL)
            m_file.m_levels.push_back(
                {static_cast<HierarchyFile::Item>(m_sectionBegin), m_fullsize});
    }

    void readItem(std::string_view line) {
        if (m_section < NODES)
            throw fault("found " + quoted(line) + ", " +
                        (m_section == BEGIN ? "a hierarchy, which begins with \"/Hierarchy\","
                                            : "\"/Nodes\"") +
                        " is expected");
        const bool node = m_section == NODES;
        const bool named = node && line.front() == '"';
        std::string name;
        std::string_view rest = line;
        if (named && (!detail::takeQuoted(rest, name) || !rest.starts_with('>')))
            throw fault("the line begins with " + quoted(line) +
                        ", a name between quotes directly followed by \">\" is expected");
        const std::size_t end =
            named ? line.size() - rest.size() : std::min(line.find('>'), line.size());
        if (end == line.size())
            throw fault("the line begins with " + quoted(nextToken(line)) +
                        ", an id directly followed by \">\" is expected");
        const auto toItem = [this](std::string_view token, const char* what) {
            return toId(token, what, detail::faultsAt(m_file.m_name, m_line));
        };
        const Id id = node ? m_words.node(named ? std::string_view(name) : line.substr(0, end),
                                          named, detail::faultsAt(m_file.m_name, m_line))
                           : toItem(line.substr(0, end), "cluster");
        IdNumbers& numbers = node ? m_file.m_nodeNumbers : m_file.m_clusterNumbers;
        if (numbers.find(id) != ID_NONE)
            throw fault((node ? "node " + naming::plain(id, m_words.labels().get())
                              : "cluster " + std::to_string(id)) +
                        " stands twice");
        if (m_file.m_ids.size() >= ID_NONE - 1) throw fault("there are too many items");
        numbers.append(id);
        if (node) ++m_file.m_nodes;
        m_file.m_ids.push_back(id);
        m_file.m_lines.push_back(m_line);
        line.remove_prefix(end + 1);
        for (std::string_view token = nextToken(line); !token.empty(); token = nextToken(line)) {
            const std::size_t colon = std::min(token.find(':'), token.size());
            const Id owner = toItem(token.substr(0, colon), "owner");
            double share = 0;
            if (colon != token.size()) {
                token.remove_prefix(colon + 1);
                const auto [last, err] =
                    std::from_chars(token.data(), token.data() + token.size(), share);
                if (err != std::errc() || last != token.data() + token.size() ||
                    !(share > 0 && share <= 1))
                    throw fault("the share in cluster " + std::to_string(owner) + " is " +
                                quoted(token) + ", a number above 0 and up to 1 is expected");
            }
            m_file.m_owners.push_back({owner, share});
        }
        m_file.m_begins.push_back(m_file.m_owners.size());
    }

    void resolveOwners() {
        std::vector<HierarchyFile::Item> lastOwned(m_file.m_ids.size(), ID_NONE);
        for (HierarchyFile::Item item = 0; item < m_file.m_ids.size(); ++item) {
            m_line = m_file.m_lines[item];
            const std::span owners(m_file.m_owners.data() + m_file.m_begins[item],
                                   m_file.m_begins[item + 1] - m_file.m_begins[item]);
            LevelNum level = 0;
            for (auto& owner : owners) {
                const Id number = m_file.m_clusterNumbers.find(owner.item);
                if (number == ID_NONE)
                    throw fault("the owner " + std::to_string(owner.item) + " is no cluster");
                const Id id = owner.item;
                owner.item = m_file.m_nodes + number;
                const LevelNum own = m_file.levelOf(owner.item);
                if (!m_file.isNode(item) && own <= m_file.levelOf(item))
                    throw fault("the owner " + std::to_string(id) +
                                " isn't of a higher level than what it owns");
                if (&owner == &owners.front())
                    level = own;
                else if (own != level)
                    throw fault("there are owners of several levels, those of one are expected");
                if (std::exchange(lastOwned[owner.item], item) == item)
                    throw fault("the owner " + std::to_string(id) + " stands twice");
            }
            settleShares(owners);
        }
    }

    /// Fills even shares in, and takes the rounding out of stated ones.
    void settleShares(std::span<HierarchyFile::Share> owners) const {
        const double count = static_cast<double>(owners.size());
        double sum = 0;
        Size stated = 0;
        for (const auto& owner : owners) {
            stated += owner.share > 0;
            sum += owner.share;
        }
        if (stated != 0 && stated != owners.size())
            throw fault("shares for some of the owners only, all or none are expected");
        if (stated != 0 && std::abs(sum - 1) > 5e-7 * count + 1e-9)
            throw fault("the shares add up to " + number(sum, 6) + ", 1 is expected");
        for (auto& owner : owners) owner.share = stated == 0 ? 1 / count : owner.share / sum;
    }

    HierarchyFile m_file;
    detail::NodeWords m_words;
    std::size_t m_line = 0;
    Section m_section = BEGIN;
    std::size_t m_sectionLine = 0;
    std::size_t m_sectionBegin = 0;
    Size m_levels = 0;
    Size m_clusters = 0;
    Size m_told = 0;  ///< items of the section
    Size m_fullsize = 0;
};

bool isHierarchy(Lines& lines) {
    while (lines.next()) {
        const std::string_view line = trimFront(lines.line());
        if (!line.empty() && line.front() != '#') return line.starts_with("/Hierarchy");
    }
    return false;
}

HierarchyFile parseHierarchy(Lines& lines, std::shared_ptr<Labels> known) {
    return HierarchyReader(std::move(known)).read(lines);
}

HierarchyFile parseHierarchy(std::string_view text, const std::string& name) {
    TextSource source(text);
    Lines lines(source, name);
    return parseHierarchy(lines);
}

}  // namespace vorl
