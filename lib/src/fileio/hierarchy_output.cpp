// The files of a hierarchy: their names, and the levels that go into them.
#include "cluster_choice.hpp"

#include <vorl/fileio/printer_cnl.hpp>
#include <vorl/fileio/printer_rhb.hpp>
#include <vorl/types/assert.hpp>
#include <vorl/types/plain_text.hpp>
#include <vorl/types/text.hpp>
#include <vorl/types/trace.hpp>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <ios>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorl {

namespace {

/// A name split into its base and its extension, the dot included.
struct FileName {
    std::string base;
    std::string ext;

    explicit FileName(const std::string& name) : base(name) {
        const std::size_t dot = name.rfind('.');
        if (dot == std::string::npos || name.find('/', dot) != std::string::npos) return;
        base = name.substr(0, dot);
        ext = name.substr(dot);
    }
};

/// The digits of a number whose logarithm may be that of 0.
std::uint8_t digitsOf(LevelNum number) {
    const double digits = std::trunc(std::log10(static_cast<double>(number)) + 1);
    return digits > 0 ? static_cast<std::uint8_t>(digits) : std::uint8_t{0};
}

/// The opened files with their names.
class OutputFiles {
public:
    explicit OutputFiles(FileName name) : m_name(std::move(name)) {}

    FileWrappers& files() { return m_files; }
    bool empty() const { return m_files.empty(); }
    void reserve(Size count) { m_files.reserve(count); }

    /// @param failure what is told, behind the name, where the file can't be opened
    bool open(const std::string& name, const char* caller, const char* failure) {
        FileWrapper file(std::fopen(name.c_str(), "w"));
        if (!file.fdescr()) {
            const detail::PlainLocale plain;
            std::perror(("WARNING " + std::string(caller) + ", " + name + failure).c_str());
            return false;
        }
        m_files.push_back(std::move(file));
        m_names.push_back(name);
        return true;
    }

    /// Opens the file of one level.
    bool makeFileRaw(LevelNum level, std::uint8_t width) {
        const std::size_t slash = m_name.base.rfind('/');
        const std::string last =
            slash == std::string::npos ? m_name.base : m_name.base.substr(slash + 1);
        return open(
            m_name.base + "/" + last + "_" + pad(std::to_string(level), width, '0') + m_name.ext,
            "makeFileRaw()",
            " can't be created, skipping the clusters output for this and following "
            "levels");
    }

    /// Opens the files of the levels from blev up to below elev.
    void makeFiles(LevelNum elev, LevelNum blev) {
        VORL_ASSERT(blev <= elev, "makeFiles(), arguments validation failed");
        if (elev == 0) return;
        reserve(elev - blev);
        const std::uint8_t width = digitsOf(elev);
        for (LevelNum i = blev; i < elev && makeFileRaw(i, width); ++i) {
        }
    }

    /// Runs a writer of the files; a failure tells the name of the file.
    template <class WriterT>
    void write(WriterT writer) {
        const detail::PlainLocale plain;
        try {
            writer();
        } catch (const std::ios_base::failure& err) {
            for (std::size_t i = 0; i < m_files.size(); ++i)
                if (std::ferror(m_files[i].fdescr()))
                    throw std::ios_base::failure("output(), writing of " + m_names[i] + " failed",
                                                 err.code());
            throw;
        }
        for (std::size_t i = 0; i < m_files.size(); ++i) {
            errno = 0;
            if (m_files[i].reset() != 0)
                throw std::ios_base::failure(
                    "output(), writing of " + m_names[i] + " failed",
                    std::error_code(errno ? errno : EIO, std::generic_category()));
        }
    }

private:
    FileName m_name;
    FileWrappers m_files;
    std::vector<std::string> m_names;
};

/// The levels that a custom range selects.
template <class LinksT>
class LevelSelection {
public:
    LevelSelection(const Hierarchy<LinksT>& hier, const CustlevsOptions& opts, bool approx)
        : m_levels(hier.levels()),
          m_levnum(static_cast<LevelNum>(m_levels.size())),
          m_ratio(opts.clsrstep),
          m_approx(approx) {
        const Id bottom = m_levels.front().fullsize;
        const Id root = static_cast<Id>(hier.root().size());
        if (opts.levmarg == LevMargKind::LEVSTEPNUM)
            setBySteps(opts, bottom, root);
        else
            setByIndices(opts, bottom, root);
        const LevelNum wanted = m_wanted = approx ? m_clsmin : m_clsmax;
        m_levmax = std::min(m_levmax, m_levnum);
        m_levmin = m_levmin == LEVEL_NONE ? 0 : std::min(m_levmin, m_levmax);
        if (wanted >= bottom / 2 || (m_levmin != 0 && m_levmin <= m_levnum / 2))
            findFromBottom();
        else
            findFromTop();
    }

