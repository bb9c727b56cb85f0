#include <vorl/communities_text.hpp>

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <utility>
#include <vector>

namespace vorl {

namespace {

template <class NumberT>
void append(std::string& text, NumberT number) {
    char digits[32];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

/// The text of clusters, one after another.
class ClustersWriter {
public:
    ClustersWriter(Size clusters, Size nodes, bool fuzzy, const Labels* labels) : m_labels(labels) {
        m_text = "# Clusters: ";
        append(m_text, clusters);
        m_text += ", Nodes: ";
        append(m_text, nodes);
        m_text += fuzzy ? ", Fuzzy: 1, Numbered: 0\n" : ", Fuzzy: 0, Numbered: 0\n";
    }

    void member(Id node, Share share) {
        naming::appendQuoted(m_text, node, m_labels);
        if (share < 1) {
            m_text += ':';
            append(m_text, share);
        }
        m_text += ' ';
    }
    void endCluster() { m_text.back() = '\n'; }

    std::string text() && { return std::move(m_text); }

private:
    const Labels* m_labels;
    std::string m_text;
};

/// Visits the members of communities: (community, place in the arrays).
template <class VisitT>
void eachMember(const CommunityArrays& found, VisitT visit) {
    if (found.members.size() != found.shares.size() ||
        (found.ends.empty() ? 0 : found.ends.back()) != found.members.size())
        throw std::invalid_argument("there should be a share for each member of a community\n");
    Size member = 0;
    for (Id community = 0; community < found.ends.size(); ++community) {
        if (member >= found.ends[community])
            throw std::invalid_argument("a community should have members\n");
        for (; member < found.ends[community]; ++member) visit(community, member);
    }
}

}  // namespace

std::string clustersText(const Communities& found, const Labels* labels) {
    ClustersWriter writer(found.count(), found.nodes(), found.shared() != 0, labels);
    for (Id community = 0; community < found.count(); ++community) {
        for (const auto& [place, share] : found.members(community))
            writer.member(found.ids()[place], share);
        writer.endCluster();
    }
    return std::move(writer).text();
}

std::string clustersText(const CommunityArrays& found, const Labels* labels) {
    const bool shared = std::any_of(found.shares.begin(), found.shares.end(),
                                    [](Share share) { return share < 1; });
    ClustersWriter writer(found.ends.size(), found.nodes, shared, labels);
    eachMember(found, [&](Id community, Size member) {
        writer.member(found.members[member], found.shares[member]);
        if (member + 1 == found.ends[community]) writer.endCluster();
    });
    return std::move(writer).text();
}

std::string tableText(const Communities& found, TableForm form, const Labels* labels) {
    MembershipTable table(form, "community", false, labels);
    for (Size place = 0; place < found.nodes(); ++place)
        for (const CommunityShare& part : found.of(place))
            table.add(found.ids()[place], part.community, part.share);
    return table.take();
}

std::string tableText(const CommunityArrays& found, TableForm form, const Labels* labels) {
    struct Row {
        Id node;
        Id community;
        Share share;
    };
    std::vector<Row> rows;
    rows.reserve(found.members.size());
    eachMember(found, [&](Id community, Size member) {
        rows.push_back({found.members[member], community, found.shares[member]});
    });
    std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
        return a.node != b.node ? a.node < b.node : a.share > b.share;
    });
    MembershipTable table(form, "community", false, labels);
    for (const Row& row : rows) table.add(row.node, row.community, row.share);
    return table.take();
}

}  // namespace vorl
