#include <vorl/fileio/hierarchy_table.hpp>

#include "cluster_choice.hpp"

#include <vorl/types/flags.hpp>
#include <vorl/types/text.hpp>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace vorl {

namespace {

/// The rows of a table, as they come.
template <class LinksT>
class Rows {
public:
    explicit Rows(bool maxshare) : m_unwrapper(maxshare) {}

    detail::Unwrapper<LinksT>& unwrapper() { return m_unwrapper; }

    void add(const Cluster<LinksT>& cl, LevelNum level) { add(cl, level, m_unwrapper.unwrap(cl)); }
    template <class MembersT>
    void add(const Cluster<LinksT>& cl, LevelNum level, const MembersT& members) {
        for (const auto& [node, share] : members) m_rows.push_back({node->id, cl.id, share, level});
    }

    std::string text(TableForm form, const Labels* labels) {
        std::sort(m_rows.begin(), m_rows.end(), [](const Row& a, const Row& b) {
            if (a.level != b.level) return a.level < b.level;
            if (a.node != b.node) return a.node < b.node;
            return a.share != b.share ? a.share > b.share : a.cluster < b.cluster;
        });
        MembershipTable table(form, "cluster", true, labels);
        for (const Row& row : m_rows) table.add(row.node, row.cluster, row.share, row.level);
        return table.take();
    }

private:
    struct Row {
        Id node;
        Id cluster;
        Share share;
        LevelNum level;
    };

    detail::Unwrapper<LinksT> m_unwrapper;
    std::vector<Row> m_rows;
};

}  // namespace

template <class LinksT>
std::string tableText(const Hierarchy<LinksT>& hier, const OutputOptions& opts, TableForm form) {
    const ClsOutFmt structure = toClsOutFmt(opts.clsfmt & toMask(ClsOutFmt::MASK_OUTSTRUCT));
    Rows<LinksT> rows(isset(opts.clsfmt, ClsOutFmt::MAXSHARE));
    if (hier.levels().empty()) return rows.text(form, hier.labels());
    if (structure == ClsOutFmt::ROOT) {
        const auto last = static_cast<LevelNum>(hier.levels().size() - 1);
        for (const auto* cl : hier.root()) rows.add(*cl, last);
    } else if (structure == ClsOutFmt::ALLCLS) {
        for (const auto& level : hier.levels())
            for (const auto& cl : level.clusters)
                if (!detail::repeatsDescendant(cl)) rows.add(cl, cl.levnum);
    } else if (anysignif(opts.clsfmt)) {
        detail::resolveMinSize(opts.signifcls, hier.nodes().size());
        opts.signifcls.validate();
        detail::eachSignificant(hier, structure, opts.signifcls, rows.unwrapper(),
                                [&](const Cluster<LinksT>& cl, const auto& members) {
                                    rows.add(cl, cl.levnum, members);
                                });
    } else {
        throw std::invalid_argument("tableText(), the clusters of a level or all are expected\n");
    }
    return rows.text(form, hier.labels());
}

template <class LinksT>
std::string tableText(const Hierarchy<LinksT>& hier, const std::vector<LevelNum>& levels,
                      bool maxshare, TableForm form) {
    const auto end = static_cast<LevelNum>(hier.levels().size());
    if (!levels.empty() && levels.back() >= end)
        throw std::out_of_range("tableText(), there is no level " + std::to_string(levels.back()) +
                                "\n");
    Rows<LinksT> rows(maxshare);
    for (LevelNum at = 0; at < end; ++at)
        for (const auto& cl : hier.levels()[at].clusters) {
            const LevelNum top = detail::topOf(cl, end);
            auto level = std::lower_bound(levels.begin(), levels.end(), at);
            if (level == levels.end() || *level >= top) continue;
            const auto& members = rows.unwrapper().unwrap(cl);
            for (; level != levels.end() && *level < top; ++level) rows.add(cl, *level, members);
        }
    return rows.text(form, hier.labels());
}

#define VORL_INSTANTIATE(LinksT)                                                                 \
    template std::string tableText(const Hierarchy<LinksT>&, const OutputOptions&, TableForm);   \
    template std::string tableText(const Hierarchy<LinksT>&, const std::vector<LevelNum>&, bool, \
                                   TableForm);

VORL_INSTANTIATE(UnweightedLinks)
VORL_INSTANTIATE(WeightedLinks)

#undef VORL_INSTANTIATE

}  // namespace vorl
