// What several threads may do at the same time.
#include "support/describe.hpp"
#include "support/folder.hpp"

#include <vorl/communities.hpp>
#include <vorl/flat_network.hpp>
#include <vorl/reading/network.hpp>
#include <vorl/shared/operations.hpp>
#include <vorl/types/cluster_ids.hpp>
#include <vorl/types/trace.hpp>

#include <gtest/gtest.h>

#include <bit>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace vorl::test {
namespace {

/// Reads, clusters, measures and finds communities of a file, all as one text.
std::string allOf(const std::string& file, const std::string& clusters) {
    ReadOptions options;
    options.file = file;
    std::string text;
    const Network network = readNetwork(options);
    std::visit(
        [&](const auto& graph) {
            using LinksT = typename std::decay_t<decltype(*graph)>::LinksT;
            const ClusterIdsScope<LinksT> ids;
            const auto hier = clusterCopy(*graph, ClusterOptions());
            text += std::to_string(hier->levels().front().clusters.front().id) + "\n";
            text += describe(*hier);
            Intrinsics measured;
            evaluateClusters(measured, *graph, clusters);
            text += std::to_string(std::bit_cast<std::uint32_t>(measured.mod)) + "\n";
        },
        network.graph);
    const Communities found = communities(readUndirected(options).links, {.threads = 2});
    for (Size place = 0; place < found.nodes(); ++place)
        text += std::to_string(found.of(place).front().community) + " ";
    return text;
}

TEST(Threads, BuildsAtTheSameTimeAreThoseOfFreshProcesses) {
    ftrace = nullptr;
    const Folder folder;
    const std::string data = VORL_DATA_DIR "/";
    std::ofstream(folder / "one.cnl") << "1 2 3\n4 5 6\n";
    const std::string clusters = (folder / "one.cnl").string();
    std::vector<std::string> files;
    for (const char* name : {"karate.nse", "jazz.nse", "celegansneural.nsa", "netscience.nse"})
        files.push_back(data + name);
    std::vector<std::string> alone;
    for (const std::string& file : files) {
        alone.push_back(allOf(file, clusters));
        EXPECT_EQ(alone.back().substr(0, 2), "0\n") << file;
    }
    std::vector<std::string> together(2 * files.size());
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < together.size(); ++i)
        threads.emplace_back([&, i] { together[i] = allOf(files[i % files.size()], clusters); });
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < together.size(); ++i)
        EXPECT_TRUE(together[i] == alone[i % files.size()]) << files[i % files.size()];
}

TEST(Threads, IdsCountOnOutsideOfAScope) {
    using ClusterT = Cluster<UnweightedLinks>;
    const Id first = ClusterT(0, 0).id;
    {
        const ClusterIdsScope<UnweightedLinks> ids;
        EXPECT_EQ(ClusterT(0, 0).id, 0U);
        {
            const ClusterIdsScope<UnweightedLinks> inner;
            EXPECT_EQ(ClusterT(0, 0).id, 0U);
        }
        EXPECT_EQ(ClusterT(0, 0).id, 1U);
        EXPECT_EQ(Cluster<WeightedLinks>(0, 1, 0).id, 1U);
    }
    EXPECT_EQ(ClusterT(0, 0).id, first + 1);
}

}  // namespace
}  // namespace vorl::test
