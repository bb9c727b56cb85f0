#include <vorl/fileio/parser_cnl.hpp>

#include "scan.hpp"

#include <algorithm>
#include <stdexcept>

namespace vorl {

const char* const CnlParser::m_spaces = " \t";

using namespace detail;

CnlParser::CnlParser(const std::string& filename) {
    openText(m_file, filename, "CnlParser");
    m_size = textSize(filename);
    header();
}

void CnlParser::header() {
    readComments(m_file, m_line, [this](const char* comment) { return parseHeader(comment); });
}

/// @return whether the comment is the header
bool CnlParser::parseHeader(const char* pos) {
    pos = matchKey(pos, "clusters:");
    if (!pos) return false;
    pos = skipBlanks(pos);
    if (!takeHeaderValue(pos, m_clsnum, "clusters number")) return false;

    unsigned fuzzy = m_fuzzy;
    unsigned numbered = m_numbered;
    const auto take = [&pos](const char* key, auto& value, const char* what) {
        const char* const behind = matchKey(pos, key);
        if (!behind) return true;
        pos = skipBlanks(behind);
        if (*pos == '\0') return false;
        takeHeaderValue(pos, value, what);
        return true;
    };
    if (take("nodes:", m_ndsnum, "nodes number") && take("fuzzy:", fuzzy, "fuzzy value"))
        take("numbered:", numbered, "numbered value");
    m_fuzzy = fuzzy != 0;
    m_numbered = numbered != 0;
    return true;
}

template <class LinksT>
std::shared_ptr<RawMembership<LinksT>> CnlParser::build(IdItems<Node<LinksT>>& nodes) {
    using ClusterT = Cluster<LinksT>;
    const auto membership = std::make_shared<RawMembership<LinksT>>();
    Clusters<LinksT>& clusters = membership->clusters;
    NodesShares<LinksT>& ndshares = membership->ndshares;
    // A header that lies must not make the map larger than the file can fill it.
    if (m_ndsnum != 0)
        ndshares.reserve(std::min<Size>(m_ndsnum, m_size));
    else if (m_size != 0 && m_size != ~Size{0})
        ndshares.reserve(static_cast<Id>(estimateTokens(m_size)));

    do {
        const char* pos = skipBlanks(m_line.c_str());
        if (*pos == '\0' || *pos == '#') continue;
        const char* const last = m_line.c_str() + m_line.size();
        if (m_numbered) {
            const Number id = scanNumber(pos);
            validateVal<Id>(id.value, pos,
                            !id.found || id.err != 0 || id.value == ID_NONE || *id.end != '>',
                            "Cluster id is invalid");
            clusters.emplace_back(LevelNum{0}, static_cast<Id>(id.value), Size{0});
            pos = skipBlanks(id.end + 1);
        } else {
            clusters.emplace_back(LevelNum{0}, Size{0});
        }
        ClusterT& cluster = clusters.back();
        while (*pos != '\0') {
            const Number id = scanNumber(pos);
            validateVal<Id>(id.value, pos,
                            !id.found || id.err != 0 || id.value >= ID_NONE ||
                                !(isBlankOrEnd(*id.end) || *id.end == ':'),
                            "Node id is invalid");
            pos = id.end;
            const auto found = nodes.find(static_cast<Id>(id.value));
            if (found == nodes.end())
                throw std::out_of_range("build(), the member is not among the nodes: #" +
                                        std::to_string(id.value) + "\n");
            Node<LinksT>& node = *found->second;
            node.owners.emplace(findDest(node.owners.begin(), node.owners.end(), &cluster),
                                &cluster);
            cluster.des.push_back(&node);
            if (*pos == ':') {
                const Decimal share = scanFloat(++pos, last);
                validateVal<float>(share.value, pos,
                                   !share.found || share.err != 0 ||
                                       !(share.value > 0 && share.value <= 1) ||
                                       !isBlankOrEnd(*share.end),
                                   "The share is invalid");
                pos = share.end;
                if (share.value != 1) {
                    auto& shares = ndshares[&node];
                    const ItemShare<ClusterT> entry{&cluster, share.value};
                    shares.insert(insorted(shares, entry, bsDest<ItemShare<ClusterT>>), entry);
                    VORL_ASSERT(shares.size() <= node.owners.size(),
                                "build(), unequal shares should be specified at most for all "
                                "owners of the node");
                }
            }
            pos = skipBlanks(pos);
        }
    } while (std::getline(m_file, m_line));

    VORL_ASSERT(m_clsnum == 0 || m_clsnum == clusters.size(),
                "build(), clusters size validation failed");
    VORL_ASSERT(m_ndsnum == 0 || m_ndsnum >= ndshares.size(),
                "build(), nodes size validation failed");
    return membership;
}

template VORL_API std::shared_ptr<RawMembership<UnweightedLinks>> CnlParser::build(
    IdItems<Node<UnweightedLinks>>&);
template VORL_API std::shared_ptr<RawMembership<WeightedLinks>> CnlParser::build(
    IdItems<Node<WeightedLinks>>&);

}  // namespace vorl
