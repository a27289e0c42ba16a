// The per-file pages of full runs, byte for byte against golden trees: the
// listings (counter lines with tabs and crowded markers, infeasible lines, a
// never-called function, a 0xFF byte, an empty file, a last line without a
// line feed), the function lists in every order with decorated and template
// names and test-database links, the framesets; a differential run; and a
// check that every link and frame source of every page of the report
// resolves, anchors included.
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

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

// Every href and src of every page, resolved from the page's directory,
// names a file of the run; an "#l<n>" fragment names an anchor of it.
TEST(ListingReport, EveryLinkOfEveryPageResolves)
{
    Scenario scenario;
    WriteListingProject(scenario);
    RunResult result = scenario.run({"-nopmeter", "-counts", "-onelinedsbl", "NOT_FEASIBLE"});
    ASSERT_EQ(0, result.status) << result.err;

    std::map<std::string, std::string> files = scenario.outputs();
    const std::regex attribute("(?:href|src)=\"([^\"]*)\"", std::regex::icase);
    const std::regex external("^(?:https?:|mailto:)", std::regex::icase);
    std::set<std::string> pages, broken;
    for (const auto &[name, text] : files) {
        if (name.size() < 5 || name.substr(name.size() - 5) != ".HTML")
            continue;
        pages.insert(name);
        std::string dir = name.find('/') == std::string::npos ? "" : name.substr(0, name.rfind('/') + 1);
        for (std::sregex_iterator it(text.begin(), text.end(), attribute), end; it != end; ++it) {
            std::string link = (*it)[1];
            if (std::regex_search(link, external))
                continue;
            std::string fragment;
            if (link.find('#') != std::string::npos) {
                fragment = link.substr(link.find('#') + 1);
                link = link.substr(0, link.find('#'));
            }
            std::string target = dir + link;
            // "dir/../x" is "x": the toolbar links up and down again.
            for (size_t up; (up = target.find("/../")) != std::string::npos;) {
                size_t parent = target.rfind('/', up - 1);
                size_t from = parent == std::string::npos ? 0 : parent + 1;
                target.erase(from, up + 4 - from);
            }
            auto found = files.find(target);
            if (found == files.end())
                broken.insert(name + " -> " + (*it)[1].str());
            else if (!fragment.empty() && !ListingCutShort(target) &&
                     found->second.find("name=\"" + fragment + "\"") == std::string::npos)
                broken.insert(name + " -> " + (*it)[1].str() + " (no anchor)");
        }
    }
    EXPECT_TRUE(broken.empty()) << [&] {
        std::string all;
        for (const std::string &b : broken)
            all += b + "\n";
        return all;
    }();
    // The per-file pages are among those checked: five framesets, five
    // listings, and the function lists.
    int framesets = 0, listings = 0, lists = 0;
    for (const std::string &page : pages) {
        if (page.find("_SRC_") == std::string::npos)
            continue;
        if (page.size() > 9 && page.substr(page.size() - 9) == "_SRC.HTML")
            ++listings;
        else if (page.find("FNCS_") != std::string::npos)
            ++lists;
        else
            ++framesets;
    }
    EXPECT_EQ(5, framesets);
    EXPECT_EQ(5, listings);
    EXPECT_EQ(32, lists);
}

}  // namespace
