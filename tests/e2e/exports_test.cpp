// What a CI pipeline reads of a run: the LCOV and JSON exports, the console
// summary and the coverage gates, --version and --help; golden on a small
// project, and checked by the real LCOV tools on the example.
#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/html_links.h"
#include "tests/support/profile_writer.h"
#include "tests/support/report_figures.h"
#include "tests/support/scenario.h"

using testsupport::FirstMatch;
using testsupport::Project;
using testsupport::RunResult;
using testsupport::Scenario;

namespace {

// Two files: one with a function that ran partly, a crowded line and a
// never-called function; one that nothing calls.
void WriteExportProject(Scenario &scenario)
{
    scenario.write("src/calc.c",
                   "int add(int a, int b)\n"        // 1
                   "{\n"                            // 2
                   "    if (a < 0) return b;\n"     // 3
                   "    return a + b;\n"            // 4
                   "}\n"                            // 5
                   "int unused(void)\n"             // 6
                   "{\n"                            // 7
                   "    return 0;\n"                // 8
                   "}\n");                          // 9
    scenario.write("src/idle.c", "void idle(void)\n{\n}\n");
    Project p;
    p.runs = 2;
    const std::string src = scenario.dir() + "/src/";
    p.Add(src + "calc.c", "add", 1).Blocks({{6, 2, 1}, {6, 3, 5}, {0, 3, 16}, {6, 4, 5}});
    p.Add(src + "calc.c", "unused", 6).Blocks({{0, 8, 5}}).OnlyInSpi();
    p.Add(src + "idle.c", "idle", 1).Blocks({{0, 2, 1}}).OnlyInSpi();
    scenario.writeProfiles(p);
}

TEST(Exports, LcovCoberturaJsonAndSummaryOfOneRun)
{
    Scenario scenario;
    WriteExportProject(scenario);
    RunResult result =
        scenario.run({"-nopmeter", "-nohtml", "-prj", "calc", "-lcov", "cov.info", "-json", "cov.json", "-summary",
                      "-cobertura", "cov.xml"});
    EXPECT_EQ(0, result.status) << result.err;
    testsupport::ExpectGolden("exports_of_one_run", scenario, result);
}

// Names with markup and control bytes: the Cobertura file stays valid XML
// (a control byte becomes "?"), the JSON escapes them, the LCOV record
// keeps them on their line.
TEST(Exports, HostileNamesKeepTheExportsWellFormed)
{
    Scenario scenario;
    const std::string source = "src/a<&\"'>.c";
    scenario.write(source, "int f(void) { return 1; }\n");
    Project p;
    p.Add(scenario.path(source), "f\x01<&>", 1).Blocks({{1, 1, 13}});
    scenario.writeProfiles(p);
    RunResult result =
        scenario.run({"-nopmeter", "-nohtml", "-cobertura", "h.xml", "-json", "h.json", "-lcov", "h.info"});
    ASSERT_EQ(0, result.status) << result.err;
    RunResult xmllint = testsupport::RunProgram(testsupport::ProgramRun{
        "/usr/bin/xmllint", "xmllint",
        {"--noout", "--nonet", "--dtdvalid", testsupport::SourcePath("tests/formats/coverage-04.dtd"), "h.xml"},
        scenario.dir(), {}, {}, 60, 0});
    EXPECT_EQ(0, xmllint.status) << xmllint.err;
    EXPECT_NE(std::string::npos, scenario.read("h.xml").find("<method name=\"f?&lt;&amp;&gt;\""));
    EXPECT_NE(std::string::npos, scenario.read("h.json").find("\"profile_name\":\"f\\u0001<&>\""));
    EXPECT_NE(std::string::npos, scenario.read("h.info").find("\nFN:1,f\x01<&>\n"));
}

TEST(Exports, GatesEndWithStatus3BelowTheThresholdAnd0AtIt)
{
    Scenario scenario;
    WriteExportProject(scenario);
    // 3 of 6 blocks (50.00%), 1 of 3 functions (33.33%).
    const struct {
        std::vector<std::string> gates;
        int status;
        std::string message;
    } cases[] = {
        {{"-minblock", "50"}, 0, ""},
        {{"-minblock", "50.01"}, 3, "ERROR: block coverage 50.00% is below the required 50.01%\n"},
        {{"-minfunc", "33.33", "-minblock", "0"}, 0, ""},
        {{"-minfunc", "50", "-minblock", "80"}, 3,
         "ERROR: block coverage 50.00% is below the required 80.00%\n"
         "ERROR: function coverage 33.33% is below the required 50.00%\n"},
        {{"-minblock", "101"}, 1, "ERROR: -minblock takes a percentage from 0 to 100, not '101'.\n"},
        {{"-minfunc", "half"}, 1, "ERROR: -minfunc takes a percentage from 0 to 100, not 'half'.\n"},
        {{"-minblock", "50", "-ref", "vemtra.dpi"}, 1,
         "ERROR: option -minblock works on the full report only; it cannot be combined with -ref.\n"},
        {{"-lcov", "x.info", "-txtfcvrg", "f.txt"}, 1,
         "ERROR: option -lcov works on the full report only; it cannot be combined with -txtfcvrg.\n"},
    };
    for (const auto &c : cases) {
        std::vector<std::string> args = {"-nopmeter", "-nohtml"};
        args.insert(args.end(), c.gates.begin(), c.gates.end());
        RunResult result = scenario.run(args);
        EXPECT_EQ(c.status, result.status) << c.gates[0] << " " << c.gates[1];
        const std::string &err = result.err;
        EXPECT_EQ(c.message, err.substr(err.size() < c.message.size() ? 0 : err.size() - c.message.size()));
        if (c.message.empty()) {
            EXPECT_EQ(std::string::npos, err.find("ERROR")) << err;
        }
    }
}

TEST(Exports, VersionAndHelpOnStandardOutput)
{
    Scenario scenario;
    RunResult version = scenario.run({"--version"});
    EXPECT_EQ(0, version.status);
    EXPECT_EQ("vemcov 1.1.0\n", version.out);
    EXPECT_EQ(version.out, scenario.run({"-version"}).out);

    RunResult help = scenario.run({"--help"});
    RunResult documented = scenario.run({"-h"});
    EXPECT_EQ(0, help.status);
    EXPECT_EQ(1, documented.status);
    EXPECT_EQ(documented.out, help.out);
    EXPECT_EQ("", help.err);
}

// -outdir puts the same report, byte for byte, into a directory made with
// its parents; the other files stay where their names say.
TEST(Exports, OutdirHoldsTheSameReport)
{
    Scenario scenario;
    WriteExportProject(scenario);
    RunResult here = scenario.run({"-nopmeter"});
    ASSERT_EQ(0, here.status) << here.err;
    const std::map<std::string, std::string> expected = scenario.outputs();
    std::filesystem::remove_all(scenario.path("CodeCoverage"));
    std::filesystem::remove(scenario.path("CODE_COVERAGE.HTML"));

    RunResult there = scenario.run({"-nopmeter", "-outdir", "out/report", "-lcov", "cov.info"});
    ASSERT_EQ(0, there.status) << there.err;
    std::map<std::string, std::string> written = scenario.outputs();
    EXPECT_EQ(1u, written.erase("cov.info"));
    EXPECT_EQ(expected.size(), written.size());
    for (const auto &[name, bytes] : expected)
        EXPECT_EQ(bytes, written["out/report/" + name]) << name;
    testsupport::ExpectLinksResolve(scenario.path("out/report"));

    RunResult refused = scenario.run({"-nopmeter", "-outdir", "cov.info/sub"});
    EXPECT_EQ(1, refused.status);
    EXPECT_NE(std::string::npos,
              refused.err.find("ERROR: cannot create the report directory cov.info/sub: Not a directory\n"))
        << refused.err;
}

// The numbers of one summary page row, in page order: for files, functions
// and blocks each total, covered, uncovered and percentage.
// genhtml renders the example's tracefile without a warning, and its
// function totals are the summary page's; the JSON totals and the Cobertura
// root's block figures are too, and xmllint finds the Cobertura file valid
// against the format's DTD.
TEST(Exports, RealToolsAgreeWithTheSummaryPageOnTheExample)
{
    Scenario scenario;
    RunResult made = testsupport::RunProgram(testsupport::ProgramRun{
        testsupport::BuildPath("examples/make_example_profiles"), "make_example_profiles",
        {testsupport::SourcePath("examples/src"), scenario.dir()}, scenario.dir(), {}, {}, 60, 0});
    ASSERT_EQ(0, made.status) << made.err;
    RunResult result = scenario.run({"-nopmeter", "-counts", "-onelinedsbl", "NOT_FEASIBLE", "-beginblkdsbl",
                                     "BEGIN_DEBUG_ONLY", "-endblkdsbl", "END_DEBUG_ONLY", "-lcov", "example.info",
                                     "-json", "example.json", "-cobertura", "example.xml"});
    ASSERT_EQ(0, result.status) << result.err;
    std::vector<std::string> cells = testsupport::SummaryPageCells(scenario.read("CodeCoverage/__CODE_COVERAGE.HTML"));
    ASSERT_EQ(12u, cells.size());

    RunResult genhtml = testsupport::RunProgram(testsupport::ProgramRun{
        "/usr/bin/genhtml", "genhtml", {"--output-directory", "lcov-html", "example.info"}, scenario.dir(), {}, {},
        120, 0});
    ASSERT_EQ(0, genhtml.status) << genhtml.err;
    EXPECT_EQ(std::string::npos, (genhtml.out + genhtml.err).find("WARNING")) << genhtml.out << genhtml.err;
    EXPECT_EQ(cells[5] + " of " + cells[4], FirstMatch(genhtml.out, R"(functions\.+: [0-9.]+% \((\d+ of \d+))"));

    const std::string json = scenario.read("example.json");
    EXPECT_EQ(cells[0], FirstMatch(json, R"("totals":\{"files":(\d+))"));
    EXPECT_EQ(cells[1], FirstMatch(json, R"("files_covered":(\d+),"functions")"));
    EXPECT_EQ(cells[4], FirstMatch(json, R"("totals":\{[^}]*"functions":(\d+))"));
    EXPECT_EQ(cells[5], FirstMatch(json, R"("totals":\{[^}]*"functions_covered":(\d+))"));
    EXPECT_EQ(cells[8], FirstMatch(json, R"("totals":\{[^}]*"blocks":(\d+))"));
    EXPECT_EQ(cells[9], FirstMatch(json, R"("totals":\{[^}]*"blocks_covered":(\d+))"));
    EXPECT_EQ(cells[11], FirstMatch(json, R"("totals":\{[^}]*"block_percent":([0-9.]+))"));

    RunResult xmllint = testsupport::RunProgram(testsupport::ProgramRun{
        "/usr/bin/xmllint", "xmllint",
        {"--noout", "--nonet", "--dtdvalid", testsupport::SourcePath("tests/formats/coverage-04.dtd"), "example.xml"},
        scenario.dir(), {}, {}, 60, 0});
    // The DOCTYPE's own address cannot be reached here (xmllint says so);
    // the local copy of the DTD decides.
    EXPECT_EQ(0, xmllint.status) << xmllint.err;
    EXPECT_EQ(std::string::npos, xmllint.err.find("validity")) << xmllint.err;
    const std::string cobertura = scenario.read("example.xml");
    EXPECT_EQ(cells[8], FirstMatch(cobertura, R"re(<coverage [^>]*lines-valid="(\d+)")re"));
    EXPECT_EQ(cells[9], FirstMatch(cobertura, R"re(<coverage [^>]*lines-covered="(\d+)")re"));
}

}  // namespace
