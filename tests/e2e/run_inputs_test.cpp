// The run's inputs through the real binary: the two profiles (missing,
// corrupt, with warnings raised before and after the tool name is set) and
// the frames of the XML output files.
#include <string>

#include <gtest/gtest.h>

#include "tests/support/banner_text.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

using namespace testsupport;

namespace {

// What the option parser prints before anything else, with no compiler
// package on PATH.
const std::string BANNER = BANNER_LINES + "\n";

const std::map<std::string, std::string> &NO_PACKAGE = NO_PACKAGE_ENV;

// One function of one module, in both profiles.
Project OneFunction()
{
    Project p;
    p.Add("/nowhere/src/a.c", "main", 3).Blocks({{1, 3, 1}});
    return p;
}

}  // namespace

TEST(RunInputs, MissingDynamicProfileStopsBeforeAnyOutputFile)
{
    Scenario s;
    s.write("vemtra.spi", SpiText(OneFunction()));
    RunResult r = s.run({"-xmlfcvrg", "f.xml", "-txtbcvrgfull", "full.txt"}, NO_PACKAGE);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    ExpectSameBytes("stderr", BANNER + "Couldn't find the dpi file vemtra.dpi!\n", r.err);
    EXPECT_TRUE(s.outputs().empty());

    r = s.run({"-dpi", "other.dpi"}, NO_PACKAGE);
    EXPECT_EQ(r.status, 1);
    ExpectSameBytes("stderr", BANNER + "Couldn't find the dpi file other.dpi!\n", r.err);
}

TEST(RunInputs, MissingStaticProfileIsFoundEarlyOnlyOnTheFullRoad)
{
    Scenario s;
    s.write("vemtra.dpi", DpiBytes(OneFunction()));
    RunResult full = s.run({"-xmlbcvrgfull", "full.xml"}, NO_PACKAGE);
    EXPECT_EQ(full.status, 1);
    ExpectSameBytes("stderr", BANNER + "Couldn't find the spi file vemtra.spi!\n", full.err);
    EXPECT_FALSE(s.exists("full.xml"));

    // The fast road opens its output files first and reads the static
    // profile later, with the other message.
    RunResult fast = s.run({"-txtfcvrg", "f.txt"}, NO_PACKAGE);
    EXPECT_EQ(fast.status, 1);
    ExpectSameBytes("stderr", BANNER + "ERROR: cannot open the SPI file, vemtra.spi.\n", fast.err);
    EXPECT_TRUE(s.exists("f.txt"));
    EXPECT_EQ(s.read("f.txt"), "");
}

TEST(RunInputs, MissingReferenceProfileAfterTheOutputFiles)
{
    Scenario s;
    s.write("vemtra.dpi", DpiBytes(OneFunction()));
    s.write("vemtra.spi", SpiText(OneFunction()));
    RunResult r = s.run({"-ref", "old.dpi", "-txtbcvrgfull", "full.txt", "-nohtml"}, NO_PACKAGE);
    EXPECT_EQ(r.status, 1);
    const std::string message = "Couldn't find the dpi file old.dpi!\n";
    ASSERT_GE(r.err.size(), message.size());
    EXPECT_EQ(r.err.substr(r.err.size() - message.size()), message) << r.err;
    EXPECT_TRUE(s.exists("full.txt"));
}

TEST(RunInputs, CorruptStaticProfileLine)
{
    Scenario s;
    s.write("vemtra.dpi", DpiBytes(OneFunction()));
    s.write("vemtra.spi", SpiText(OneFunction()) + "V3 0 6 0 6\n");
    RunResult r = s.run({"-nohtml"}, NO_PACKAGE);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    ExpectSameBytes("stderr", BANNER + "ERROR: corrupt SPI file vemtra.spi\n", r.err);
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
    RunResult r = s.run({"-nohtml", "-nopmeter", "-ref", "ref.dpi"}, NO_PACKAGE);
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
    Scenario s;
    s.write("vemtra.dpi", DpiBytes(OneFunction()));
    s.write("vemtra.spi", "");  // no function: the full file holds only its frame

    RunResult r = s.run({"-xmlbcvrgfull", "full.xml", "-nohtml", "-nopmeter", "-prj", "P<&>\"'x"}, NO_PACKAGE);
    EXPECT_EQ(r.status, 0) << r.err;
    ExpectSameBytes("full.xml", "<PROJECT name=\"P&lt;&amp;&gt;&quot;&apos;x\">\n</PROJECT>\n", s.read("full.xml"));

    r = s.run({"-xmlbcvrgfull", "full.xml", "-nohtml", "-nopmeter"}, NO_PACKAGE);
    EXPECT_EQ(r.status, 0) << r.err;
    ExpectSameBytes("full.xml", "<PROJECT name=\"(null)\">\n</PROJECT>\n", s.read("full.xml"));

    // The fast files write "name = " with blanks; the full file, given
    // with a fast option, keeps only its frame.
    s.write("vemtra.spi", SpiText(OneFunction()));
    r = s.run({"-xmlfcvrg", "f.xml", "-xmlbcvrg", "b.xml", "-xmlbcvrgfull", "full.xml", "-prj", "a&b"}, NO_PACKAGE);
    EXPECT_EQ(r.status, 0) << r.err;
    ExpectSameBytes("full.xml", "<PROJECT name=\"a&amp;b\">\n</PROJECT>\n", s.read("full.xml"));
    for (const char *name : {"f.xml", "b.xml"}) {
        std::string text = s.read(name);
        const std::string opening = "<PROJECT name = \"a&amp;b\">\n";
        EXPECT_EQ(text.substr(0, opening.size()), opening) << name;
        ASSERT_GE(text.size(), 11u);
        EXPECT_EQ(text.substr(text.size() - 11), "</PROJECT>\n") << name;
    }
}

TEST(RunInputs, UnwritableOutputFile)
{
    Scenario s;
    s.write("vemtra.dpi", DpiBytes(OneFunction()));
    s.write("vemtra.spi", SpiText(OneFunction()));
    RunResult r = s.run({"-txtfcvrg", "missing-dir/f.txt"}, NO_PACKAGE);
    EXPECT_EQ(r.status, 1);
    ExpectSameBytes("stderr", BANNER + "Couldn't open file missing-dir/f.txt for output!\n", r.err);
}

TEST(RunInputs, RepeatedStaticProfileEntryIsReportedOnce)
{
    Scenario s;
    s.write("a.c", "int x;\n\nint main(void)\n{\n    return 0;\n}\n");
    Project p;
    p.Add(s.path("a.c"), "main", 3).Blocks({{1, 3, 1}});
    s.write("vemtra.dpi", DpiBytes(p));
    s.write("vemtra.spi", SpiText(p) + SpiText(p));
    RunResult r = s.run({"-nohtml", "-nopmeter", "-txtbcvrgfull", "full.txt"}, NO_PACKAGE);
    EXPECT_EQ(r.status, 0) << r.err;
    ExpectSameBytes("stderr", BANNER, r.err);
    ExpectSameBytes("full.txt", "file - " + s.path("a.c") + "\nfunction - main\t1\n1\t3\t1\t           1\n",
                    s.read("full.txt"));
}
