#include <vorl/fileio/printer_rhb.hpp>

#include <algorithm>
#include <cerrno>
#include <ios>

namespace vorl {

template <class ItemT>
void outpel(const ItemT& item, FileWrapper& fout) {
    std::FILE* file = fout.fdescr();
    std::fprintf(file, "%u>", item.id);
    const auto& owners = item.owners;
    const bool shares =
        owners.size() >= 2 && std::any_of(owners.begin() + 1, owners.end(), [&](const auto& owner) {
            return owner.numac != owners.front().numac;
        });
    for (const auto& owner : owners) {
        if (shares)
            std::fprintf(file, " %u:%G", owner.dest->id,
                         static_cast<double>(static_cast<float>(owner.numac) /
                                             static_cast<float>(item.totac)));
        else
            std::fprintf(file, " %u", owner.dest->id);
    }
    std::fputc('\n', file);
}

template <class LinksT>
void RhbPrinter<LinksT>::output(FileWrapper& fout) const {
    std::FILE* file = fout.fdescr();
    errno = 0;
    std::fprintf(file, "/Hierarchy levels:%lu clusters:%lu\n", m_hier.levels().size(),
                 m_hier.score().clusters);
    std::fprintf(file, "\n/Nodes %lu\n", m_hier.nodes().size());
    std::fputs("# node1_id> owner1_id[:share1] owner2_id[:share2] ...\n", file);
    for (const auto& node : m_hier.nodes()) outpel(node, fout);
    Id index = 0;
    for (const auto& level : m_hier.levels()) {
        std::fprintf(file, "\n/Level %u pure:%lu extended:%u\n", index++, level.clusters.size(),
                     level.fullsize);
        for (const auto& cl : level.clusters) outpel(cl, fout);
    }
    if (std::fflush(file) != 0 || std::ferror(file))
        throw std::ios_base::failure("RhbPrinter::output(), writing failed",
                                     std::error_code(errno ? errno : EIO, std::generic_category()));
}

#define VORL_INSTANTIATE(LinksT)                                      \
    template class RhbPrinter<LinksT>;                                \
    template VORL_API void outpel(const Node<LinksT>&, FileWrapper&); \
    template VORL_API void outpel(const Cluster<LinksT>&, FileWrapper&);

VORL_INSTANTIATE(UnweightedLinks)
VORL_INSTANTIATE(WeightedLinks)

}  // namespace vorl
