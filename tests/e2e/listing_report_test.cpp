// The per-file pages of full runs, byte for byte against golden trees: the
// listings (counter lines with tabs and crowded markers, infeasible lines, a
// never-called function, a 0xFF byte, an empty file, a last line without a
// line feed, a file whose only function starts on an infeasible line), the
// function lists in every order with decorated and template names and
// test-database links, the framesets in their four forms, file tables that
// sort by the name after the last "/" and group large numbers; a
// differential run; and every link and anchor of those reports resolving.
#include <string>

#include <gtest/gtest.h>

#include "report/naming.h"
#include "tests/support/html_links.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

using testsupport::Project;
using testsupport::RunResult;
using testsupport::Scenario;

namespace {

// A small project whose files show every feature of the listing.
void WriteListingProject(Scenario &scenario)
{
    scenario.write("src/shapes.cpp",
                   "// shapes.cpp\n"                                 // 1
                   "#include \"shapes.h\"\n"                         // 2
                   "\n"                                              // 3
                   "int area(int w, int h)\n"                        // 4
                   "{\n"                                             // 5
                   "\tif (w < 0 || h < 0) return -1;\n"              // 6
                   "\treturn w * h;\n"                               // 7
                   "}\n"                                             // 8
                   "\n"                                              // 9
                   "int check(int v)\n"                              // 10
                   "{\n"                                             // 11
                   "    if (v > 1000)\n"                             // 12
                   "        return 0; // NOT_FEASIBLE\n"             // 13
                   "    return v & 1 ? v : \"x\"[0];\n"              // 14
                   "}\n"                                             // 15
                   "\n"                                              // 16
                   "int unused(void)\n"                              // 17
                   "{\n"                                             // 18
                   "    return 3;\n"                                 // 19
                   "}\n");                                           // 20
    // late.c lies in another directory, so the file tables show that they
    // sort by the name after the last "/"; its function "early" has 1500
    // blocks in the static profile, so the totals need grouping.
    std::string longFile;
    for (int line = 1; line <= 44; ++line)
        longFile += line == 40 ? "void late() { step(); }\n" : "/* filler */\n";
    scenario.write("lib/late.c", longFile);
    scenario.write("src/ff.c", "int f(void)\n{ return 1; }\n\xff int g(void) { return 2; }\n");
    scenario.write("src/empty.c", "");
    scenario.write("src/nonl.c", "int last(void) { return 9; }");
    // off.c's only function starts on a marked line: it is left out, and
    // the file has no function lists. (The marker comment must end before
    // the file does.)
    scenario.write("src/off.c", "int off(void) { return 0; } // NOT_FEASIBLE\n\n");

    Project p;
    p.runs = 2;
    const std::string src = scenario.dir() + "/src/";
    p.Add(src + "shapes.cpp", "_Z4areaii", 4)
        .Blocks({{10, 6, 2}, {0, 6, 2}, {10, 6, 2}, {1, 6, 6}, {0, 6, 22}, {9, 7, 2}});
    p.Add(src + "shapes.cpp", "_Z5checkIiEiT_", 10)
        .Blocks({{1234567, 12, 5}, {0, 13, 9}, {1234567, 14, 5}, {1000, 14, 12}, {0, 14, 14}});
    p.Add(src + "shapes.cpp", "_Send@12", 17).Blocks({{0, 19, 5}}).OnlyInSpi();
    const std::string lib = scenario.dir() + "/lib/";
    p.Add(lib + "late.c", "late", 40).Blocks({{4, 40, 15}});
    p.Add(lib + "late.c", "early", 4).Blocks({{0, 4, 1}}).block_count = 1500;
    p.Add(src + "ff.c", "f", 1).Blocks({{2, 2, 3}});
    p.Add(src + "ff.c", "g", 3).Blocks({{0, 3, 2}});
    p.Add(src + "empty.c", "e", 1).Blocks({{1, 1, 1}});
    p.Add(src + "nonl.c", "last", 1).Blocks({{5, 1, 18}});
    p.Add(src + "off.c", "off", 1).Blocks({{1, 1, 15}});
    scenario.writeProfiles(p);
}

// The function lists link to anchors the listing cannot hold: ff.c stops at
// its byte 0xFF, before g's line 3, and empty.c has no lines at all.
bool ListingCutShort(const std::string &link)
{
    return link.find("_FF_C_SRC.HTML#l3") != std::string::npos || link.find("_EMPTY_C_SRC.HTML#") != std::string::npos;
}

TEST(ListingReport, PagesOfEveryFile)
{
    Scenario scenario;
    WriteListingProject(scenario);
    RunResult result = scenario.run({"-nopmeter", "-counts", "-onelinedsbl", "NOT_FEASIBLE", "-tvx_host",
                                     "HTTP://tvx.example.org", "-tvx_db_prj", "kernel"});
    ASSERT_EQ(0, result.status) << result.err;
    testsupport::ExpectGolden("listing_report", scenario, result);
    testsupport::ExpectLinksResolve(scenario.dir(), ListingCutShort);
}

TEST(ListingReport, FloatingCounterLinesAndPlainLinks)
{
    Scenario scenario;
    WriteListingProject(scenario);
    RunResult result = scenario.run({"-nopmeter", "-counts", "-icolor", "floating", "-tvx_db_name", "cov"});
    ASSERT_EQ(0, result.status) << result.err;
    // Under floating colours a counter line takes the colour in force at
    // the end of its source line: line 6 of shapes.cpp ends uncovered.
    const std::string shapes = scenario.path("src/shapes.cpp");
    std::string listing = scenario.read(getDirSrcHTMLname(shapes.c_str(), "html"));
    EXPECT_NE(std::string::npos, listing.find("        <a style=\"background-color: #ffff99\">\t^ 20 (2/3)</a>\n"))
        << listing;
    std::string list = scenario.read(getDirVerHTMLname((shapes + "_CvrdFncs").c_str(), 4, "html"));
    EXPECT_NE(std::string::npos,
              list.find("<a target=\"_new\" href=\"http://tvx_host/function_tests_viewer.php?"
                        "function_name=_Z4areaii&dbName=cov\" title=\"all cover tests\">Tests</a></td></tr>\n"))
        << list;
}

TEST(ListingReport, DifferentialRun)
{
    Scenario scenario;
    // A function new to the reference, then one it knows: the listing's
    // colour goes back to covered where the known one starts.
    scenario.write("src/d.c", "void fresh(void)\n{ c(); }\nvoid old(void)\n{ a(); b(); }\n");
    const std::string src = scenario.dir() + "/src/d.c";
    Project reference;
    reference.Add(src, "old", 3).Blocks({{1, 4, 3}, {0, 4, 8}});
    Project current;
    current.Add(src, "fresh", 1).Blocks({{2, 2, 3}});
    current.Add(src, "old", 3).Blocks({{1, 4, 3}, {5, 4, 8}});
    scenario.writeProfiles(current);
    scenario.write("ref.dpi", testsupport::DpiBytes(reference));
    RunResult result = scenario.run({"-nopmeter", "-ref", "ref.dpi"});
    ASSERT_EQ(0, result.status) << result.err;
    testsupport::ExpectGolden("listing_differential", scenario, result);
    testsupport::ExpectLinksResolve(scenario.dir());
}

}  // namespace
