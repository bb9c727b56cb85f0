// `vorl info --estimate`.
#include "cli/program.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>

namespace vorl::test {
namespace {

double valueOf(const std::string& json, const std::string& key) {
    const std::size_t at = json.find("\"" + key + "\": ");
    return at == std::string::npos ? -1 : std::stod(json.substr(at + key.size() + 4));
}

/// Nodes in groups of fifty; of eight links of a node six stay inside.
void writeGroups(const std::string& file, unsigned nodes, const char* header) {
    std::ofstream out(file);
    out << header;
    std::uint32_t state = 1;
    const auto draw = [&](unsigned below) {
        state = state * 1664525U + 1013904223U;
        return (state >> 8) % below;
    };
    for (unsigned node = 0; node < nodes; ++node)
        for (unsigned i = 0; i < 8; ++i) {
            const unsigned other = i < 6 ? node / 50 * 50 + draw(50) : draw(nodes);
            if (other != node) out << node << ' ' << other << ' ' << 1 + draw(9) << '\n';
        }
}

TEST(InfoCommand, EstimatesWhatClusteringTakes) {
    if (VORL_SANITIZED) GTEST_SKIP() << "takes memory of its own";
    const Folder folder;
    for (const auto& [name, header] : {std::pair{"weighted.nse", "# Weighted: 1\n"},
                                       {"plain.nse", "# Weighted: 0\n"},
                                       {"arcs.nsa", "# Weighted: 1\n"}}) {
        const std::string file = (folder / name).string();
        writeGroups(file, 8'000, header);
        const Outcome told = vorl("info --estimate --json " + file);
        ASSERT_EQ(told.code, 0) << told.err;
        const Outcome run = vorl("cluster --no-level-measures --json " + file);
        ASSERT_EQ(run.code, 0) << run.err;
        const double ratio =
            valueOf(told.out, "memory_bytes") / valueOf(run.out, "peak_memory_bytes");
        EXPECT_GT(ratio, 1 / 1.3) << name;
        EXPECT_LT(ratio, 1.3) << name;
        EXPECT_GT(valueOf(told.out, "seconds"), 0) << told.out;
    }
}

TEST(InfoCommand, EstimatesTheMemoryOfRegularNetworks) {
    if (VORL_SANITIZED) GTEST_SKIP() << "takes memory of its own";
    const Folder folder;
    // Many times more clusters than nodes form in both.
    std::string ring;
    for (int i = 0; i < 500; ++i)
        ring += std::to_string(i) + " " + std::to_string((i + 1) % 500) + "\n";
    std::string grid;
    for (int i = 0; i < 70 * 70; ++i) {
        const std::string node = std::to_string(i) + " ";
        if (i % 70 != 69) grid += node + std::to_string(i + 1) + "\n";
        if (i < 69 * 70) grid += node + std::to_string(i + 70) + "\n";
    }
    for (const std::string& file :
         {folder.write("ring.nse", ring), folder.write("grid.nse", grid)}) {
        const double told = valueOf(vorl("info --estimate --json " + file).out, "memory_bytes");
        const double taken =
            valueOf(vorl("cluster --no-level-measures --json " + file).out, "peak_memory_bytes");
        EXPECT_GT(told, taken / 2) << file;
        EXPECT_LT(told, taken * 2) << file;
    }
}

TEST(InfoCommand, EstimatesForTheSmallestNetworks) {
    const Folder folder;
    std::ofstream(folder / "one.nse") << "0 1\n";
    std::ofstream(folder / "self.nse") << "# Nodes: 3\n1 1\n";
    for (const char* name : {"one.nse", "self.nse"}) {
        const Outcome run = vorl("info --estimate " + (folder / name).string());
        EXPECT_EQ(run.code, 0) << run.err;
        EXPECT_TRUE(contains(run.out, "MiB and less than 0.1 s\n")) << run.out;
    }
    EXPECT_FALSE(contains(vorl("info " + (folder / "one.nse").string()).out, "MiB"));
}

}  // namespace
}  // namespace vorl::test
