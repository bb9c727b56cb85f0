#include <vorl/fileio/printer_rhb.hpp>

#include "text_writer.hpp"

#include <vorl/types/progress.hpp>

#include <algorithm>

namespace vorl {

namespace {

/// @param labels the names of nodes, null for clusters
template <class ItemT>
void print(const ItemT& item, const Labels* labels, FileWrapper& fout) {
    const auto& owners = item.owners;
    const bool shares =
        owners.size() >= 2 && std::any_of(owners.begin() + 1, owners.end(), [&](const auto& owner) {
            return owner.numac != owners.front().numac;
        });
    std::string text;
    naming::appendQuoted(text, item.id, labels);
    text += '>';
    for (const auto& owner : owners) {
        text += ' ';
        detail::appendId(text, owner.dest->id);
        if (!shares) continue;
        text += ':';
        detail::appendShare(text, static_cast<float>(owner.numac) / static_cast<float>(item.totac));
    }
    text += '\n';
    std::fwrite(text.data(), 1, text.size(), fout.fdescr());
}

}  // namespace

template <class ItemT>
void outpel(const ItemT& item, FileWrapper& fout) {
    print(item, nullptr, fout);
}

template <class LinksT>
void RhbPrinter<LinksT>::output(FileWrapper& fout) const {
    const ProgressReporter report;
    report.begin("writing the hierarchy", m_hier.nodes().size() + m_hier.score().clusters);
    const auto put = [&](const auto& item, const Labels* labels) {
        report.advance();
        print(item, labels, fout);
    };
    std::FILE* file = fout.fdescr();
    std::fprintf(file, "/Hierarchy levels:%lu clusters:%lu\n", m_hier.levels().size(),
                 m_hier.score().clusters);
    std::fprintf(file, "\n/Nodes %lu\n", m_hier.nodes().size());
    std::fputs("# node1_id> owner1_id[:share1] owner2_id[:share2] ...\n", file);
    for (const auto& node : m_hier.nodes()) put(node, m_hier.labels());
    Id index = 0;
    for (const auto& level : m_hier.levels()) {
        std::fprintf(file, "\n/Level %u pure:%lu extended:%u\n", index++, level.clusters.size(),
                     level.fullsize);
        for (const auto& cl : level.clusters) put(cl, nullptr);
    }
    detail::checkWritten(fout, "RhbPrinter::output()");
}

#define VORL_INSTANTIATE(LinksT)                                      \
    template class RhbPrinter<LinksT>;                                \
    template VORL_API void outpel(const Node<LinksT>&, FileWrapper&); \
    template VORL_API void outpel(const Cluster<LinksT>&, FileWrapper&);

VORL_INSTANTIATE(UnweightedLinks)
VORL_INSTANTIATE(WeightedLinks)

#undef VORL_INSTANTIATE

}  // namespace vorl