    /// Opens the files of the selected levels.
    /// @param[out] blev the first of them
    /// @return the ratio of levels for the printer
    float open(OutputFiles& files, LevelNum& blev) const {
        blev = m_first;
        if (m_first == LEVEL_NONE) {
            blev = 0;
            return 0;
        }
        if (m_approx) {
            LevelNum end = climb([](LevelNum) {});
            if (m_first != 0) --blev;
            if (end < m_levnum) ++end;
            VORL_ASSERT(end <= m_levnum, "output(), levels indexes validation failed");
            files.makeFiles(end, blev);
            return 0;
        }
        if (m_ratio == 0) {
            files.makeFiles(climb([](LevelNum) {}), blev);
            return 0;
        }
        const std::vector<LevelNum> indices = indicesByRatio();
        if (indices.empty()) return m_ratio;
        files.reserve(indices.size());
        const std::uint8_t width = digitsOf(indices.back());
        for (const LevelNum index : indices)
            if (!files.makeFileRaw(index, width)) break;
        return m_ratio;
    }

private:
    void setByIndices(const CustlevsOptions& opts, Id bottom, Id root) {
        VORL_ASSERT(opts.levmarg == LevMargKind::NONE || opts.levmarg == LevMargKind::CLSNUM ||
                        opts.levmarg == LevMargKind::LEVID,
                    "output(), levmarg should be specified for the CUSTLEVSX");
        m_levmin = opts.margmin;
        m_levmax = opts.margmax;
        m_clsmax = bottom;
        m_clsmin = root;
    }

    void setBySteps(const CustlevsOptions& opts, Id bottom, Id root) {
        const auto after = [&](LevelNum steps, Id unset) {
            if (steps == 0 || steps == LEVEL_NONE) return unset;
            return static_cast<Id>(
                std::pow(static_cast<double>(opts.clsrstep), static_cast<double>(steps)) * bottom);
        };
        const Id top = after(opts.margmin, bottom);
        const Id low = after(opts.margmax, root);
        m_clsmax = top == ID_NONE || top > bottom ? bottom : std::max(top, root);
        m_clsmin = low == ID_NONE || low < root ? root : std::min(low, m_clsmax);
    }

    void findFromBottom() {
        for (LevelNum i = 0; i < m_levnum; ++i)
            if (m_levels[i].fullsize <= m_wanted && i >= m_levmin) {
                m_first = i;
                return;
            }
    }

    void findFromTop() {
        LevelNum i = m_levnum - 1;
        while (i != 0 && !(m_levels[i].fullsize >= m_wanted && (m_levmin == 0 || i <= m_levmin)))
            --i;
        if (m_wanted < m_levels[i].fullsize) ++i;
        if (i < m_levnum) m_first = i;
    }

    /// Visits the levels from the first one on while they are large enough and not too high.
    /// @return the index at which the walk stopped
    template <class VisitT>
    LevelNum climb(VisitT visit) const {
        LevelNum i = m_first;
        for (; i < m_levnum && m_levels[i].fullsize >= m_clsmin && i <= m_levmax; ++i) visit(i);
        return i;
    }

