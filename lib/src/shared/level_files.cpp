#include <vorl/fileio/iotypes.hpp>
#include <vorl/fileio/printer_cnl.hpp>
#include <vorl/fileio/printer_rhb.hpp>
#include <vorl/hierarchy/cluster.hpp>
#include <vorl/hierarchy/level.hpp>
#include <vorl/shared/operations.hpp>
#include <vorl/types/plain_text.hpp>
#include <vorl/types/text.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace vorl {

namespace fs = std::filesystem;

namespace {

fs::filesystem_error failure(const fs::path& path, int err) {
    const detail::PlainLocale plain;
    return fs::filesystem_error("writing of clusters", path,
                                std::error_code(err != 0 ? err : EIO, std::generic_category()));
}

FileWrapper create(const fs::path& path) {
    std::FILE* const file = std::fopen(path.c_str(), "w");
    if (!file) throw failure(path, errno);
    return FileWrapper(file);
}

void close(FileWrapper& file, const fs::path& path) {
    errno = 0;
    if (file.reset() != 0) throw failure(path, errno);
}

}  // namespace

template <class LinksT>
std::vector<LevelNum> levelsByStep(const Hierarchy<LinksT>& hier, LevelNum first, LevelNum last,
                                   float step) {
    if (first > last || last >= hier.levels().size())
        throw std::out_of_range("levelsByStep(), there are no levels " + std::to_string(first) +
                                " to " + std::to_string(last) + "\n");
    if (!(step >= 0 && step <= 1))
        throw std::invalid_argument("levelsByStep(), the step must be from 0 to 1\n");
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

template <class LinksT>
void writeLevels(const Hierarchy<LinksT>& hier, const std::vector<LevelNum>& levels,
                 ClsOutFmtBase format, const std::string& clsfile) {
    if (levels.empty() || levels.back() >= hier.levels().size())
        throw std::out_of_range("writeLevels(), there are no such levels\n");
    const fs::path path = clsfile;
    const std::string stem = path.stem().string();
    const fs::path folder = path.parent_path() / stem;
    fs::create_directories(folder);
    format = static_cast<ClsOutFmtBase>((format & ~toMask(ClsOutFmt::MASK_OUTSTRUCT)) |
                                        toMask(ClsOutFmt::CUSTLEVS));
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
                            (stem + "_" +
                             pad(std::to_string(levels[i]), static_cast<std::uint8_t>(width), '0') +
                             path.extension().string()));
            files.push_back(create(names.back()));
        } while (++i < levels.size() && levels[i] == levels[i - 1] + 1 && files.size() < most);
        printer.output(files, format, false, first, first + static_cast<LevelNum>(files.size()), 1);
        for (std::size_t f = 0; f < files.size(); ++f) close(files[f], names[f]);
    }
    writeDescription(hier, path.parent_path() / (stem + ".rhb"));
}

template <class LinksT>
void writeDescription(const Hierarchy<LinksT>& hier, const std::string& file) {
    const fs::path path = file;
    if (path.has_parent_path()) fs::create_directories(path.parent_path());
    FileWrapper out = create(path);
    RhbPrinter<LinksT>(hier).output(out);
    close(out, path);
}

#define VORL_INSTANTIATE(LinksT)                                                               \
    template VORL_API std::vector<LevelNum> levelsByStep(const Hierarchy<LinksT>&, LevelNum,   \
                                                         LevelNum, float);                     \
    template VORL_API std::vector<LevelNum> levelsAround(const Hierarchy<LinksT>&, Id);        \
    template VORL_API void writeLevels(const Hierarchy<LinksT>&, const std::vector<LevelNum>&, \
                                       ClsOutFmtBase, const std::string&);                     \
    template VORL_API void writeDescription(const Hierarchy<LinksT>&, const std::string&);

VORL_INSTANTIATE(UnweightedLinks)
VORL_INSTANTIATE(WeightedLinks)

#undef VORL_INSTANTIATE

}  // namespace vorl
