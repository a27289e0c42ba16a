// The example program built by clang and by gcc with their coverage
// instrumentation, run, exported, imported and reported: vemcov's figures
// equal the compilers' own reports, per file and in total.
#include <cstdio>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>
#include <simdjson.h>

#include "import/json_input.h"
#include "tests/support/report_figures.h"
#include "tests/support/scenario.h"

namespace {

using testsupport::FileFigures;
using testsupport::ProgramRun;
using testsupport::RunProgram;
using testsupport::RunResult;
using testsupport::Scenario;

const char *const EXAMPLE_SOURCES[] = {"export.cpp", "ledger.cpp", "main.cpp", "report.cpp"};

// Two runs of the ledger on different input: one with a malformed line.
const char *const RUNS[] = {"printf 'apple 3 1.5\\npear x 2\\nfig 2 0.5\\n' | ./ledger",
                            "printf 'plum 7 0.25\\n' | ./ledger"};

RunResult Shell(const Scenario &scenario, const std::string &command, std::map<std::string, std::string> env = {})
{
    return RunProgram(ProgramRun{"/bin/sh", "sh", {"-c", command}, scenario.dir(), env, {}, 300, 0});
}

std::string ExampleSources()
{
    std::string list;
    for (const char *source : EXAMPLE_SOURCES)
        list += " " + testsupport::SourcePath(std::string("examples/src/") + source);
    return list;
}

// Imports with vemcov-import and reports with -json; returns the JSON's
// per-file rows and, through `summary_cells`, the summary page's numbers.
std::map<std::string, FileFigures> ImportAndReport(const Scenario &scenario, const std::vector<std::string> &import_args,
                                                   std::vector<std::string> &summary_cells)
{
    RunResult imported = RunProgram(ProgramRun{testsupport::BuildPath("vemcov-import"), "vemcov-import", import_args,
                                               scenario.dir(), {}, {}, 120, 0});
    EXPECT_EQ(0, imported.status) << imported.err;
    EXPECT_EQ("", imported.err);
    RunResult reported = scenario.run({"-nopmeter", "-json", "summary.json"});
    EXPECT_EQ(0, reported.status) << reported.err;
    summary_cells = testsupport::SummaryPageCells(scenario.read("CodeCoverage/__CODE_COVERAGE.HTML"));
    return testsupport::JsonFileRows(scenario.read("summary.json"));
}

// The row of vemcov's report for a file that llvm-cov names relative to the
// sources' common directory.
const FileFigures *RowEndingIn(const std::map<std::string, FileFigures> &rows, const std::string &name)
{
    for (const auto &row : rows) {
        const std::string &path = row.first;
        if (path.size() > name.size() && path.compare(path.size() - name.size(), name.size(), name) == 0 &&
            path[path.size() - name.size() - 1] == '/')
            return &row.second;
    }
    return nullptr;
}

// llvm-cov report's rows: file (or TOTAL) -> regions, functions and the
// covered ones.
std::map<std::string, FileFigures> LlvmCovRows(const std::string &report)
{
    std::map<std::string, FileFigures> rows;
    std::istringstream lines(report);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream cells(line);
        std::string name, regions, missed_regions, cover, functions, missed_functions;
        if (!(cells >> name >> regions >> missed_regions >> cover >> functions >> missed_functions))
            continue;
        if (regions.find_first_not_of("0123456789") != std::string::npos)
            continue;  // the heading
        FileFigures f;
        f.blocks = std::stol(regions);
        f.blocks_covered = f.blocks - std::stol(missed_regions);
        f.functions = std::stol(functions);
        f.functions_covered = f.functions - std::stol(missed_functions);
        rows[name] = f;
    }
    return rows;
}

std::string Describe(const FileFigures &f)
{
    return std::to_string(f.functions_covered) + "/" + std::to_string(f.functions) + " functions, " +
           std::to_string(f.blocks_covered) + "/" + std::to_string(f.blocks) + " blocks";
}

TEST(RealCompilers, ClangCoverageImportedEqualsLlvmCovReport)
{
    Scenario scenario;
    RunResult built = Shell(scenario, "clang++ -O0 -fprofile-instr-generate -fcoverage-mapping -o ledger" +
                                          ExampleSources());
    ASSERT_EQ(0, built.status) << built.err;
    for (size_t i = 0; i < std::size(RUNS); i++) {
        RunResult ran = Shell(scenario, RUNS[i], {{"LLVM_PROFILE_FILE", "run" + std::to_string(i) + ".profraw"}});
        ASSERT_EQ(0, ran.status) << ran.err;
    }
    RunResult exported = Shell(scenario,
                               "llvm-profdata merge -o ledger.profdata run0.profraw run1.profraw && "
                               "llvm-cov export -format=text -instr-profile=ledger.profdata ./ledger > export.json");
    ASSERT_EQ(0, exported.status) << exported.err;
    RunResult report = Shell(scenario, "llvm-cov report -instr-profile=ledger.profdata ./ledger");
    ASSERT_EQ(0, report.status) << report.err;
    std::map<std::string, FileFigures> expected = LlvmCovRows(report.out);
    ASSERT_EQ(6u, expected.size()) << report.out;  // five files and TOTAL

    std::vector<std::string> cells;
    std::map<std::string, FileFigures> rows = ImportAndReport(scenario, {"llvm", "export.json", "-runs", "2"}, cells);
    EXPECT_EQ(5u, rows.size());
    for (const auto &file : expected) {
        if (file.first == "TOTAL")
            continue;
        const FileFigures *row = RowEndingIn(rows, file.first);
        ASSERT_NE(nullptr, row) << file.first;
        EXPECT_EQ(Describe(file.second), Describe(*row)) << file.first;
    }
    const FileFigures &total = expected["TOTAL"];
    ASSERT_EQ(12u, cells.size());
    EXPECT_EQ(std::to_string(total.functions), cells[4]);
    EXPECT_EQ(std::to_string(total.functions_covered), cells[5]);
    EXPECT_EQ(std::to_string(total.blocks), cells[8]);
    EXPECT_EQ(std::to_string(total.blocks_covered), cells[9]);
}

