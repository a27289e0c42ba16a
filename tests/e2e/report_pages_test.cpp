// The report's entry pages from whole runs: toolbar, help, images, the
// covered and uncovered file tables in all their orders, the summary and the
// root frameset, compared with golden trees; and every link of the report
// names a file that was written, with its exact letter case.
#include <algorithm>
#include <filesystem>
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

const char MAIN_C[] =
    "#include <stdio.h>\n"
    "\n"
    "int square(int x)\n"
    "{\n"
    "    return x * x;\n"
    "}\n"
    "\n"
    "int main(void)\n"
    "{\n"
    "    if (square(3) > 5)\n"
    "        puts(\"big\");\n"
    "    else\n"
    "        puts(\"small\");\n"
    "    return 0;\n"
    "}\n";

const char UTIL_C[] =
    "int twice(int x)\n"
    "{\n"
    "    return 2 * x;\n"
    "}\n"
    "\n"
    "int unused(void)\n"
    "{\n"
    "    return 0;\n"
    "}\n";

// main.c ran (one block of main did not).
void AddMain(Scenario &scenario, Project &project, uint64_t scale = 1)
{
    scenario.write("main.c", MAIN_C);
    project.Add(scenario.path("main.c"), "square", 3).Blocks({{1 * scale, 5, 5}});
    project.Add(scenario.path("main.c"), "main", 8)
        .Blocks({{1 * scale, 10, 5}, {1 * scale, 11, 9}, {0, 13, 9}, {1 * scale, 14, 5}});
}

// lib/util.c: by default never run (its functions have no segment), or run
// once each.
void AddUtil(Scenario &scenario, Project &project, bool ran = false)
{
    scenario.write("lib/util.c", UTIL_C);
    project.Add(scenario.path("lib/util.c"), "twice", 1).Blocks({{1, 3, 5}}).in_dpi = ran;
    project.Add(scenario.path("lib/util.c"), "unused", 6).Blocks({{1, 8, 5}}).in_dpi = ran;
}

void WriteProfiles(Scenario &scenario, const Project &project)
{
    scenario.write("vemtra.spi", testsupport::SpiText(project));
    scenario.write("vemtra.dpi", testsupport::DpiBytes(project));
}

// The report's own pages all begin "__"; the others are the pages of the
// source files (framesets, listings, function lists). Until a run writes any
// listing those pages are not expected to exist, and links to them are
// skipped; once listings are written every link is checked.
void ExpectEveryLinkResolves(const Scenario &scenario)
{
    namespace fs = std::filesystem;
    bool listingsWritten = false;
    std::vector<std::string> pages;
    for (const auto &entry : fs::directory_iterator(scenario.path("CodeCoverage"))) {
        std::string name = entry.path().filename().string();
        listingsWritten = listingsWritten || name.find("_SRC.HTML") != std::string::npos;
        if (entry.path().extension() == ".HTML")
            pages.push_back("CodeCoverage/" + name);
    }
    auto skip = [&](const std::string &file) {
        return !listingsWritten && file.rfind("CodeCoverage/__", 0) != 0 && file.rfind("CodeCoverage/", 0) == 0;
    };
    std::vector<std::string> visited;
    for (const ReportLink &link : testsupport::BrokenLinks(scenario.dir(), "CODE_COVERAGE.HTML", skip, &visited))
        ADD_FAILURE() << link.page << " links to " << link.target << ", but " << link.file << " was not written";
    // The help page opens from the toolbar of the file framesets, so while
    // there are none it is reached from the toolbar itself.
    for (const ReportLink &link : testsupport::BrokenLinks(scenario.dir(), "CodeCoverage/__TOOLBAR.HTML", skip, &visited))
        ADD_FAILURE() << link.page << " links to " << link.target << ", but " << link.file << " was not written";
    for (const std::string &page : pages) {
        if (!skip(page)) {
            EXPECT_NE(std::find(visited.begin(), visited.end(), page), visited.end()) << page << " is not linked";
        }
    }
    for (const char *image : {"__Home.gif", "__Help.gif", "__TarskR.gif", "__Spacer.gif"})
        EXPECT_NE(std::find(visited.begin(), visited.end(), std::string("CodeCoverage/") + image), visited.end())
            << image << " is not used";
}

