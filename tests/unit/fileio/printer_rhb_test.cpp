// The description of a hierarchy made by hand.
#include <vorl/fileio/printer_rhb.hpp>

#include "support/folder.hpp"
#include "support/hand_made.hpp"

#include <gtest/gtest.h>

#include <ios>

namespace vorl::test {
namespace {

TEST(HierarchyDescription, TellsSharesWhereTheyDiffer) {
    HandMade made(5);
    for (Id place = 0; place < 5; ++place) made.node(place).id = (place + 4) % 5;
    made.level(2);
    // The first node stays alone.
    made.cluster(7,
                 {{&made.node(1), 3}, {&made.node(2), 3}, {&made.node(3), 2}, {&made.node(4), 1}});
    auto& eight = made.cluster(8, {{&made.node(2), 1}, {&made.node(3), 2}, {&made.node(4), 1}});
    made.level(5);
    made.cluster(9, {{&eight, 5}, {&made.node(4), 4}});
    made.close();

    const Folder folder;
    const std::string name = (folder / "out.rhb").string();
    FileWrapper file(std::fopen(name.c_str(), "w"));
    RhbPrinter<UnweightedLinks>(made.hier).output(file);
    file.reset();
    EXPECT_EQ(contents(name),
              "/Hierarchy levels:2 clusters:3\n"
              "\n/Nodes 5\n"
              "# node1_id> owner1_id[:share1] owner2_id[:share2] ...\n"
              "4>\n"
              "0> 7\n"
              "1> 7:0.75 8:0.25\n"
              "2> 7 8\n"
              "3> 7:0.166667 8:0.166667 9:0.666667\n"
              "\n/Level 0 pure:2 extended:2\n"
              "7>\n"
              "8> 9\n"
              "\n/Level 1 pure:1 extended:5\n"
              "9>\n");
}

TEST(HierarchyDescription, ThatCannotBeWrittenFails) {
    FileWrapper file(std::fopen("/dev/full", "w"));
    EXPECT_THROW(RhbPrinter<UnweightedLinks>(HandMade(0).hier).output(file),
                 std::ios_base::failure);
}

}  // namespace
}  // namespace vorl::test
