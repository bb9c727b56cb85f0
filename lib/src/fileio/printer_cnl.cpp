#include <vorl/fileio/printer_cnl.hpp>

#include "cluster_choice.hpp"
#include "text_writer.hpp"

#include <vorl/types/assert.hpp>
#include <vorl/types/plain_text.hpp>
#include <vorl/types/progress.hpp>
#include <vorl/types/text.hpp>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <vector>

namespace vorl {

namespace {

/// Members whose id has it are filtered on demand.
constexpr Id FILTERED = 0x80000000;

template <class LinksT>
class Writer {
public:
    using ClusterT = Cluster<LinksT>;
    using Members = typename detail::Unwrapper<LinksT>::Members;

    Writer(const Hierarchy<LinksT>& hier, FileWrappers& fouts, ClsOutFmtBase clsfmt,
           bool fltMembers)
        : m_hier(hier),
          m_fouts(fouts),
          m_fuzzy(isset(clsfmt, ClsOutFmt::SHARED) || isset(clsfmt, ClsOutFmt::EXTENDED)),
          m_numbered(isset(clsfmt, ClsOutFmt::EXTENDED)),
          m_fltMembers(fltMembers),
          m_unwrapper(isset(clsfmt, ClsOutFmt::MAXSHARE)) {
        m_report.begin("writing clusters");
    }

    void root() {
        header(0, m_hier.root().size());
        for (const ClusterT* cl : m_hier.root()) print(*cl, 0);
    }

    void allClusters() {
        header(0, m_hier.score().clusters);
        keepRows();
        for (const auto& level : m_hier.levels())
            for (const ClusterT& cl : level.clusters)
                if (!detail::repeatsDescendant(cl)) print(cl, 0);
    }

    void levels(LevelNum blev, LevelNum elev, float ratio) {
        if (ratio < 0 || ratio > 1)
            throw std::invalid_argument(format("output(), levStepRatio validation failed: %f\n",
                                               static_cast<double>(ratio)));
        const Size levnum = m_hier.levels().size();
        const Size files = m_fouts.size();
        const auto check = [&](bool good) {
            if (good) return;
            throw std::invalid_argument("output(), blev (" + std::to_string(blev) +
                                        ") or the number of fouts (" + std::to_string(files) +
                                        ") is too large (max = " + std::to_string(levnum) + ")\n");
        };
        check(blev < levnum && files <= levnum);
        if (ratio == 1) {
            if (elev == LEVEL_NONE) elev = blev + static_cast<LevelNum>(files);
            check(elev <= levnum && (elev < blev || elev - blev <= files));
            for (LevelNum i = blev; i < elev; ++i) header(i - blev, m_hier.levels()[i].fullsize);
            if (elev > blev + 1) keepRows();
            eachLevel(blev, elev);
        } else {
            if (elev == LEVEL_NONE) elev = static_cast<LevelNum>(levnum);
            check(elev <= levnum);
            const std::vector<LevelNum> levinds = levelsByRatio(blev, elev, ratio);
            for (Size i = 0; i < levinds.size(); ++i)
                header(i, m_hier.levels()[levinds[i]].fullsize);
            listedLevels(levinds, elev);
        }
    }

    void significant(ClsOutFmt structure, const SignifclsOptions& opts) {
        opts.validate();
        header(0, m_hier.score().clusters);
        detail::eachSignificant(
            m_hier, structure, opts, m_unwrapper,
            [this](const ClusterT& cl, const Members& members) { put(row(cl, members), 0); });
    }

private:
    void header(Size fout, Size clusters) {
        std::fprintf(m_fouts[fout].fdescr(),
                     "# Clusters: %u, Nodes: %lu, Fuzzy: %u, Numbered: %u\n",
                     static_cast<unsigned>(clusters), m_hier.nodes().size(), unsigned{m_fuzzy},
                     unsigned{m_numbered});
    }

    /// Lets clusters be unfolded by way of their descendants, in memory of the order of what the
    /// nodes take.
    void keepRows() {
        m_unwrapper.keepRows((std::size_t{1} << 22) + 8 * m_hier.nodes().size(),
                             [this](const Node<LinksT>& node, Share a, Share b) {
                                 std::string text;
                                 std::string other;
                                 appendMember(text, node, a);
                                 appendMember(other, node, b);
                                 return text == other;
                             });
    }

    /// The row of a cluster.
    const std::string& row(const ClusterT& cl) { return row(cl, m_unwrapper.unwrap(cl)); }
    const std::string& row(const ClusterT& cl, const Members& members) {
        m_report.advance();
        m_row.clear();
        if (m_numbered) {
            detail::appendId(m_row, cl.id);
            m_row += "> ";
        }
        bool any = false;
        for (const auto& [node, share] : members) {
            if (m_fltMembers && (node->id & FILTERED)) continue;
            any = true;
            appendMember(m_row, *node, share);
            m_row += ' ';
        }
        if (any) m_row += '\n';
        return m_row;
    }