// Runs the tool and compares everything it wrote with the golden case, then
// follows the links of the report.
void ExpectReport(const Scenario &scenario, const std::string &golden, const std::vector<std::string> &args)
{
    RunResult result = scenario.run(args);
    EXPECT_EQ(result.status, 0) << result.err;
    ExpectGolden(golden, scenario, result);
    ExpectEveryLinkResolves(scenario);
}

}  // namespace

TEST(ReportPages, CoveredFilesOnly)
{
    Scenario scenario;
    Project project;
    AddMain(scenario, project, 1000);
    WriteProfiles(scenario, project);
    ExpectReport(scenario, "report_covered_only", {"-nopmeter"});
}

TEST(ReportPages, UncoveredFilesOnlyWithProjectName)
{
    Scenario scenario;
    Project project;
    AddUtil(scenario, project);
    WriteProfiles(scenario, project);
    ExpectReport(scenario, "report_uncovered_only", {"-nopmeter", "-prj", "Demo"});
}

TEST(ReportPages, CoveredAndUncoveredFiles)
{
    Scenario scenario;
    Project project;
    AddMain(scenario, project);
    AddUtil(scenario, project);
    WriteProfiles(scenario, project);
    ExpectReport(scenario, "report_covered_and_uncovered",
                 {"-nopmeter", "-prj", "Demo", "-mname", "QA_Team", "-maddr", "qa@example.com"});
}

TEST(ReportPages, ReferenceProfile)
{
    Scenario scenario;
    Project current;
    AddMain(scenario, current);
    AddUtil(scenario, current, true);
    // The reference run did not execute main's last block, and util.c's
    // functions are new: they are not in it at all.
    Project reference;
    reference.Add(scenario.path("main.c"), "square", 3).Blocks({{1, 5, 5}});
    reference.Add(scenario.path("main.c"), "main", 8).Blocks({{1, 10, 5}, {1, 11, 9}, {0, 13, 9}, {0, 14, 5}});
    WriteProfiles(scenario, current);
    scenario.write("reference.dpi", testsupport::DpiBytes(reference));
    ExpectReport(scenario, "report_reference", {"-nopmeter", "-ref", "reference.dpi"});
}

TEST(ReportPages, EmptyStaticProfile)
{
    Scenario scenario;
    Project project;
    AddMain(scenario, project);
    scenario.write("vemtra.spi", "");
    scenario.write("vemtra.dpi", testsupport::DpiBytes(project));
    // Toolbar, help, images, summary and root page; no file tables.
    ExpectReport(scenario, "report_empty_static_profile", {"-nopmeter"});
    EXPECT_FALSE(scenario.exists("CodeCoverage/__COVERED_FILES_COVERAGE_4.HTML"));
    EXPECT_FALSE(scenario.exists("CodeCoverage/__UNCOVERED_FILES_COVERAGE_4.HTML"));
}

TEST(ReportPages, NoHtmlWritesNoReport)
{
    Scenario scenario;
    Project project;
    AddMain(scenario, project);
    WriteProfiles(scenario, project);
    RunResult result = scenario.run({"-nopmeter", "-nohtml"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_FALSE(scenario.exists("CodeCoverage"));
    EXPECT_FALSE(scenario.exists("CODE_COVERAGE.HTML"));
}

TEST(ReportPages, RerunOverwritesTheReport)
{
    Scenario scenario;
    Project project;
    AddMain(scenario, project);
    WriteProfiles(scenario, project);
    scenario.mkdir("CodeCoverage");
    scenario.write("CodeCoverage/__Home.gif", std::string(5000, 'x'));
    RunResult result = scenario.run({"-nopmeter"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(scenario.read("CodeCoverage/__Home.gif").size(), 977u);
    EXPECT_EQ(scenario.read("CodeCoverage/__Home.gif").substr(0, 6), "GIF89a");
}
