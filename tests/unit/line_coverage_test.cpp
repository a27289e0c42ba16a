// The pages of one source file from the state the analysis leaves: each
// failure, its message, and the frameset that is then not written. (Which
// pages a file gets is shown by the end-to-end golden trees.)
#include <cstdio>
#include <string>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "analysis/coverage_state.h"
#include "analysis/coverage_store.h"
#include "report/line_coverage.h"
#include "tests/support/capture.h"
#include "tests/support/scratch_dir.h"

using testsupport::Captured;
using testsupport::ScratchDir;

namespace {

// In a child, in `dir`: writes m.c with one covered and one uncovered
// function, removes it again unless `withSource`, puts a directory in the
// way of the page `blocked` (none when empty), and writes the file's pages.
// The child exits 7 on a false result.
Captured WritePages(const ScratchDir &dir, const std::string &blocked, bool withSource = true)
{
    return testsupport::CaptureInDir(dir.path(), [&] {
        mkdir("CodeCoverage", 0777);
        if (!blocked.empty())
            mkdir(("CodeCoverage/" + blocked).c_str(), 0777);
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
        static func covered{f, f, 1, 1, 1, 100.0, 0, 0};
        static func notCovered{g, g, 2, 1, 0, 0.0, 0, 0};
        static func *table[2] = {&covered, &notCovered};
        fileFuncs = fileFuncsCovered = table;
        fileFuncsUncovered = table + 1;
        numFileFuncsCovered = numFileFuncsUncovered = 1;
        ListingWorkArea work;
        return bOutputLineCoverage("html", &work);
    });
}

TEST(LineCoverage, EachFailureHasItsMessageAndLeavesNoFrameset)
{
    const struct {
        const char *blocked;
        bool withSource;
        const char *message;
    } cases[] = {
        {"", false, "Error - Cannot open m.c!\n"},
        {"M_C_SRC.HTML", true, "Cannot open CodeCoverage/M_C_SRC.HTML for output!\n"},
        {"M_C_UNCVRDFNCS_0.HTML", true, "Cannot open CodeCoverage/M_C_UNCVRDFNCS_0.HTML for output!\n"},
        {"M_C.HTML", true, "Unable to create root html file m.c!\n"},
    };
    for (const auto &c : cases) {
        ScratchDir dir;
        Captured run = WritePages(dir, c.blocked, c.withSource);
        EXPECT_EQ(7, run.status) << c.blocked;
        EXPECT_EQ(c.message, run.err);
        if (std::string(c.blocked) != "M_C.HTML") {
            EXPECT_FALSE(dir.exists("CodeCoverage/M_C.HTML")) << c.blocked;
        }
    }
}

}  // namespace