// gcov's figures for the same run: per file its instrumented lines and the
// percentage executed, as gcov prints them, and its functions from its JSON
// (the instantiations of one template function, which share file and start,
// as one function), executed when any of them was.
struct GcovFigures {
    std::map<std::string, std::pair<long, std::string>> lines;  // file -> (lines, "P.PP")
    std::map<std::string, std::pair<long, long>> functions;     // file -> (functions, executed)
};

void CountGcovFunctions(const std::string &json_path, std::map<std::string, std::map<std::pair<long, long>, bool>> &seen)
{
    simdjson::padded_string text;
    std::string error;
    ASSERT_TRUE(vemcov_import::loadJsonFile(json_path, text, error)) << error;
    simdjson::dom::parser parser;
    simdjson::dom::element doc = parser.parse(text);
    for (simdjson::dom::element file : doc["files"].get_array()) {
        std::string name{std::string_view(file["file"])};
        for (simdjson::dom::element function : file["functions"].get_array()) {
            std::pair<long, long> start{int64_t(function["start_line"]), int64_t(function["start_column"])};
            bool &executed = seen[name][start];
            executed = executed || int64_t(function["execution_count"]) > 0;
        }
    }
}

TEST(RealCompilers, GccCoverageImportedEqualsGcov)
{
    Scenario scenario;
    RunResult built = Shell(scenario, "g++ -O0 --coverage -o ledger" + ExampleSources());
    ASSERT_EQ(0, built.status) << built.err;
    for (const char *run : RUNS) {
        RunResult ran = Shell(scenario, run);
        ASSERT_EQ(0, ran.status) << ran.err;
    }
    std::string data_files;
    for (std::string source : EXAMPLE_SOURCES)
        data_files += " ledger-" + source.substr(0, source.size() - 4) + ".gcda";
    RunResult text = Shell(scenario, "gcov -n" + data_files);
    ASSERT_EQ(0, text.status) << text.err;
    RunResult json = Shell(scenario, "gcov --json-format" + data_files);
    ASSERT_EQ(0, json.status) << json.err;

    GcovFigures gcov;
    std::regex file_lines(R"(File '([^']*)'\nLines executed:([0-9.]+)% of (\d+))");
    for (auto it = std::sregex_iterator(text.out.begin(), text.out.end(), file_lines); it != std::sregex_iterator();
         ++it)
        gcov.lines[(*it)[1]] = {std::stol((*it)[3]), (*it)[2]};
    std::map<std::string, std::map<std::pair<long, long>, bool>> seen;
    std::vector<std::string> import_args = {"gcov"};
    for (std::string source : EXAMPLE_SOURCES) {
        std::string json_file = "ledger-" + source.substr(0, source.size() - 4) + ".gcov.json.gz";
        CountGcovFunctions(scenario.path(json_file), seen);
        import_args.push_back(json_file);
    }
    for (const auto &file : seen) {
        long executed = 0;
        for (const auto &function : file.second)
            executed += function.second ? 1 : 0;
        gcov.functions[file.first] = {static_cast<long>(file.second.size()), executed};
    }
    ASSERT_GE(gcov.lines.size(), 5u) << text.out;

    std::vector<std::string> cells;
    std::map<std::string, FileFigures> rows = ImportAndReport(scenario, import_args, cells);
    EXPECT_EQ(gcov.functions.size(), rows.size());
    FileFigures total;
    for (const auto &row : rows) {
        const FileFigures &mine = row.second;
        ASSERT_EQ(1u, gcov.lines.count(row.first)) << row.first;
        const auto &lines = gcov.lines[row.first];
        EXPECT_EQ(lines.first, mine.blocks) << row.first;
        // gcov prints the percentage of a float ratio with two decimals.
        char percent[32];
        snprintf(percent, sizeof percent, "%.2f",
                 mine.blocks == 0 ? 0.0f : 100.0f * static_cast<float>(mine.blocks_covered) / mine.blocks);
        EXPECT_EQ(lines.second, percent) << row.first;
        EXPECT_EQ(gcov.functions[row.first].first, mine.functions) << row.first;
        EXPECT_EQ(gcov.functions[row.first].second, mine.functions_covered) << row.first;
        total.functions += mine.functions;
        total.functions_covered += mine.functions_covered;
        total.blocks += mine.blocks;
        total.blocks_covered += mine.blocks_covered;
    }
    ASSERT_EQ(12u, cells.size());
    EXPECT_EQ(std::to_string(total.functions), cells[4]);
    EXPECT_EQ(std::to_string(total.functions_covered), cells[5]);
    EXPECT_EQ(std::to_string(total.blocks), cells[8]);
    EXPECT_EQ(std::to_string(total.blocks_covered), cells[9]);
}

}  // namespace
