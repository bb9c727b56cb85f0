#include "hierarchy_files.hpp"

#include "errors.hpp"
#include "output_tree.hpp"

#include <vorl/fileio/iotypes.hpp>
#include <vorl/fileio/printer_cnl.hpp>
#include <vorl/fileio/printer_rhb.hpp>
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

/// Opens a file for the library's writers.
FileWrapper create(const fs::path& path) {
    std::FILE* const file = std::fopen(path.c_str(), "w");
    if (!file) throw InputError(path.filename().string() + ": " + std::strerror(errno));
    return FileWrapper(file);
}

void close(FileWrapper& file, const fs::path& path) {
    errno = 0;
    if (file.reset() != 0)
        throw InputError(path.filename().string() + ": " + std::strerror(errno ? errno : EIO));
}

/// The levels from first to last, each with at most the given ratio of the clusters of the one
/// before; the last level joins where it lies nearer to the next step than to the one before.
template <class LinksT>
std::vector<LevelNum> levelsByStep(const Hierarchy<LinksT>& hier, LevelNum first, LevelNum last,
                                   float step) {
    const auto size = [&](LevelNum i) { return hier.levels()[i].fullsize; };
    std::vector<LevelNum> levels;
    Id next = size(first);
    for (LevelNum i = first; i <= last; ++i) {
        if (step < 1 && size(i) > next) continue;
        levels.push_back(i);
        next = static_cast<Id>(static_cast<float>(size(i)) * step);
    }
    if (levels.back() != last && step > 0) {
        const float middle = (static_cast<float>(next) + static_cast<float>(next) / step) * 0.5f;
        if (middle >= static_cast<float>(size(last))) levels.push_back(last);
    }
    return levels;
}

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

/// The levels that have the wanted number of clusters, with one on each side of them.
template <class LinksT>
std::vector<LevelNum> levelsAround(const Hierarchy<LinksT>& hier, Id wanted) {
    const auto& levels = hier.levels();
    const auto found = std::find_if(levels.begin(), levels.end(),
                                    [&](const auto& level) { return level.fullsize <= wanted; });
    auto end = std::find_if(found, levels.end(),
                            [&](const auto& level) { return level.fullsize < wanted; });
    if (end != levels.end()) ++end;
    std::vector<LevelNum> result;
    for (auto level = found == levels.begin() ? found : found - 1; level != end; ++level)
        result.push_back(static_cast<LevelNum>(level - levels.begin()));
    return result;
}

/// Writes one file for each level, in a folder of the file's name without its extension.
template <class LinksT>
void writeLevels(const Hierarchy<LinksT>& hier, const std::vector<LevelNum>& levels,
                 ClsOutFmtBase format, const fs::path& path) {
    const fs::path folder = path.parent_path() / path.stem();
    fs::create_directories(folder);
    const std::size_t width = levels.back() == 0 ? 0 : std::to_string(levels.back()).size();
    const CnlPrinter<LinksT> printer(hier);
    // A process may not open any number of files.
    constexpr std::size_t most = 256;
    for (std::size_t i = 0; i < levels.size();) {
        // Levels that follow each other are written at once, which unfolds each cluster once.
        FileWrappers files;
        std::vector<fs::path> names;
        const LevelNum first = levels[i];
        do {
            names.push_back(folder /
                            (path.stem().string() + "_" +
                             pad(std::to_string(levels[i]), static_cast<std::uint8_t>(width), '0') +
                             path.extension().string()));
            files.push_back(create(names.back()));
        } while (++i < levels.size() && levels[i] == levels[i - 1] + 1 && files.size() < most);
        printer.output(files, format, false, first, first + static_cast<LevelNum>(files.size()), 1);
        for (std::size_t f = 0; f < files.size(); ++f) close(files[f], names[f]);
    }
}

template <class LinksT>
void describe(const Hierarchy<LinksT>& hier, const fs::path& path) {
    fs::create_directories(path.parent_path());
    FileWrapper file = create(path);
    RhbPrinter<LinksT>(hier).output(file);
    close(file, path);
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
void write(const Hierarchy<LinksT>& hier, const OutputRequest& request, const fs::path& path) {
    ClsOutFmtBase format = toMask(request.format);
    if (request.maxShare) format |= ClsOutFmt::MAXSHARE;
    // The library knows no way to write all levels, or those around a number, for any hierarchy.
    if (goesToFolder(request)) {
        format |= ClsOutFmt::CUSTLEVS;
        writeLevels(hier,
                    request.levels == Levels::AROUND ? levelsAround(hier, *request.clusters)
                                                     : levelsInRange(hier, request),
                    format, path);
        describe(hier, path.parent_path() / (path.stem().string() + ".rhb"));
        return;
    }
    OutputOptions options;
    options.clsfile = path.string();
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
    hier.output(options);
    // The library only warns of a file that it can't create.
    fs::path description = path;
    for (const fs::path& file : {path, description.replace_extension(".rhb")})
        if (!fs::exists(file) && (file == path || request.levels != Levels::HIERARCHY))
            throw InputError(request.file + ": " + file.filename().string() + " can't be created");
}

}  // namespace

namespace {

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
}

template <class LinksT>
void writeHierarchy(const Hierarchy<LinksT>& hier, const OutputRequest& request,
                    const std::string& path) {
    try {
        if (!hier.levels().empty())
            write(hier, request, path);
        else if (request.levels == Levels::HIERARCHY)
            describe(hier, path);
        else
            throw InputError(request.file + ": there is nothing to write, no cluster was formed");
    } catch (const std::ios_base::failure& err) {
        throw InputError(request.file + ": " + err.code().message());
    } catch (const fs::filesystem_error& err) {
        throw InputError(request.file + ": " + err.code().message());
    }
}

template void writeHierarchy(const Hierarchy<UnweightedLinks>&, const OutputRequest&,
                             const std::string&);
template void writeHierarchy(const Hierarchy<WeightedLinks>&, const OutputRequest&,
                             const std::string&);

}  // namespace vorl::app