    void appendMember(std::string& text, const Node<LinksT>& node, Share share) const {
        naming::appendQuoted(text, node.id, m_hier.labels());
        if (!m_fuzzy) return;
        const Size owners = node.owners.size();
        if (equal(share, 1 / static_cast<Share>(owners), owners)) return;
        text += ':';
        detail::appendShare(text, share);
    }

    void put(const std::string& text, Size fout) {
        std::fwrite(text.data(), 1, text.size(), m_fouts[fout].fdescr());
    }

    void print(const ClusterT& cl, Size fout) { put(row(cl), fout); }

    void eachLevel(LevelNum blev, LevelNum elev) {
        for (LevelNum ilev = 0; ilev < elev; ++ilev)
            for (const ClusterT& cl : m_hier.levels()[ilev].clusters) {
                const LevelNum top = detail::topOf(cl, elev);
                LevelNum l = std::max(blev, ilev);
                if (l >= top) continue;
                const std::string& text = row(cl);
                for (; l < top; ++l) put(text, l - blev);
            }
    }

    std::vector<LevelNum> levelsByRatio(LevelNum blev, LevelNum elev, float ratio) const {
        const auto fullsize = [this](LevelNum i) {
            return static_cast<float>(m_hier.levels()[i].fullsize);
        };
        std::vector<LevelNum> levinds{blev};
        float bound = fullsize(blev) * ratio;
        Size left = m_fouts.size() - 1;
        LevelNum i = blev + 1;
        for (; left != 0 && i < elev; ++i) {
            if (bound < fullsize(i)) continue;
            levinds.push_back(i);
            bound = fullsize(i) * ratio;
            --left;
        }
        if (left == 0) return levinds;
        if (i - 1 == levinds.back() || left != 1)
            throw std::logic_error(
                "output(), fouts size exceeds the number of the hierarchy levels\n");
        levinds.push_back(i - 1);
        return levinds;
    }

    void listedLevels(const std::vector<LevelNum>& levinds, LevelNum elev) {
        Size first = 0;
        for (LevelNum ilev = 0; ilev < elev; ++ilev) {
            while (first != levinds.size() && levinds[first] < ilev) ++first;
            for (const ClusterT& cl : m_hier.levels()[ilev].clusters) {
                const LevelNum top = detail::topOf(cl, elev);
                if (first == levinds.size() || levinds[first] >= top) continue;
                const std::string& text = row(cl);
                for (Size i = first; i != levinds.size() && levinds[i] < top; ++i) put(text, i);
            }
        }
    }

    const Hierarchy<LinksT>& m_hier;
    FileWrappers& m_fouts;
    const bool m_fuzzy;
    const bool m_numbered;
    const bool m_fltMembers;
    detail::Unwrapper<LinksT> m_unwrapper;
    std::string m_row;
    ProgressReporter m_report;
};

}  // namespace

template <class LinksT>
void CnlPrinter<LinksT>::output(FileWrappers& fouts, ClsOutFmtBase clsfmt, bool fltMembers,
                                LevelNum blev, LevelNum elev, float levStepRatio,
                                const SignifclsOptions* signif) const {
    if (fouts.empty() || m_hier.levels().empty()) return;
    if (isset(clsfmt, ClsOutFmt::PURE)) clsfmt = toMask(ClsOutFmt::SIMPLE);
    Writer<LinksT> writer(m_hier, fouts, clsfmt, fltMembers);
    const ClsOutFmt structure = toClsOutFmt(clsfmt & toMask(ClsOutFmt::MASK_OUTSTRUCT));
    switch (structure) {
        case ClsOutFmt::ROOT: writer.root(); break;
        case ClsOutFmt::PERLEVEL: writer.levels(0, elev, levStepRatio); break;
        case ClsOutFmt::CUSTLEVS:
        case ClsOutFmt::CUSTLEVS_APPROXNUM: writer.levels(blev, elev, levStepRatio); break;
        case ClsOutFmt::ALLCLS: writer.allClusters(); break;
        case ClsOutFmt::SIGNIF_OWNSDIR:
        case ClsOutFmt::SIGNIF_OWNADIR:
        case ClsOutFmt::SIGNIF_OWNSHIER:
        case ClsOutFmt::SIGNIF_OWNAHIER:
        case ClsOutFmt::SIGNIF_DEFAULT:
            VORL_ASSERT(signif,
                        "output(), significant clusters output options should be specified");
            writer.significant(structure, *signif);
            break;
        default:
            throw std::invalid_argument(
                "output(), undefined ClsOutFmt: " + strClsOutFmt(clsfmt, true) + "\n");
    }
    for (const FileWrapper& fout : fouts) detail::checkWritten(fout, "CnlPrinter::output()");
}

template class CnlPrinter<UnweightedLinks>;
template class CnlPrinter<WeightedLinks>;

}  // namespace vorl
