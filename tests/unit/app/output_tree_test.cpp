// Files that appear under their names when all are complete, also where memory fails.
#include "app/output_tree.hpp"

#include "support/folder.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <new>

namespace {

/// The number of allocations that succeed before one fails; none does while it is negative.
thread_local long allocationsLeft = -1;

}  // namespace

void* operator new(std::size_t size) {
    const bool fails = allocationsLeft == 0;
    if (allocationsLeft >= 0) --allocationsLeft;
    if (void* const memory = fails ? nullptr : std::malloc(size)) return memory;
    throw std::bad_alloc();
}
// Temporary buffers of the standard library come from this one and go by the same delete.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace vorl::app {
namespace {

namespace fs = std::filesystem;
using vorl::test::Folder;

/// Writes one file, or two levels in a folder, as the library does; allocations fail within the
/// tree only.
void writeFiles(const std::string& name, bool folder, long allocations) {
    allocationsLeft = allocations;
    OutputTree tree(name, folder, true);
    const long left = std::exchange(allocationsLeft, -1);
    const fs::path path = tree.path();
    fs::create_directories(folder ? path.parent_path() / path.stem() : path.parent_path());
    for (const char* file : {"0", "1"})
        std::ofstream(folder ? path.parent_path() / path.stem() / file : path) << file;
    std::ofstream(path.parent_path() / "out.rhb") << "levels";
    allocationsLeft = left;
    tree.commit();
    allocationsLeft = -1;
}

TEST(OutputTree, LeavesAllOrNothingWhereMemoryFails) {
    for (const bool folder : {false, true}) {
        int failures = 0;
        for (bool done = false; !done; ++failures) {
            const Folder place;
            try {
                writeFiles((place / "new/sub/out.cnl").string(), folder, failures);
                done = true;
            } catch (const std::bad_alloc&) {
                allocationsLeft = -1;
            }
            EXPECT_EQ(fs::exists(place / "new"), done) << failures;
            const auto size = [&](const char* name) { return fs::file_size(place / name); };
            if (done) {
                EXPECT_EQ(size("new/sub/out.rhb"), 6u);
                EXPECT_EQ(size(folder ? "new/sub/out/1" : "new/sub/out.cnl"), 1u);
            }
        }
        EXPECT_GT(failures, 30);
    }
}

TEST(OutputTree, TellsOfFilesThatWerentWritten) {
    const Folder place;
    OutputTree tree((place / "out.cnl").string());
    EXPECT_ANY_THROW(tree.commit());
    fs::create_directories(fs::path(tree.path()).parent_path());
    std::ofstream(fs::path(tree.path()).replace_extension(".rhb")) << "levels";
    EXPECT_ANY_THROW(tree.commit());
    EXPECT_FALSE(fs::exists(place / "out.rhb"));
}

}  // namespace
}  // namespace vorl::app
