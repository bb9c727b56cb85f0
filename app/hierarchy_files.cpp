#include "hierarchy_files.hpp"

#include "errors.hpp"
#include "folder_names.hpp"
#include "output_tree.hpp"

#include <vorl/fileio/hierarchy_table.hpp>
#include <vorl/shared/operations.hpp>
#include <vorl/types/text.hpp>

#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <ios>
#include <vector>

namespace vorl::app {

namespace fs = std::filesystem;

namespace {

template <class LinksT>
std::vector<LevelNum> levelsInRange(const Hierarchy<LinksT>& hier, const OutputRequest& request) {
    const LevelNum count = static_cast<LevelNum>(hier.levels().size());
    const LevelNum first = request.levelMin.value_or(0);
    if (first >= count)
        throw InputError("the hierarchy has " + std::to_string(count) +
                         " levels, there is no level " + std::to_string(first));
    const LevelNum last = std::min(request.levelMax.value_or(count - 1), count - 1);
    return levelsByStep(hier, first, last, request.levelStep.value_or(1));
}

void setSignificance(SignifclsExtoptions& options, const OutputRequest& request) {
    options.reset(true);
    options.densdrop = request.densityDrop.value_or(options.densdrop);
    options.wrstep = request.weightStep.value_or(options.wrstep);
    options.wrange = request.weightRange.value_or(options.wrange);
    options.szmin = request.minSize.value_or(0);
    options.setClszminf(request.minSizeBy);
}

template <class LinksT>
std::vector<LevelNum> levelsOf(const Hierarchy<LinksT>& hier, const OutputRequest& request) {
    return request.levels == Levels::AROUND ? levelsAround(hier, *request.clusters)
                                            : levelsInRange(hier, request);
}

/// What is written in one file.
OutputOptions structureOf(const OutputRequest& request, ClsOutFmtBase format) {
    OutputOptions options;
    switch (request.levels) {
        case Levels::ROOT: format |= ClsOutFmt::ROOT; break;
        case Levels::HIERARCHY: format |= ClsOutFmt::HIER; break;
        case Levels::SIGNIFICANT:
            format |= ClsOutFmt::SIGNIF_DEFAULT;
            setSignificance(options.signifcls, request);
            break;
        default: format |= ClsOutFmt::ALLCLS;
    }
    options.clsfmt = format;
    return options;
}

template <class LinksT>
void write(const Hierarchy<LinksT>& hier, const OutputRequest& request, const fs::path& path) {
    ClsOutFmtBase format = toMask(request.format);
    if (request.maxShare) format |= ClsOutFmt::MAXSHARE;
    // The library knows no way to write all levels, or those around a number, for any hierarchy.
    if (goesToFolder(request)) {
        writeLevels(hier, levelsOf(hier, request), format, path.string());
        return;
    }
    OutputOptions options = structureOf(request, format);
    options.clsfile = path.string();
    hier.output(options);
    // The library only warns of a file that it can't create.
    fs::path description = path;
    for (const fs::path& file : {path, description.replace_extension(".rhb")})
        if (!fs::exists(file) && (file == path || request.levels != Levels::HIERARCHY))
            throw InputError(request.file + ": " + file.filename().string() + " can't be created");
}

/// Whether a file of a level may get the name.
bool isNameOfLevel(const std::string& name, const fs::path& file) {
    const std::string prefix = file.stem().string() + "_";
    const std::string extension = file.extension().string();
    if (name.size() <= prefix.size() + extension.size() || !name.starts_with(prefix) ||
        !name.ends_with(extension))
        return false;
    const auto digits = name.begin() + static_cast<std::ptrdiff_t>(prefix.size());
    return std::all_of(digits, name.end() - static_cast<std::ptrdiff_t>(extension.size()),
                       [](char c) { return c >= '0' && c <= '9'; });
}

/// @throws InputError if there can't be a file of that name
void requirePossible(const fs::path& path) {
    std::error_code err;
    const fs::file_status status = fs::status(path, err);
    if (fs::is_directory(status)) throw InputError(path.string() + ": " + std::strerror(EISDIR));
    if (err && status.type() != fs::file_type::not_found)
        throw InputError(path.string() + ": " + err.message());
}

}  // namespace

void checkTargets(const OutputRequest& request, const std::string& input) {
    const fs::path file = request.file;
    if (file.filename().string().starts_with('.') && !file.has_extension())
        throw UsageError(request.file + ": a name is expected in front of the extension");
    const fs::path description = file.parent_path() / (file.stem().string() + ".rhb");
    requirePossible(description);
    requireOther(description.string(), input);
    if (!goesToFolder(request)) {
        requireOther(request.file, input);
        return;
    }
    std::error_code err;
    const fs::path folder = file.parent_path() / file.stem();
    requirePossible(file.parent_path() /
                    (file.stem().string() + "_65535" + file.extension().string()));
    if (!fs::exists(folder, err)) return;
    if (!fs::is_directory(folder, err))
        throw InputError(folder.string() + ": it isn't a folder, which the files of levels need");
    if (access(folder.c_str(), W_OK | X_OK) != 0)
        throw InputError(folder.string() + ": " + std::strerror(errno));
    if (access(folder.c_str(), R_OK) != 0) return;
    for (const std::string& name : namesIn(folder.string()))
        if (isNameOfLevel(name, file)) requireOther((folder / name).string(), input);
}

template <class LinksT>
void writeHierarchy(const Hierarchy<LinksT>& hier, const OutputRequest& request,
                    const std::string& path) {
    try {
        if (hier.levels().empty())
            throw InputError(request.file + ": there is nothing to write, no cluster was formed");
        write(hier, request, path);
    } catch (const std::ios_base::failure& err) {
        throw InputError(request.file + ": " + err.code().message());
    } catch (const fs::filesystem_error& err) {
        const std::string name = err.path1().filename().string();
        throw InputError((name.empty() ? request.file : name) + ": " + err.code().message());
    }
}

template <class LinksT>
std::string clustersTable(const Hierarchy<LinksT>& hier, const OutputRequest& request,
                          TableForm form) {
    if (goesToFolder(request))
        return tableText(hier, levelsOf(hier, request), request.maxShare, form);
    OutputRequest selected = request;
    if (selected.levels == Levels::HIERARCHY) selected.levels = Levels::ROOT;
    return tableText(
        hier,
        structureOf(selected, toMask(request.maxShare ? ClsOutFmt::MAXSHARE : ClsOutFmt::NONE)),
        form);
}

template std::string clustersTable(const Hierarchy<UnweightedLinks>&, const OutputRequest&,
                                   TableForm);
template std::string clustersTable(const Hierarchy<WeightedLinks>&, const OutputRequest&,
                                   TableForm);
template void writeHierarchy(const Hierarchy<UnweightedLinks>&, const OutputRequest&,
                             const std::string&);
template void writeHierarchy(const Hierarchy<WeightedLinks>&, const OutputRequest&,
                             const std::string&);

}  // namespace vorl::app
