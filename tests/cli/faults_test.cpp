// `vorl` on wrong usage: message and exit code, nothing written.
#include "cli/program.hpp"

#include <gtest/gtest.h>

namespace vorl::test {
namespace {

TEST(Usage, IsToldWithCodeTwo) {
    const struct {
        const char* arguments;
        const char* message;
    } cases[] = {
        {"", "subcommand is required"},
        {"clutser x.nse", "did you mean cluster?"},
        {"cluster", "NETWORK is required"},
        {"cluster x.nse --gama 1", "did you mean --gamma?"},
        {"cluster x.nse --gamma 1,nan", "--gamma: \"nan\" isn't a number from 0 on"},
        {"cluster x.nse --gamma -2", "--gamma"},
        {"cluster x.nse --gamma nan", "--gamma"},
        {"cluster x.nse --gamma 1 --gamma 1", "--gamma"},
        {"cluster x.nse --gamma ''", "--gamma: \"\" isn't a number"},
        {"cluster x.nse --root-max 65536", "\"65536\" isn't a whole number from 0 to 65535"},
        {"cluster x.nse --root-max -1", "--root-max: \"-1\" isn't a whole number"},
        {"cluster x.nse --root-max -18446744073709551615", "--root-max: \"-18"},
        {"cluster x.nse --root-max 0x10", "--root-max: \"0x10\" isn't a whole number"},
        {"cluster x.nse --root-max +5", "--root-max: \"+5\" isn't a whole number"},
        {"cluster x.nse --root-max ''", "--root-max: \"\" isn't a whole number"},
        {"cluster ''", "NETWORK: the name of the file is empty"},
        {"cluster x.nse y.nse", "not expected: y.nse"},
        {"cluster -x.nse", "\"-x.nse\" is no option"},
        {"cluster x.nse -o ''", "--output: the name of the file is empty"},
        {"cluster x.nse -o", "--output"},
        {"cluster x.nse -o y.cnl.gz",
         "y.cnl.gz: clusters and hierarchies are written as plain text, give the name y.cnl"},
        {"cluster x.nse -o - --json", "can't both go to the standard output"},
        {"cluster x.nse -o /dev/null --levels per-level", "/dev/null can't hold the files"},
        {"cluster x.nse --speedup corse", "did you mean coarse?"},
        {"cluster x.nse --reduction mean,skipnodes", "did you mean skip-nodes?"},
        {"cluster x.nse --validation no", "is none of none, standard, severe"},
        {"cluster x.nse --format csv", "is none of nse, nsa, rcg"},
        {"cluster /proc/self/comm",
         "/proc/self/comm: the format can't be told from the name or the first lines; it is nse "
         "(edges), nsa (arcs), rcg (sections), list, mtx, metis, pajek, gml, graphml or json, give "
         "it with --format"},
        {"cluster x.nse -o y.csv", "y.csv, which is the name of a table; take another extension"},
        {"communities x.nse -o y.json", "a list of clusters can't be y.json"},
        {"communities x.nse -o y.rhb", "y.rhb, which is the name of a hierarchy"},
        {"cut x.rhb --level 0 -o Y.CSV", "Y.CSV, which is the name of a table"},
        {"cut x.rhb --level 0 -o y.tsv.gz", "y.tsv.gz, which is the name of a table"},
        {"cluster x.nse -o y.rhb --levels all", "take another extension, or --levels hierarchy"},
        {"cluster x.nse --levels per-level", "--levels needs a file to write"},
        {"info x.nse --memory-limit 4X", "--memory-limit: \"4X\" is no size"},
        {"cluster x.nse --gain-margin 0.1", "--gain-margin needs --trace-modularity"},
        {"cluster x.nse --gama 1", "\"vorl cluster --help\""},
        {"cluster x.nse -o .cnl", ".cnl: a name is expected in front of the extension"},
        {"cluster x.nse -o y --levels around", "--clusters N"},
        {"cluster x.nse -o y --min-size 3", "--min-size goes with --levels significant only"},
        {"cluster x.nse -o y --levels root --level-max 3", "--levels per-level only"},
        {"cluster x.nse -o y --levels per-level --level-min 4 --level-max 3", "must not be above"},
        {"cluster x.nse -o y --levels per-level --level-step 2", "--level-step: \"2\""},
        {"cluster x.nse -o y --levels significant --weight-step 0.6", "is at most 0.5"},
        {"cluster x.nse -o y --levels significant --min-size-by root3", "did you mean root2?"},
        {"cluster x.nse -o y --shares all", "is none of none, uneven, full"},
        {"evaluate x.nse", "CLUSTERS is required"},
        {"evaluate x.nse y.cnl --gamma -1", "--gamma: \"-1\""},
        {"info - </proc/self/comm", "-: the format can't be told from the name or the first lines"},
        {"info x.nse --memory-limit 1M", "--memory-limit: \"1M\" is less than the "},
        {"communities x.nse --starts 7", "--starts: \"7\" isn't a whole number from 1 to 6"},
        {"communities x.nse --starts 0", "--starts: \"0\" isn't a whole number from 1 to 6"},
        {"communities x.nse --threads 0", "--threads: \"0\" isn't a whole number from 1 to 4"},
        {"view x.nse -o y.svg --threads 0", "--threads: \"0\" isn't a whole number from 1 to 4"},
        {"cluster x.nse --levels around --clusters 0", "--clusters: \"0\" isn't a whole number"},
        {"cut x.rhb --clusters 0", "--clusters: \"0\" isn't a whole number from 1 to"},
        {"compare x.cnl y.cnl --count 0", "--count: \"0\" isn't a whole number from 1 to"},
        {"cluster x.nse -o y --no-weight-range", "--no-weight-range goes with --levels signif"},
        {"convert x.nse y", "gml, graphml or json, give it with --to"},
        {"convert x.nse ''", "OUT: the name of the file is empty"},
        {"evaluate - - --format nse", "only one of the files can be the standard input"},
        {"compare - -", "only one of the files can be the standard input"},
        {"compare x.cnl", "SECOND is required"},
        {"compare x.cnl y.cnl --node first", "did you mean --nodes?"},
        {"compare x.cnl y.cnl --nodes frist", "did you mean first?"},
        {"compare x.cnl y.cnl --count 4294967296", "\"4294967296\" isn't a whole number"},
        {"compare x.cnl y.cnl --exact-pairs -1", "\"-1\" isn't a whole number"},
        {"cluster x.nse --levels hierachy", "did you mean hierarchy?"},
    };
    for (const auto& usage : cases) {
        const Outcome run = vorl(usage.arguments);
        EXPECT_EQ(run.code, 2) << usage.arguments << run.err;
        EXPECT_EQ(run.out, "") << usage.arguments;
        EXPECT_TRUE(contains(run.err, usage.message)) << usage.arguments << run.err;
    }
}

TEST(Usage, FilesOfAnotherKindAreTold) {
    const Folder folder;
    const std::string clusters = folder.write("c.cnl", "1 2\n3 4\n");
    const std::string links = folder.write("n.nse", "1 2\n2 3\n");
    const std::string gml =
        folder.write("n.gml", "graph [ node [ id 1 ] edge [ source 1 target 1 ] ]");
    const auto fails = [](const std::string& arguments, const std::string& message) {
        const Outcome run = vorl(arguments);
        EXPECT_EQ(run.code, 1) << arguments;
        EXPECT_TRUE(contains(run.err, message)) << arguments << run.err;
    };
    fails("info " + clusters, "c.cnl: the file has clusters, a network is expected");
    const std::string header = folder.write("header", "# Clusters: 2, Nodes: 4\n1 2\n3 4\n");
    fails("info " + header, "header: the file has clusters, a network is expected; --format list ");
    EXPECT_EQ(vorl("info --format list " + header).code, 0);
    fails("info " + folder.write("levels", "/Hierarchy levels:7 clusters:30\n"),
          "levels: the file has a hierarchy, a network is expected\n");
    EXPECT_EQ(vorl("info --format nse " + clusters).code, 0);
    fails("evaluate " + links + " " + links, "n.nse: the file has the links of a network, clus");
    EXPECT_EQ(vorl("info --columns 2,1 --format list " + links).code, 0);
    fails("info --columns 2,1 " + links, ": columns can be chosen of the format list alone, the");
    fails("info --columns a,b " + gml, ": columns can be chosen of the format list alone, the");
    fails("info --directed " + links,
          ": links are asked for as arcs, the file, nse, tells of edges\n");
}

TEST(Usage, DecimalCommasThatMayPartThousandsAreToldAsDoubtful) {
    const Folder folder;
    const auto warnings = [&](const char* weights) {
        return vorl("communities " + folder.write("w.tsv", weights)).err;
    };
    EXPECT_TRUE(contains(warnings("a\tb\t1,234\nb\tc\t999\nc\td\t12,345\n"),
                         "weights are read with decimal commas, \"1,234\" among them, and might be "
                         "meant as thousands\n"));
    EXPECT_EQ(warnings("a\tb\t1,234\nb\tc\t0,5\n"), "");
    EXPECT_EQ(warnings("a\tb\t0,234\nb\tc\t1,125\n"), "");
}

TEST(Usage, NamesOfColumnsThatArentKnownAreToldAsDoubtful) {
    const Folder folder;
    const std::string doubt =
        ": line 1 is read as a link between \"Name A\" and \"Name B\", which stand nowhere else; "
        "if they are names of columns, tell so (--columns A,B[,W])\n";
    const std::string text = "Name A,Name B\nx,y\ny,z\n";
    const std::string named = folder.write("named.csv", text);
    EXPECT_EQ(vorl("communities " + named).err, "vorl: " + named + doubt);
    EXPECT_EQ(vorl("convert --to gml " + named + " -").err, "vorl: " + named + doubt);
    EXPECT_TRUE(contains(vorl("info " + named).out, "columns 1 and 2, line 1 perhaps their names"));
    EXPECT_EQ(vorl("communities --columns 1,2 " + named).err, "");
    EXPECT_EQ(vorl("communities --columns 'Name A,Name B' " + named).err, "");
    EXPECT_EQ(vorl("communities " + folder.write("no.csv", text + "z,Name A\n")).err, "");
    EXPECT_EQ(vorl("communities " + folder.write("one.csv", "Name A,Name B\n")).err, "");
}

TEST(Usage, AnEmptyFileIsAFaultOfTheInput) {
    const Folder folder;
    for (const std::string& name : {std::string("none"), std::string("none.nse")}) {
        const Outcome run = vorl("info " + folder.write(name, ""));
        EXPECT_EQ(run.code, 1);
        EXPECT_TRUE(run.err.ends_with(name + ": the file is empty, links are expected\n"))
            << run.err;
    }
}

TEST(Usage, NothingThatIsReadIsOverwritten) {
    const Folder folder;
    const std::string text = "1 2\n2 3\n";
    const std::string network = folder.write("net.nse", text);
    const std::string odd = folder.write("net.rhb", text);
    const std::string link = (folder / "link.cnl").string();
    std::filesystem::create_symlink(network, link);
    std::filesystem::create_directory(folder / "net");
    const std::string level = folder.write("net/net_00.nse", text);
    for (const std::string& arguments :
         {"cluster " + network + " -o " + network, "cluster " + network + " -o " + link,
          "cluster " + odd + " --format nse -o " + (folder / "net.cnl").string(),
          "cluster " + level + " --levels per-level -o " + network,
          "convert " + network + " " + folder.path().string() + "/./net.nse"}) {
        const Outcome run = vorl(arguments);
        EXPECT_EQ(run.code, 2) << arguments;
        EXPECT_TRUE(contains(run.err, "is read, and would be overwritten")) << run.err;
        EXPECT_EQ(contents(network), text);
        EXPECT_EQ(contents(odd), text);
        EXPECT_EQ(contents(level), text);
    }
}

TEST(Usage, HelpAndVersion) {
    EXPECT_EQ(vorl("--version").code, 0);
    EXPECT_TRUE(vorl("--version").out.starts_with("vorl "));
    for (const char* arguments : {"--help", "cluster --help"}) {
        const Outcome run = vorl(arguments);
        EXPECT_EQ(run.code, 0);
        EXPECT_TRUE(contains(run.out, "Exit codes: 0 done"));
    }
}

}  // namespace
}  // namespace vorl::test
