// The per-file pages of full runs, byte for byte against golden trees: the
// listings (counter lines with tabs and crowded markers, infeasible lines, a
// never-called function, a 0xFF byte, an empty file, a last line without a
// line feed), the function lists in every order with decorated and template
// names and test-database links, the framesets; a differential run; and a
// check that every link and frame source of every page of the report
// resolves, anchors included.
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/html_links.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

using testsupport::Project;
using testsupport::ReportLink;
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
    std::string longFile;
    for (int line = 1; line <= 44; ++line)
        longFile += line == 40 ? "void late() { step(); }\n" : "/* filler */\n";
    scenario.write("src/late.c", longFile);
    scenario.write("src/ff.c", "int f(void)\n{ return 1; }\n\xff int g(void) { return 2; }\n");
    scenario.write("src/empty.c", "");
    scenario.write("src/nonl.c", "int last(void) { return 9; }");

    Project p;
    p.runs = 2;
    const std::string src = scenario.dir() + "/src/";
    p.Add(src + "shapes.cpp", "_Z4areaii", 4)
        .Blocks({{10, 6, 2}, {0, 6, 2}, {10, 6, 2}, {1, 6, 6}, {0, 6, 22}, {9, 7, 2}});
    p.Add(src + "shapes.cpp", "_Z5checkIiEiT_", 10)
        .Blocks({{1234567, 12, 5}, {0, 13, 9}, {1234567, 14, 5}, {1000, 14, 12}, {0, 14, 14}});
    p.Add(src + "shapes.cpp", "_Send@12", 17).Blocks({{0, 19, 5}}).OnlyInSpi();
    p.Add(src + "late.c", "late", 40).Blocks({{4, 40, 15}});
    p.Add(src + "late.c", "early", 4).Blocks({{0, 4, 1}});
    p.Add(src + "ff.c", "f", 1).Blocks({{2, 2, 3}});
    p.Add(src + "ff.c", "g", 3).Blocks({{0, 3, 2}});
    p.Add(src + "empty.c", "e", 1).Blocks({{1, 1, 1}});
    p.Add(src + "nonl.c", "last", 1).Blocks({{5, 1, 18}});
    scenario.write("vemtra.spi", testsupport::SpiText(p));
    scenario.write("vemtra.dpi", testsupport::DpiBytes(p));
}

// The written file whose name ends in `suffix`.
std::string Output(const std::map<std::string, std::string> &files, const std::string &suffix)
{
    for (const auto &[name, text] : files) {
        if (name.size() >= suffix.size() && name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
            return text;
    }
    ADD_FAILURE() << "no page ends in " << suffix;
    return "";
}

TEST(ListingReport, PagesOfEveryFile)
{
    Scenario scenario;
    WriteListingProject(scenario);
    RunResult result = scenario.run({"-nopmeter", "-counts", "-onelinedsbl", "NOT_FEASIBLE", "-tvx_host",
                                     "HTTP://tvx.example.org", "-tvx_db_prj", "kernel"});
    ASSERT_EQ(0, result.status) << result.err;
    testsupport::ExpectGolden("listing_report", scenario, result);
}

TEST(ListingReport, FloatingCounterLinesAndPlainLinks)
{
    Scenario scenario;
    WriteListingProject(scenario);
    RunResult result = scenario.run({"-nopmeter", "-counts", "-icolor", "floating", "-tvx_db_name", "cov"});
    ASSERT_EQ(0, result.status) << result.err;
    // Under floating colours a counter line takes the colour in force at
    // the end of its source line: line 6 of shapes.cpp ends uncovered.
    std::map<std::string, std::string> files = scenario.outputs();
    std::string listing = Output(files, "_SRC_SHAPES_CPP_SRC.HTML");
    EXPECT_NE(std::string::npos, listing.find("        <a style=\"background-color: #ffff99\">\t^ 20 (2/3)</a>\n"))
        << listing;
    std::string list = Output(files, "_SRC_SHAPES_CPP_CVRDFNCS_4.HTML");
    EXPECT_NE(std::string::npos,
              list.find("<a target=\"_new\" href=\"http://tvx_host/function_tests_viewer.php?"
                        "function_name=_Z4areaii&dbName=cov\" title=\"all cover tests\">Tests</a></td></tr>\n"))
        << list;
}

TEST(ListingReport, DifferentialRun)
{
    Scenario scenario;
    scenario.write("src/d.c", "void old(void)\n{ a(); b(); }\nvoid fresh(void)\n{ c(); }\n");
    const std::string src = scenario.dir() + "/src/d.c";
    Project reference;
    reference.Add(src, "old", 1).Blocks({{1, 2, 3}, {0, 2, 8}});
    Project current;
    current.Add(src, "old", 1).Blocks({{1, 2, 3}, {5, 2, 8}});
    current.Add(src, "fresh", 3).Blocks({{2, 4, 3}});
    scenario.write("vemtra.spi", testsupport::SpiText(current));
    scenario.write("vemtra.dpi", testsupport::DpiBytes(current));
    scenario.write("ref.dpi", testsupport::DpiBytes(reference));
    RunResult result = scenario.run({"-nopmeter", "-ref", "ref.dpi"});
    ASSERT_EQ(0, result.status) << result.err;
    testsupport::ExpectGolden("listing_differential", scenario, result);
}

// The listings that end early by design: the empty file has no lines, and
// ff.c stops at its byte 0xFF, before the function of its line 3.
bool ListingCutShort(const std::string &page)
{
    return page.find("_SRC_EMPTY_C_SRC.HTML") != std::string::npos ||
           page.find("_SRC_FF_C_SRC.HTML") != std::string::npos;
}

// Every page of the run is reached from the root page with no link broken,
// the per-file pages included, and every "#l<n>" of a function list names
// an anchor of the listing.
TEST(ListingReport, EveryLinkOfEveryPageResolves)
{
    Scenario scenario;
    WriteListingProject(scenario);
    RunResult result = scenario.run({"-nopmeter", "-counts", "-onelinedsbl", "NOT_FEASIBLE"});
    ASSERT_EQ(0, result.status) << result.err;

    std::vector<std::string> visited;
    auto none = [](const std::string &) { return false; };
    for (const ReportLink &link : testsupport::BrokenLinks(scenario.dir(), "CODE_COVERAGE.HTML", none, &visited))
        ADD_FAILURE() << link.page << " links to " << link.target << ", but " << link.file << " was not written";

    std::map<std::string, std::string> files = scenario.outputs();
    int framesets = 0, listings = 0, lists = 0, anchors = 0;
    for (const auto &[name, text] : files) {
        if (name.find("_SRC_") == std::string::npos)
            continue;
        EXPECT_NE(std::find(visited.begin(), visited.end(), name), visited.end()) << name << " is not linked";
        if (name.size() > 9 && name.substr(name.size() - 9) == "_SRC.HTML") {
            ++listings;
            continue;
        }
        if (name.find("FNCS_") == std::string::npos) {
            ++framesets;
            continue;
        }
        ++lists;
        for (const std::string &link : testsupport::LinksOf(text)) {
            size_t hash = link.find('#');
            if (hash == std::string::npos || ListingCutShort(link))
                continue;
            ++anchors;
            std::string listing = scenario.read("CodeCoverage/" + link.substr(0, hash));
            EXPECT_NE(std::string::npos, listing.find("<a name=\"" + link.substr(hash + 1) + "\" "))
                << name << " links to " << link;
        }
    }
    EXPECT_EQ(5, framesets);
    EXPECT_EQ(5, listings);
    EXPECT_EQ(32, lists);
    EXPECT_GT(anchors, 0);
}

}  // namespace