    std::vector<LevelNum> indicesByRatio() const {
        std::vector<LevelNum> indices;
        Id next = m_levels[m_first].fullsize;
        const LevelNum end = climb([&](LevelNum i) {
            const Id size = m_levels[i].fullsize;
            if (size > next) return;
            indices.push_back(i);
            next = static_cast<Id>(static_cast<float>(size) * m_ratio);
        });
        if (end == 0 || indices.empty() || end - 1 == indices.back()) return indices;
        // The last level joins if it lies nearer to the next step than to the one before.
        const float middle = (static_cast<float>(next) + static_cast<float>(next) / m_ratio) * 0.5f;
        if (middle >= static_cast<float>(m_levels[end - 1].fullsize)) indices.push_back(end - 1);
        return indices;
    }

    const std::vector<Level<LinksT>>& m_levels;
    const LevelNum m_levnum;
    const float m_ratio;
    const bool m_approx;
    LevelNum m_levmin = LEVEL_NONE;
    LevelNum m_levmax = LEVEL_NONE;
    Id m_clsmin = 0;
    Id m_clsmax = 0;
    Id m_wanted = 0;
    LevelNum m_first = LEVEL_NONE;
};

}  // namespace

template <class LinksT>
void Hierarchy<LinksT>::output(const OutputOptions& opts) const {
    const ClsOutFmt structure = toClsOutFmt(opts.clsfmt & toMask(ClsOutFmt::MASK_OUTSTRUCT));
    if (structure == ClsOutFmt::NONE || m_levels.empty()) {
        VORL_TRACE("WARNING output(), the output is empty, outp_clsfmt: 0x%X, hier_levnum: %lu\n",
                   unsigned{toMask(structure)}, m_levels.size());
        return;
    }
    VORL_ASSERT(!opts.clsfile.empty() && opts.clsfile != "." && opts.clsfile != "..",
                "output(), base clusters output file should be valid");

    const FileName name(opts.clsfile);
    const bool perlevel = structure == ClsOutFmt::PERLEVEL;
    const bool custlevs = anycustlevs(opts.clsfmt);
    const bool signif = anysignif(opts.clsfmt);
    const std::size_t slash = name.base.rfind('/');
    if (perlevel || custlevs)
        ensureDir(name.base);
    else if (slash != std::string::npos)
        ensureDir(name.base.substr(0, slash));

    OutputFiles fouts(name);
    LevelNum blev = 0;
    float levStepRatio = 0;
    if (perlevel) {
        fouts.makeFiles(static_cast<LevelNum>(m_levels.size()), 0);
    } else if (custlevs) {
        const bool approx = structure == ClsOutFmt::CUSTLEVS_APPROXNUM;
        VORL_ASSERT(!approx || (opts.custlevs.clsrstep >= 0 && opts.custlevs.clsrstep <= 1),
                    "output(), clsrstep should E [0, 1]");
        levStepRatio = LevelSelection(*this, opts.custlevs, approx).open(fouts, blev);
    } else if (signif || structure == ClsOutFmt::ROOT || structure == ClsOutFmt::ALLCLS ||
               structure == ClsOutFmt::HIER) {
        fouts.open(opts.clsfile, "output()", " can't be created, skipping the clusters output");
    } else {
        throw std::invalid_argument("output(), unexpected value of ClsOutFmt\n");
    }
    if (fouts.empty()) {
        VORL_TRACE(
            "WARNING output(), files output is omitted because there is nothing to output.\n");
        return;
    }

    const auto describe = [this](OutputFiles& files) {
        files.write([&] { RhbPrinter<LinksT>(*this).output(files.files().front()); });
    };
    if (structure == ClsOutFmt::HIER) {
        describe(fouts);
        return;
    }
    if (signif) detail::resolveMinSize(opts.signifcls, m_nodes.size());
    fouts.write([&] {
        CnlPrinter<LinksT>(*this).output(fouts.files(), opts.clsfmt, opts.fltMembers, blev,
                                         LEVEL_NONE, levStepRatio,
                                         signif ? &opts.signifcls : nullptr);
    });
    OutputFiles description(name);
    if (description.open(name.base + ".rhb", "output()",
                         " can't be created, skipping additional output of the hierarchy"))
        describe(description);
}

template void Hierarchy<UnweightedLinks>::output(const OutputOptions&) const;
template void Hierarchy<WeightedLinks>::output(const OutputOptions&) const;

}  // namespace vorl
