// The modern view (-html5): its pages byte for byte on a project that has
// every kind of line it paints, the documented report unchanged beside it,
// differential labels, and the options it cannot go with.
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

namespace {

using testsupport::LineInfo;
using testsupport::Project;
using testsupport::RunResult;
using testsupport::Scenario;

// Two files in two directories.
// src/app.c: CR LF line ends, a lone CR, a tab; a function whose blocks carry
// their source ranges (nested: the loop's body inside the function's body,
// an unexecuted block inside the loop's), a function never called, a name
// with markup.
// src/lib/util.c: start positions only; the colour of the first function
// stops at a blank line, at a comment-only line and before the next
// function's first line; a line that a marker excludes.
void WriteViewProject(Scenario &scenario)
{
    scenario.write("src/app.c",
                   "int main(void)\r\n"                      // 1
                   "{\r\n"                                   // 2
                   "\tint s = 0;\r\n"                        // 3
                   "    for (int i = 0; i < 3; i++) {\r\n"  // 4
                   "        s += i; if (s > 9) s = 0;\r\n"   // 5
                   "    }\r"                                 // 6
                   "    return s < \"&\"[0];\r\n"            // 7
                   "}\r\n"                                   // 8
                   "int spare(void) { return 1; }\r\n"       // 9
                   "int odd(void) { return 2; }\r\n");        // 10
    scenario.write("src/lib/util.c",
                   "int twice(int x)\n"      // 1
                   "{\n"                     // 2
                   "    int y = x;\n"        // 3
                   "    y += x;\n"           // 4
                   "\n"                      // 5
                   "    return y;\n"         // 6
                   "    // done\n"           // 7
                   "    (void)0; // NF\n"   // 8
                   "}\n"                     // 9
                   "int once(int x)\n"       // 10
                   "{\n"                     // 11
                   "    return x;\n"         // 12
                   "}\n");                   // 13
    Project p;
    p.runs = 1;
    const std::string src = scenario.dir() + "/src/";
    auto &main = p.Add(src + "app.c", "main", 1)
                     .Blocks({{1, 2, 1, 8, 2}, {3, 4, 33, 6, 6}, {3, 5, 17, 5, 27}, {0, 5, 28, 5, 34}});
    main.line_info = LineInfo::Packed;
    p.Add(src + "app.c", "spare", 9).Blocks({{0, 9, 17}}).OnlyInSpi();
    auto &odd = p.Add(src + "app.c", "<b>\"odd\"&'", 10).Blocks({{2, 10, 15, 10, 28}});
    odd.line_info = LineInfo::Packed;
    p.Add(src + "lib/util.c", "twice", 1).Blocks({{4, 3, 5}, {4, 6, 5}, {4, 8, 5}});
    p.Add(src + "lib/util.c", "once", 10).Blocks({{0, 12, 5}});
    scenario.writeProfiles(p);
}

// The covered colour that -ccolor sets reaches the light theme; a -bcolor
// value that is no plain colour stays out of the stylesheet.
TEST(Html5View, PagesOfEveryKindOfLine)
{
    Scenario scenario;
    WriteViewProject(scenario);
    RunResult result =
        scenario.run({"-nopmeter", "-nohtml", "-prj", "<App>", "-onelinedsbl", "NF", "-ccolor", "#c0ffc0", "-bcolor",
                      "red;}*{display:none", "-html5", "view"});
    EXPECT_EQ(0, result.status) << result.err;
    testsupport::ExpectGolden("html5_view", scenario, result);
}

// The documented report's files are the same bytes with and without the
// view beside them.
TEST(Html5View, LeavesTheDocumentedReportAsItIs)
{
    Scenario scenario;
    WriteViewProject(scenario);
    RunResult alone = scenario.run({"-nopmeter", "-counts"});
    ASSERT_EQ(0, alone.status) << alone.err;
    std::map<std::string, std::string> documented = scenario.outputs();
    RunResult beside = scenario.run({"-nopmeter", "-counts", "-html5", "view"});
    ASSERT_EQ(0, beside.status) << beside.err;
    EXPECT_EQ(alone.out, beside.out);
    EXPECT_EQ(alone.err, beside.err);
    std::map<std::string, std::string> both = scenario.outputs();
    size_t viewFiles = 0;
    for (auto it = both.begin(); it != both.end();) {
        if (it->first.compare(0, 5, "view/") == 0) {
            ++viewFiles;
            it = both.erase(it);
        } else {
            ++it;
        }
    }
    EXPECT_EQ(documented, both);
    EXPECT_EQ(5u, viewFiles);  // index, style, script, two file pages
}

// Two paths that make the same page name get numbered pages, each linked.
TEST(Html5View, PathsThatSanitiseAlikeGetPagesOfTheirOwn)
{
    Scenario scenario;
    scenario.write("src/a b.c", "int f(void)\n{\n    return 0;\n}\n");
    scenario.write("src/a+b.c", "int g(void)\n{\n    return 1;\n}\n");
    Project p;
    p.Add(scenario.dir() + "/src/a b.c", "f", 1).Blocks({{1, 3, 5}});
    p.Add(scenario.dir() + "/src/a+b.c", "g", 1).Blocks({{0, 3, 5}});
    scenario.writeProfiles(p);
    RunResult result = scenario.run({"-nopmeter", "-nohtml", "-html5", "view"});
    ASSERT_EQ(0, result.status) << result.err;
    const std::string index = scenario.read("view/index.html");
    // The modules come in path order: "a b.c" before "a+b.c".
    EXPECT_NE(std::string::npos, index.find("href=\"files/a_b.c.html\">a b.c</a>")) << index;
    EXPECT_NE(std::string::npos, index.find("href=\"files/a_b.c-2.html\">a+b.c</a>")) << index;
    EXPECT_NE(std::string::npos, scenario.read("view/files/a_b.c.html").find("<h1>a b.c</h1>"));
    EXPECT_NE(std::string::npos, scenario.read("view/files/a_b.c-2.html").find("<h1>a+b.c</h1>"));
}

TEST(Html5View, DifferentialLabelsAndRefusedOffTheFullReport)
{
    Scenario scenario;
    WriteViewProject(scenario);
    scenario.write("old.dpi", scenario.read("vemtra.dpi"));
    RunResult reference = scenario.run({"-nopmeter", "-nohtml", "-ref", "old.dpi", "-html5", "view"});
    ASSERT_EQ(0, reference.status) << reference.err;
    const std::string index = scenario.read("view/index.html");
    EXPECT_NE(std::string::npos, index.find("Functions missed: <strong>")) << index;
    EXPECT_NE(std::string::npos, index.find("Function miss %</button>")) << index;

    RunResult fast = scenario.run({"-nopmeter", "-html5", "view2", "-txtfcvrg", "f.txt"});
    EXPECT_EQ(1, fast.status);
    EXPECT_NE(std::string::npos, fast.err.find("-html5")) << fast.err;
}

}  // namespace
