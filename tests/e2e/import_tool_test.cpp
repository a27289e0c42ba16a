// vemcov-import's command line: what it refuses, and that a refused or
// failed import leaves the profiles that were there as they were.
#include <sys/stat.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/scenario.h"

namespace {

using testsupport::ProgramRun;
using testsupport::RunProgram;
using testsupport::RunResult;
using testsupport::Scenario;

const char USAGE[] =
    "usage: vemcov-import llvm <export.json> [-o <dir>] [-runs <n>]\n"
    "       vemcov-import gcov <file.gcov.json[.gz]>... [-o <dir>] [-runs <n>]\n"
    "Writes vemtra.spi and vemtra.dpi into <dir> (default: the current directory)\n"
    "from the JSON of 'llvm-cov export -format=text' or of 'gcov --json-format'.\n"
    "  -o <dir>     where to write the two profiles (created when missing)\n"
    "  -runs <n>    the number of runs the coverage sums up (default 1)\n"
    "  --help       this text\n"
    "  --version    the version\n";

const char EXPORT[] =
    R"({"data":[{"files":[],"functions":[{"name":"main","count":2,"filenames":["/src/m.c"],)"
    R"("regions":[[1,12,4,2,2,0,0,0],[2,9,2,15,0,0,0,0]]}],"totals":{}}],)"
    R"("type":"llvm.coverage.json.export","version":"2.0.1"})";

const char GCOV[] =
    R"({"format_version":"1","gcc_version":"12.2.0","current_working_directory":"/src","data_file":"m.gcda",)"
    R"("files":[{"file":"m.c","functions":[{"name":"main","start_line":1,"start_column":5,"end_line":4,)"
    R"("end_column":1,"blocks":2,"blocks_executed":1,"execution_count":2}],"lines":[{"line_number":1,"count":2,)"
    R"("function_name":"main"},{"line_number":2,"count":0,"function_name":"main"}]}]})";

RunResult Import(const Scenario &scenario, const std::vector<std::string> &args)
{
    return RunProgram(ProgramRun{testsupport::BuildPath("vemcov-import"), "vemcov-import", args, scenario.dir(), {},
                                 {}, 60, 0});
}

TEST(ImportTool, WritesBothProfilesAndOneLineOfTotals)
{
    Scenario scenario;
    scenario.write("export.json", EXPORT);
    scenario.write("m.gcov.json", GCOV);
    struct Case {
        std::vector<std::string> args;
        std::string out;
    } cases[] = {
        {{"llvm", "export.json", "-o", "llvm/out", "-runs", "2"},
         "vemcov-import: 1 files, 1 functions (1 entered), 2 blocks (1 covered), 2 runs -> llvm/out/vemtra.spi, "
         "llvm/out/vemtra.dpi\n"},
        {{"gcov", "m.gcov.json", "-o", "gcov"},
         "vemcov-import: 1 files, 1 functions (1 entered), 2 blocks (1 covered), 1 run -> gcov/vemtra.spi, "
         "gcov/vemtra.dpi\n"},
    };
    for (const Case &c : cases) {
        RunResult result = Import(scenario, c.args);
        EXPECT_EQ(0, result.status) << result.err;
        EXPECT_EQ(c.out, result.out);
        EXPECT_EQ("", result.err);
    }
    EXPECT_EQ("V3 0 9 0 11 5 /src/m.c /src/m.c.o main 1 2 0 E\n", scenario.read("llvm/out/vemtra.spi"));
    EXPECT_EQ("V3 0 9 0 11 5 /src/m.c /src/m.c.o main 1 2 0 E\n", scenario.read("gcov/vemtra.spi"));
}

// Every refusal ends with status 1 and one message; profiles already in the
// output directory stay as they were and no temporary file is left.
TEST(ImportTool, RefusalsLeaveTheProfilesAsTheyWere)
{
    Scenario scenario;
    scenario.write("vemtra.spi", "old static profile\n");
    scenario.write("vemtra.dpi", "old dynamic profile");
    scenario.write("short.json", std::string(EXPORT).substr(0, 120));
    const std::string gzip_header("\x1f\x8b\x08\x00\x00\x00\x00\x00\x00\x03", 10);
    scenario.write("short.gcov.json.gz", gzip_header + "\x01\x02");
    scenario.write("bad.gcov.json.gz", gzip_header + "\x07\x00");
    scenario.write("new.gcov.json", R"({"format_version":"2","files":[]})");
    scenario.write("a-file", "");
    struct Case {
        std::vector<std::string> args;
        std::string err;
    } cases[] = {
        {{}, "vemcov-import: no input format given\n" + std::string(USAGE)},
        {{"lcov", "x.info"}, "vemcov-import: unknown input format 'lcov' (llvm or gcov)\n" + std::string(USAGE)},
        {{"llvm"}, "vemcov-import: no input file given\n" + std::string(USAGE)},
        {{"llvm", "a.json", "b.json"}, "vemcov-import: llvm takes one export file\n" + std::string(USAGE)},
        {{"gcov", "a.json", "-runs", "0"},
         "vemcov-import: -runs needs a positive whole number, not '0'\n" + std::string(USAGE)},
        {{"gcov", "a.json", "-o"}, "vemcov-import: option -o needs a value\n" + std::string(USAGE)},
        {{"gcov", "a.json", "-x"}, "vemcov-import: unknown option -x\n" + std::string(USAGE)},
        {{"llvm", "missing.json"}, "vemcov-import: cannot open missing.json: No such file or directory\n"},
        {{"llvm", "short.json"},
         "vemcov-import: short.json, at the end: malformed JSON (JSON document ended early in the middle of an "
         "object or array.)\n"},
        {{"gcov", "short.gcov.json.gz"}, "vemcov-import: cannot decompress short.gcov.json.gz: truncated gzip data\n"},
        {{"gcov", "bad.gcov.json.gz"}, "vemcov-import: cannot decompress bad.gcov.json.gz: invalid block type\n"},
        {{"gcov", "new.gcov.json"}, "vemcov-import: new.gcov.json, at the end: gcov JSON format version 2 is not 1\n"},
        {{"llvm", "."}, "vemcov-import: cannot read .: not a regular file\n"},
    };
    for (const Case &c : cases) {
        RunResult result = Import(scenario, c.args);
        EXPECT_EQ(1, result.status) << c.err;
        EXPECT_EQ(c.err, result.err);
        EXPECT_EQ("", result.out);
    }
    scenario.write("export.json", EXPORT);
    RunResult blocked = Import(scenario, {"llvm", "export.json", "-o", "a-file/out"});
    EXPECT_EQ(1, blocked.status);
    EXPECT_EQ("vemcov-import: cannot create a-file/out: Not a directory\n", blocked.err);

    EXPECT_EQ("old static profile\n", scenario.read("vemtra.spi"));
    EXPECT_EQ("old dynamic profile", scenario.read("vemtra.dpi"));
    EXPECT_EQ(0u, scenario.outputs().size());
}

TEST(ImportTool, AFullDiskLeavesNoHalfWrittenProfile)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "mounting a small file system needs root";
    Scenario scenario;
    scenario.write("export.json", EXPORT);
    std::string big;
    for (int i = 0; i < 3000; i++)
        big += std::string(i == 0 ? "" : ",") + R"({"name":"function_with_a_long_name_)" + std::to_string(i) +
               R"(","count":1,"filenames":["/src/m.c"],"regions":[[)" + std::to_string(i + 1) +
               R"(,1,4,2,2,0,0,0]]})";
    scenario.write("big.json", R"({"data":[{"files":[],"functions":[)" + big +
                                   R"(]}],"type":"llvm.coverage.json.export","version":"2.0.1"})");
    mkdir(scenario.path("small").c_str(), 0755);
    RunResult mounted = RunProgram(ProgramRun{"/bin/mount", "mount", {"-t", "tmpfs", "-o", "size=64k", "tmpfs", "small"},
                                              scenario.dir(), {}, {}, 30, 0});
    if (mounted.status != 0)
        GTEST_SKIP() << "cannot mount a tmpfs here: " << mounted.err;
    RunResult result = Import(scenario, {"llvm", "big.json", "-o", "small"});
    RunProgram(ProgramRun{"/bin/umount", "umount", {"small"}, scenario.dir(), {}, {}, 30, 0});
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("vemcov-import: cannot write small/vemtra.spi: No space left on device\n", result.err);
    EXPECT_EQ(0u, scenario.outputs().size());
}

}  // namespace
