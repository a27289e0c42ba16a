// The report's entry pages from whole runs, compared with golden trees:
// toolbar, help, images, the covered and uncovered file tables in all their
// orders, the summary and the root frameset with no table, the uncovered
// table alone, both tables, and both under -ref; the project name and the
// page owner; every link of those reports resolving; a rerun over an
// existing report. (-nohtml runs are the full block files' cases.)
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/html_links.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

using testsupport::Project;
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
void AddMain(Scenario &scenario, Project &project)
{
    scenario.write("main.c", MAIN_C);
    project.Add(scenario.path("main.c"), "square", 3).Blocks({{1, 5, 5}});
    project.Add(scenario.path("main.c"), "main", 8).Blocks({{1, 10, 5}, {1, 11, 9}, {0, 13, 9}, {1, 14, 5}});
}

// lib/util.c: by default never run (its functions have no segment), or run
// once each.
void AddUtil(Scenario &scenario, Project &project, bool ran = false)
{
    scenario.write("lib/util.c", UTIL_C);
    project.Add(scenario.path("lib/util.c"), "twice", 1).Blocks({{1, 3, 5}}).in_dpi = ran;
    project.Add(scenario.path("lib/util.c"), "unused", 6).Blocks({{1, 8, 5}}).in_dpi = ran;
}

// Runs the tool and compares everything it wrote with the golden case, then
// follows the links of the report.
void ExpectReport(const Scenario &scenario, const std::string &golden, const std::vector<std::string> &args)
{
    RunResult result = scenario.run(args);
    EXPECT_EQ(result.status, 0) << result.err;
    ExpectGolden(golden, scenario, result);
    testsupport::ExpectLinksResolve(scenario.dir());
}

}  // namespace

TEST(ReportPages, UncoveredFilesOnlyWithProjectName)
{
    Scenario scenario;
    Project project;
    AddUtil(scenario, project);
    scenario.writeProfiles(project);
    ExpectReport(scenario, "report_uncovered_only", {"-nopmeter", "-prj", "Demo"});
}

TEST(ReportPages, CoveredAndUncoveredFiles)
{
    Scenario scenario;
    Project project;
    AddMain(scenario, project);
    AddUtil(scenario, project);
    scenario.writeProfiles(project);
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
    scenario.writeProfiles(current);
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
}

TEST(ReportPages, RerunOverwritesTheReport)
{
    Scenario scenario;
    Project project;
    AddMain(scenario, project);
    scenario.writeProfiles(project);
    scenario.write("CodeCoverage/__Home.gif", std::string(5000, 'x'));
    RunResult result = scenario.run({"-nopmeter"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(scenario.read("CodeCoverage/__Home.gif").size(), 977u);
    EXPECT_EQ(scenario.read("CodeCoverage/__Home.gif").substr(0, 6), "GIF89a");
}

// 1 of 32 blocks is 3.125%, which printf alone would print as 3.12: every
// page that shows the percentage raises the half.
TEST(ReportPages, PercentagesRoundHalfUp)
{
    Scenario scenario;
    Project project;
    std::string source;
    std::vector<testsupport::BlockSpec> blocks;
    for (uint32_t line = 1; line <= 32; line++) {
        source += "x();\n";
        blocks.push_back({line == 1 ? 1u : 0u, line, 1});
    }
    scenario.write("long.c", source);
    project.Add(scenario.path("long.c"), "long_one", 1).Blocks(blocks);
    scenario.writeProfiles(project);
    RunResult result = scenario.run({"-nopmeter"});
    ASSERT_EQ(result.status, 0) << result.err;

    // Page names without the directory part of the file's pages.
    std::vector<std::string> showing;
    for (const auto &[relative, bytes] : scenario.outputs()) {
        EXPECT_EQ(bytes.find("3.12"), std::string::npos) << relative;
        size_t file = relative.find("LONG_C");
        if (bytes.find("  3.13") != std::string::npos)
            showing.push_back(file == std::string::npos ? relative : relative.substr(file));
    }
    // The summary, the covered files' tables in every order with a block
    // percentage, the listing's heading and the covered functions' pages.
    const std::vector<std::string> expected = {
        "LONG_C_CVRDFNCS_1.HTML",     "LONG_C_CVRDFNCS_2.HTML",     "LONG_C_CVRDFNCS_4.HTML",
        "LONG_C_CVRDFNCS_5.HTML",     "LONG_C_SRC.HTML",            "CodeCoverage/__CODE_COVERAGE.HTML",
        "CodeCoverage/__COVERED_FILES_COVERAGE_0.HTML", "CodeCoverage/__COVERED_FILES_COVERAGE_1.HTML",
        "CodeCoverage/__COVERED_FILES_COVERAGE_2.HTML", "CodeCoverage/__COVERED_FILES_COVERAGE_4.HTML",
        "CodeCoverage/__COVERED_FILES_COVERAGE_5.HTML", "CodeCoverage/__COVERED_FILES_COVERAGE_6.HTML",
    };
    EXPECT_EQ(showing, expected);
}
