#include "../../../lib/src/reading/system_memory.hpp"

#include "support/folder.hpp"

#include <gtest/gtest.h>

namespace vorl::test {
namespace {

/// A file system with the folders of the kernel.
class Kernel {
public:
    explicit Kernel(const std::string& groups) { write("proc/self/cgroup", groups); }

    void write(const std::string& name, const std::string& text) const {
        std::filesystem::create_directories((m_folder / name).parent_path());
        m_folder.write(name, text);
    }
    std::size_t memory() const { return systemMemory(m_folder.path().string() + "/"); }

private:
    Folder m_folder;
};

TEST(SystemMemory, IsTheLeastOfTheMachineAndTheGroups) {
    const std::size_t machine = systemMemory("/nowhere/");
    EXPECT_GT(machine, 0u);

    const Kernel second("0::/user.slice/run 1.scope\n");
    EXPECT_EQ(second.memory(), machine);
    second.write("sys/fs/cgroup/user.slice/run 1.scope/memory.max", "max\n");
    EXPECT_EQ(second.memory(), machine);
    second.write("sys/fs/cgroup/user.slice/memory.max", "1048576\n");
    EXPECT_EQ(second.memory(), 1048576u);
    second.write("sys/fs/cgroup/user.slice/run 1.scope/memory.max", "2097152\n");
    EXPECT_EQ(second.memory(), 1048576u);
    // That of a container, whose own group is the root.
    const Kernel container("0::/\n");
    container.write("sys/fs/cgroup/memory.max", "4096\n");
    EXPECT_EQ(container.memory(), 4096u);

    const Kernel first("5:cpu,cpuacct:/a\n4:memory:/a/b\nodd\n");
    first.write("sys/fs/cgroup/memory/memory.limit_in_bytes", "9223372036854771712\n");
    EXPECT_EQ(first.memory(), machine);
    first.write("sys/fs/cgroup/memory/a/b/memory.limit_in_bytes", "8192\n");
    EXPECT_EQ(first.memory(), 8192u);
}

}  // namespace
}  // namespace vorl::test
