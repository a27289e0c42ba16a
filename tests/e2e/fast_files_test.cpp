// The four coverage files of the fast road (-txtfcvrg, -xmlfcvrg, -txtbcvrg,
// -xmlbcvrg) through the real binary, against golden files: module headers,
// percentages, block lists, XML escaping, the infeasible-code markers, the
// component list and a corrupt profile.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/banner_text.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

using namespace testsupport;

namespace {

std::vector<std::string> AllFour(std::vector<std::string> more)
{
    std::vector<std::string> args = {"-txtfcvrg", "f.txt", "-xmlfcvrg", "f.xml",
                                     "-txtbcvrg", "b.txt", "-xmlbcvrg", "b.xml"};
    args.insert(args.end(), more.begin(), more.end());
    return args;
}

}  // namespace

TEST(FastFiles, SeveralModulesWithEveryKindOfFunction)
{
    Scenario s;
    Project p;
    p.runs = 2;
    // a.c: main covers 2 of 3 blocks; foo(int) ran no block, so its block
    // lines stand right under the module header; lz has a block at line 0
    // and one at column 0 (both left out) and two blocks at one position.
    p.Add("/src/a.c", "main", 3).Blocks({{10, 3, 1}, {0, 4, 5}, {4, 6, 1}});
    p.Add("/src/a.c", "_Z3fooi", 10).Blocks({{0, 10, 1}, {0, 11, 3}});
    p.Add("/src/a.c", "lz", 20).Blocks({{5, 0, 0}, {5, 20, 1}, {0, 20, 1}, {0, 21, 0}});
    // q&a.c: a name full of XML-special characters, counts beyond 32 bits
    // (the frequency is summed in single precision), and a function without
    // line information whose blocks all sit at (1, 1).
    p.Add("/src/q&a.c", "_ZltRK1AS1_", 5).Blocks({{1, 5, 1}, {2, 5, 9}, {0, 7, 1}});
    p.Add("/src/q&a.c", "big", 30).Blocks({{1234567890123, 30, 1}, {5000000000, 31, 1}});
    p.Add("/src/q&a.c", "noline", 40).Blocks({{3}, {0}, {6}}).line_info = LineInfo::None;
    // s.c: alpha ran, beta did not: beta's block lines stand under alpha's.
    p.Add("/src/s.c", "alpha", 1).Blocks({{2, 1, 1}});
    p.Add("/src/s.c", "beta", 5).Blocks({{0, 5, 1}, {0, 6, 2}});
    s.writeProfiles(p);
    ExpectGolden("fast_files_modules", s, s.run(AllFour({"-prj", "P&Q"})));
}

TEST(FastFiles, PercentagesRoundHalfUp)
{
    Scenario s;
    Project p;
    // 1 of 800 blocks is 0.125 %: half up gives 0.13 where printf alone
    // would print 0.12.
    std::vector<BlockSpec> blocks(800, BlockSpec{0, 2, 1});
    blocks[0].count = 1;
    p.Add("/src/r.c", "eighth", 2).Blocks(blocks);
    s.writeProfiles(p);
    RunResult r = s.run({"-txtfcvrg", "f.txt", "-xmlfcvrg", "f.xml"});
    EXPECT_EQ(r.status, 0);
    ExpectSameBytes("f.txt", "Covered Functions in File: \"/src/r.c\"\n\"eighth\"\t1\t800\t1\t  0.13\n", s.read("f.txt"));
    ExpectSameBytes("f.xml",
                    "<PROJECT name = \"(null)\">\n<MODULE name = \"/src/r.c\">\n<FUNCTION name=\"eighth\" freq=\"1\">\n"
                    "<BLOCKS total=\"800\" covered=\"1\" coverage=\"  0.13%\"></BLOCKS>\n</FUNCTION>\n</MODULE>\n"
                    "</PROJECT>\n",
                    s.read("f.xml"));
}

