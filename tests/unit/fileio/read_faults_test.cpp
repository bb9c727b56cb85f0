// Faults of the system while a file is read are no end of the file.
#include <vorl/fileio/parser_cnl.hpp>
#include <vorl/fileio/parser_nsl.hpp>
#include <vorl/fileio/parser_rcg.hpp>

#include "support/folder.hpp"

#include <gtest/gtest.h>

#include <sys/syscall.h>
#include <unistd.h>
#include <cerrno>

namespace {

/// The number of reads that succeed before all fail; none does while it is negative.
thread_local int readsLeft = -1;

}  // namespace

// Takes the place of the system's.
extern "C" ssize_t read(int file, void* data, size_t size) {
    if (readsLeft == 0) {
        errno = EIO;
        return -1;
    }
    if (readsLeft > 0) --readsLeft;
    return syscall(SYS_read, file, data, size);
}

namespace vorl::test {
namespace {

InpOptions input(const std::string& file, FileFormat format) {
    InpOptions options;
    options.filename = file;
    options.format = format;
    return options;
}

TEST(ReadFaults, ReachTheCaller) {
    const Folder folder;
    std::string lines = "# Nodes: 200000\n";
    std::string sections = "/Edges\n";
    for (int i = 1; i < 200'000; ++i) {
        lines += "0 " + std::to_string(i) + "\n";
        sections += "0> " + std::to_string(i) + "\n";
    }
    const std::string nse = folder.write("net.nse", lines);
    const std::string rcg = folder.write("net.rcg", sections);
    const std::string cnl = folder.write("net.cnl", lines);
    const auto readAll = [](const std::string& list, const std::string& parts,
                            const std::string& clusters, int reads) {
        int failed = 0;
        const auto fails = [&](auto action) {
            readsLeft = reads;
            try {
                action();
            } catch (const std::ios_base::failure&) {
                ++failed;
            }
            readsLeft = -1;
        };
        fails([&] { NslParser(input(list, FileFormat::NSE)).build<Graph<false>>(); });
        fails([&] { RcgParser(input(parts, FileFormat::RCG)).build<Graph<false>>(); });
        fails([&] {
            CnlParser parser(clusters);
            Graph<false> graph;
            graph.addNodes(200'001);
            Graph<false>::IdNodesT nodes;
            const auto held = graph.release(&nodes);
            parser.build<UnweightedLinks>(nodes);
        });
        return failed;
    };
    EXPECT_EQ(readAll(nse, rcg, cnl, -1), 0);
    for (const int reads : {0, 1, 2, 5}) EXPECT_EQ(readAll(nse, rcg, cnl, reads), 3) << reads;
    const std::string none = folder.path().string();
    EXPECT_EQ(readAll(none, none, none, -1), 3);
}

}  // namespace
}  // namespace vorl::test
