// The run's inputs and frame through the real binary: the two profiles
// (missing, corrupt, with warnings raised before the tool name is set), the
// frames of the XML output files, the end of the progress line, and the
// source root that places the static profile's files.
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/banner_text.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

using namespace testsupport;

namespace {

// One function of one module, in both profiles.
Project OneFunction()
{
    Project p;
    p.Add("/nowhere/src/a.c", "main", 3).Blocks({{1, 3, 1}});
    return p;
}

}  // namespace

TEST(RunInputs, EachFailureStopsAtItsStep)
{
    // Every case: status 1, the banner and the step's message, and only the
    // output files opened before that step, still empty.
    const std::string spi = SpiText(OneFunction());
    struct Case {
        bool dpi;
        std::string spi;  // "-" for no file
        std::vector<std::string> args;
        std::string message;
        std::map<std::string, std::string> written;
    };
    const Case cases[] = {
        // The dynamic profile is opened before any output file.
        {false, spi, {"-xmlfcvrg", "f.xml", "-txtbcvrgfull", "full.txt"},
         "Couldn't find the dpi file vemtra.dpi!\n", {}},
        {false, spi, {"-dpi", "other.dpi"}, "Couldn't find the dpi file other.dpi!\n", {}},
        // The full road checks the static profile before the output files;
        // the fast road reads it after them, with another message.
        {true, "-", {"-xmlbcvrgfull", "full.xml"}, "Couldn't find the spi file vemtra.spi!\n", {}},
        {true, "-", {"-txtfcvrg", "f.txt"}, "ERROR: cannot open the SPI file, vemtra.spi.\n", {{"f.txt", ""}}},
        // The reference profile is opened after the output files.
        {true, spi, {"-ref", "old.dpi", "-txtbcvrgfull", "full.txt", "-nohtml"},
         "Couldn't find the dpi file old.dpi!\n", {{"full.txt", ""}}},
        {true, spi, {"-txtfcvrg", "missing-dir/f.txt"}, "Couldn't open file missing-dir/f.txt for output!\n", {}},
        {true, spi + "V3 0 6 0 6\n", {"-nohtml"}, "ERROR: corrupt SPI file vemtra.spi\n", {}},
    };
    int number = 0;
    for (const Case &c : cases) {
        Scenario s("RunInputs.EachFailureStopsAtItsStep." + std::to_string(++number));
        if (c.dpi)
            s.write("vemtra.dpi", DpiBytes(OneFunction()));
        if (c.spi != "-")
            s.write("vemtra.spi", c.spi);
        RunResult r = s.run(c.args);
        EXPECT_EQ(r.status, 1) << number;
        EXPECT_EQ(r.out, "") << number;
        ExpectSameBytes("stderr", BANNER + c.message, r.err);
        EXPECT_EQ(s.outputs(), c.written) << number;
    }
}

TEST(RunInputs, WarningsOfTheOpensCarryNoToolName)
{
    // Both profiles repeat a function: each open warns once, before the
    // tool name is set.
    Project p = OneFunction();
    p.functions.push_back(p.functions[0]);
    Scenario s;
    s.write("vemtra.dpi", DpiBytes(p));
    s.write("ref.dpi", DpiBytes(p));
    s.write("vemtra.spi", "");
    RunResult r = s.run({"-nohtml", "-nopmeter", "-ref", "ref.dpi"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "");
    ExpectSameBytes("stderr",
                    BANNER +
                        "WARNING: Multiple profile entries in vemtra.dpi match lookup key, /nowhere/src/a.c'main'\n"
                        "WARNING: Multiple profile entries in ref.dpi match lookup key, /nowhere/src/a.c'main'\n",
                    r.err);
}

TEST(RunInputs, ProjectFramesOfTheXmlFiles)
{
    // Given with a fast option, the full file keeps only its frame, with
    // the project name escaped. (The full road's frames are in the golden
    // cases of the full block files.)
    Scenario s;
    s.writeProfiles(OneFunction());
    RunResult r = s.run({"-txtfcvrg", "f.txt", "-xmlbcvrgfull", "full.xml", "-prj", "P<&>\"'x"});
    EXPECT_EQ(r.status, 0) << r.err;
    ExpectSameBytes("full.xml", "<PROJECT name=\"P&lt;&amp;&gt;&quot;&apos;x\">\n</PROJECT>\n", s.read("full.xml"));
}

TEST(RunInputs, ProgressLineEndsWhenTheMeterIsOn)
{
    // On the fast road too, which prints nothing else there.
    Scenario s;
    s.writeProfiles(OneFunction());
    EXPECT_EQ(s.run({"-txtfcvrg", "functions.txt"}).out, "\n");
    EXPECT_EQ(s.run({"-nopmeter", "-txtfcvrg", "functions.txt"}).out, "");
}

// A static profile line with a base directory names its file under the
// source root: -srcroot, else the environment, else the current directory.
TEST(RunInputs, SourceRootPlacesTheStaticProfilesFiles)
{
    Scenario s;
    Project p;
    s.write("elsewhere/m.c", "int main(void)\n{\n    return 0;\n}\n");
    p.Add(s.path("elsewhere/m.c"), "main", 1).Blocks({{4, 3, 5}}).OnlyInDpi();
    s.write("vemtra.dpi", DpiBytes(p));
    s.write("vemtra.spi", "V3 12 4 0 6 5 /build/host1 m.c m.c.o main 1 1 0 E\n");

    auto reported = [&](const std::vector<std::string> &args, const std::map<std::string, std::string> &env) {
        std::vector<std::string> all = {"-nohtml", "-txtbcvrgfull", "full.txt"};
        all.insert(all.end(), args.begin(), args.end());
        RunResult r = s.run(all, env);
        EXPECT_EQ(r.status, 0) << r.err;
        return s.read("full.txt");
    };
    const std::string found = "file - " + s.path("elsewhere/m.c") + "\nfunction - main\t4\n1\t3\t5\t           4\n";
    EXPECT_EQ(reported({"-srcroot", s.path("elsewhere")}, {}), found);
    EXPECT_EQ(reported({}, {{"TARSK_PROF_SRC_ROOT", s.path("elsewhere")}}), found);
    EXPECT_EQ(reported({"-srcroot", s.path("elsewhere")}, {{"TARSK_PROF_SRC_ROOT", "/nowhere"}}), found);
    // Under the current directory the file is another one, with neither a
    // profile nor a source: its module is named and nothing else.
    EXPECT_EQ(reported({}, {}), "file - " + s.path("m.c") + "\n");
}
