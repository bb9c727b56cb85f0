#include <vorl/reading/cluster_levels.hpp>

#include <vorl/reading/file_kind.hpp>
#include <vorl/reading/lines.hpp>
#include <vorl/reading/pack.hpp>
#include <vorl/reading/tokens.hpp>

#include <algorithm>
#include <set>
#include <utility>

namespace vorl {

const std::string& ClusterLevels::name() const {
    const ClustersFile* const file = list();
    return file ? file->name : std::get<HierarchyFile>(m_file).name();
}

bool ClusterLevels::severalLevels() const {
    const ClustersFile* const file = list();
    return file ? file->severalLevels : levels() > 1;
}

bool ClusterLevels::likeTable() const {
    const ClustersFile* const file = list();
    if (!file || file->numbered || file->clusters.size() < 4 || !file->shares.empty()) return false;
    std::set<Id> firsts;
    std::set<Id> seconds;
    for (const auto& cluster : file->clusters) {
        const auto members = file->membersOf(cluster);
        if (members.size() != 2 || !firsts.insert(members[0]).second) return false;
        seconds.insert(members[1]);
    }
    return 2 * seconds.size() <= firsts.size();
}

ClustersFile ClusterLevels::flat() const {
    const ClustersFile* const file = list();
    ClustersFile result;
    if (file)
        result = *file;
    else if (levels() != 0)
        result = level(levels() - 1);
    result.name = name();
    result.requireClusters();
    return result;
}

LevelNum ClusterLevels::levels() const {
    if (isHierarchy()) return std::get<HierarchyFile>(m_file).levels();
    return severalLevels() ? static_cast<LevelNum>(nested().size()) : 1;
}

const std::vector<std::vector<Id>>& ClusterLevels::nested() const {
    if (m_nested.empty()) m_nested = std::get<ClustersFile>(m_file).nestedLevels();
    return m_nested;
}

ClustersFile ClusterLevels::level(LevelNum level) const {
    if (isHierarchy()) return std::get<HierarchyFile>(m_file).cut(level);
    const auto& file = std::get<ClustersFile>(m_file);
    return severalLevels() ? file.selected(nested()[level]) : file;
}

std::vector<Id> ClusterLevels::membersOf(Id cluster) const {
    std::vector<Id> members;
    if (const ClustersFile* const file = list()) {
        const auto found = std::find_if(
            file->clusters.begin(), file->clusters.end(), [&](const ClustersFile::Cluster& other) {
                return file->numbered
                           ? other.id == cluster
                           : &other - file->clusters.data() + std::ptrdiff_t{1} == cluster;
            });
        if (found == file->clusters.end())
            throw InputError(name() + ": there is no cluster " + std::to_string(cluster));
        const auto own = file->membersOf(*found);
        members.assign(own.begin(), own.end());
    } else {
        const auto& hierarchy = std::get<HierarchyFile>(m_file);
        for (const auto& member : hierarchy.members(hierarchy.cluster(cluster)))
            members.push_back(hierarchy.id(member.item));
    }
    std::sort(members.begin(), members.end());
    return members;
}

std::shared_ptr<Labels> ClusterLevels::labels() const {
    const ClustersFile* const file = list();
    return file ? file->labels : std::get<HierarchyFile>(m_file).labels();
}

ClusterLevels readClusterLevels(const std::string& file, ClustersFormat format,
                                std::shared_ptr<Labels> known) {
    const auto source = openSource(file);
    Lines lines(*source, file);
    if (format == ClustersFormat::UNKNOWN) {
        if (fileKind(file, lines) == FileKind::NETWORK)
            throw InputError(InputError::Parts{.file = file,
                                               .wrong = std::string("the file has ") +
                                                        nameOf(FileKind::NETWORK) +
                                                        ", clusters are expected"});
        lines.hold();
        lines.rewind(true);
        const bool hierarchy = isHierarchy(lines);
        lines.rewind(true);
        const bool table = isTableName(file) || beginsWithNames(lines);
        format = hierarchy ? ClustersFormat::RHB
                 : table   ? ClustersFormat::TABLE
                           : ClustersFormat::CNL;
        lines.rewind(false);
    }
    if (format == ClustersFormat::RHB)
        return ClusterLevels(parseHierarchy(lines, std::move(known)));
    return ClusterLevels(format == ClustersFormat::TABLE ? parseTable(lines, std::move(known))
                                                         : parseClusters(lines, std::move(known)));
}

bool isTableName(const std::string& file) {
    const std::string name = plainName(lowered(file));
    return name.ends_with(".tsv") || name.ends_with(".csv") || name.ends_with(".clu") ||
           name.ends_with(".json");
}

}  // namespace vorl