TEST(FastFiles, MarkersMakeLinesInfeasible)
{
    Scenario s;
    const std::string m = s.path("src/m.c");
    s.write("src/m.c", "int g(int x)\n"               // 1
                       "{\n"                          // 2
                       "  if (x) return 1;\n"         // 3
                       "  return 0; // NOTREACHED\n"  // 4
                       "}\n"                          // 5
                       "int k(void) // NOTREACHED\n"  // 6: the whole of k, to line 10
                       "{\n"                          // 7
                       "  return 3;\n"                // 8
                       "}\n"                          // 9
                       "/* BEGIN_OFF */\n"            // 10
                       "int h(void)\n"                // 11
                       "{\n"                          // 12
                       "  return 2;\n"                // 13
                       "}\n"                          // 14
                       "/* END_OFF */\n"              // 15
                       "int last(void)\n"             // 16
                       "{\n"                          // 17
                       "  return 4;\n"                // 18
                       "}\n"                          // 19
                       "/* END_OFF */\n");            // 20: unmatched, a warning
    Project p;
    p.Add(m, "g", 1).Blocks({{5, 1, 1}, {2, 3, 3}, {0, 4, 3}});
    p.Add(m, "k", 6).Blocks({{1, 6, 1}, {1, 8, 3}});
    p.Add(m, "h", 11).Blocks({{0, 11, 1}, {0, 13, 3}});
    p.Add(m, "last", 16).Blocks({{7, 16, 1}, {0, 18, 3}});
    s.writeProfiles(p);
    // The file is scanned for every function: the warning comes four times
    // per file written.
    ExpectGolden("fast_files_markers", s,
                 s.run(AllFour({"-onelinedsbl", "NOTREACHED", "-beginblkdsbl", "BEGIN_OFF", "-endblkdsbl",
                                "END_OFF"})));
}

TEST(FastFiles, APairOutsideTheComponentListEndsTheWalk)
{
    Scenario s;
    Project p;
    p.Add("/src/a.c", "a1", 1).Blocks({{1, 1, 1}});
    p.Add("/src/a.c", "a2", 5).Blocks({{2, 5, 1}});
    p.Add("/src/b.c", "b1", 1).Blocks({{3, 1, 1}});
    p.Add("/src/c.c", "c1", 1).Blocks({{4, 1, 1}});
    s.writeProfiles(p);

    // b.c is not of interest: the walk stays on its pair, so c.c never comes.
    s.write("comp.txt", "a.c\nc.c\n");
    ExpectGolden("fast_files_component_list", s, s.run(AllFour({"-comp", "comp.txt"})));

    // Already the first pair is out: no module at all, and the XML files
    // still get their closing "</MODULE>".
    s.write("comp.txt", "c.c\n");
    RunResult r = s.run(AllFour({"-comp", "comp.txt"}));
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(s.read("f.txt"), "");
    EXPECT_EQ(s.read("b.txt"), "");
    EXPECT_EQ(s.read("f.xml"), "<PROJECT name = \"(null)\">\n</MODULE>\n</PROJECT>\n");
    EXPECT_EQ(s.read("b.xml"), "<PROJECT name = \"(null)\">\n</MODULE>\n</PROJECT>\n");
}

TEST(FastFiles, ADynamicProfileWithoutFunctionsIsCorrupt)
{
    Scenario s;
    Project p;
    p.Add("/src/a.c", "main", 1).OnlyInSpi();
    s.writeProfiles(p);
    // The first file ends the run; the XML files keep their opening only.
    RunResult r = s.run(AllFour({"-txtdcg", "cg.txt"}));
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, BANNER + "vemtra.dpi is corrupt!\n");
    EXPECT_EQ(s.read("f.xml"), "<PROJECT name = \"(null)\">\n");
    EXPECT_EQ(s.outputs().size(), 5u);
    EXPECT_EQ(s.read("cg.txt"), "");

    // The call-graph file alone ends the same way.
    r = s.run({"-txtdcg", "cg.txt", "-dpi", "vemtra.dpi"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, BANNER + "vemtra.dpi is corrupt!\n");
}
