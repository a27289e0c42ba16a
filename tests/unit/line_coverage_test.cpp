// The pages of one source file from the state the analysis leaves: the
// failures that stop them before the frameset. (Which pages a file gets is
// checked by the end-to-end golden trees.)
#include <cstdio>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "analysis/coverage_state.h"
#include "report/coverage_store.h"
#include "report/line_coverage.h"
#include "tests/support/capture.h"
#include "tests/support/scratch_dir.h"

using testsupport::CaptureInChild;
using testsupport::Captured;
using testsupport::ScratchDir;

namespace {

// In a child: makes `dir` current, writes m.c (unless `withSource` is
// false), gives it one covered and `uncovered` uncovered functions, and
// writes its pages. The child exits 0 on success, 7 on a false result.
Captured WritePages(const ScratchDir &dir, int uncovered, bool withReportDir = true, bool withSource = true)
{
    return CaptureInChild([&] {
        if (chdir(dir.path().c_str()) != 0)
            _exit(90);
        if (withReportDir)
            mkdir("CodeCoverage", 0777);
        FILE *source = fopen("m.c", "w");
        fputs("int f() { return 1; }\nint g() { return 2; }\n", source);
        fclose(source);
        g_cl.bAddFilename("m.c");
        g_cl.bSetName("m.c");
        g_cl.bAddBlockCount("m.c", 1, 11, 3, false, nullptr);
        g_cl.bAddBlockCount("m.c", 2, 1, NEVER_EXECUTED, false, nullptr);
        if (!withSource)
            remove("m.c");

        static char f[] = "f", g[] = "g";
        static func covered{f, f, 1, 1, 1, 100.0};
        static func notCovered{g, g, 2, 1, 0, 0.0};
        static func *table[2] = {&covered, &notCovered};
        fileFuncs = table;
        fileFuncsCovered = table;
        numFileFuncsCovered = 1;
        fileFuncsUncovered = table + 1;
        numFileFuncsUncovered = uncovered;
        functionCoverage = 50.0;
        blockCoverage = 50.0;
        ListingWorkArea work;
        if (!bOutputLineCoverage("html", &work))
            _exit(7);
    });
}

TEST(LineCoverage, FailuresReturnFalseWithoutAFrameset)
{
    ScratchDir dir;
    Captured c = WritePages(dir, 1, true, false);
    EXPECT_EQ(7, c.status);
    EXPECT_EQ("Error - Cannot open m.c!\n", c.err);
    EXPECT_FALSE(dir.exists("CodeCoverage/M_C.HTML"));

    ScratchDir noReportDir;
    c = WritePages(noReportDir, 1, false);
    EXPECT_EQ(7, c.status);
    EXPECT_EQ("Cannot open CodeCoverage/M_C_SRC.HTML for output!\n", c.err);
}

}  // namespace
