// The report's fixed files where the end-to-end pages cannot reach: the
// images decoded by an independent reader, the help page under colour
// options, and the failure of each file.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "driver/settings.h"
#include "report/colors.h"
#include "report/toolbar.h"
#include "tests/support/capture.h"
#include "tests/support/scratch_dir.h"

using testsupport::Captured;
using testsupport::ScratchDir;

namespace {

// Runs createToolBar("html") in a child in `dir`, after making the report
// directory when `makeReportDir` and then `prepare`; the child exits 7 when
// it returns false.
Captured RunCreateToolBar(const ScratchDir &dir, bool makeReportDir, const std::function<void()> &prepare = [] {})
{
    if (makeReportDir)
        mkdir(dir.path("CodeCoverage").c_str(), 0777);
    return testsupport::CaptureInDir(dir.path(), [&] {
        prepare();
        return createToolBar("html");
    });
}

// The standard output of a command, and its status.
std::string Command(const std::string &command, int *status)
{
    std::string output;
    FILE *pipe = popen((command + " 2>&1").c_str(), "r");
    char buffer[512];
    for (size_t n; pipe != nullptr && (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        output.append(buffer, n);
    *status = pipe != nullptr ? pclose(pipe) : -1;
    return output;
}

TEST(ReportToolBar, ImagesHaveTheirFormatsSizesAndDimensions)
{
    ScratchDir dir;
    Captured run = RunCreateToolBar(dir, true);
    ASSERT_EQ(run.status, 0) << run.err;
    const struct {
        const char *name;
        const char *signature;
        size_t size;
        const char *identified;
    } images[] = {
        {"__Home.gif", "GIF89a", 977, "GIF 19 20"},
        {"__Help.gif", "GIF89a", 187, "GIF 19 20"},
        {"__TarskR.gif", "GIF87a", 1414, "GIF 66 45"},
        {"__Spacer.gif", "GIF89a", 43, "GIF 1 1"},
    };
    for (const auto &image : images) {
        std::string bytes = dir.read(std::string("CodeCoverage/") + image.name);
        EXPECT_EQ(bytes.size(), image.size) << image.name;
        EXPECT_EQ(bytes.substr(0, 6), image.signature) << image.name;
    }
    // The home image holds 705 zeros from byte 76 on, and no more.
    std::string home = dir.read("CodeCoverage/__Home.gif");
    EXPECT_EQ(home.substr(76, 705), std::string(705, '\0'));
    EXPECT_NE(home[75], '\0');
    EXPECT_NE(home[781], '\0');

    int status = 0;
    Command("identify -version", &status);
    if (status != 0) {
        if (getenv("CI") != nullptr)
            FAIL() << "identify (imagemagick) is needed to decode the images";
        GTEST_SKIP() << "identify (imagemagick) is not installed";
    }
    for (const auto &image : images) {
        // %k counts the colours, so the whole image is decoded; a warning
        // about the data is an error.
        std::string info = Command("identify -regard-warnings -format '%m %w %h %k\\n' " +
                                       dir.path(std::string("CodeCoverage/") + image.name),
                                   &status);
        EXPECT_EQ(status, 0) << image.name << ": " << info;
        EXPECT_EQ(info.substr(0, info.rfind(' ')), image.identified) << info;
    }
}

TEST(ReportToolBar, HelpShowsTheColoursOfTheRun)
{
    ScratchDir dir;
    Captured run = RunCreateToolBar(dir, true, [] {
        SetBGColor(COLOR_COVERED, "aqua");
        SetBGColor(COLOR_UNCOVERED_BLOCK, "yellow");
        SetBGColor(COLOR_UNCOVERED_FUNCTION, "#ff0000");
        SetBGColor(COLOR_PARTIAL, "orange");
        SetBGColor(COLOR_INFEASIBLE, "gray");
        SetBGColor(COLOR_UNKNOWN, "silver");
        SetBGColor(COLOR_INFO, "olive");
        Infeasible_markers_specified = 1;
    });
    ASSERT_EQ(run.status, 0) << run.err;
    std::string help = dir.read("CodeCoverage/__HELP.HTML");
    // The rows in their order, each beside a cell in its class's colour; the
    // information lines have no row.
    const char *rows[][2] = {
        {"aqua", "Covered code"},          {"yellow", "Uncovered basic block"},
        {"#ff0000", "Uncovered function"}, {"orange", "Partially-covered code"},
        {"gray", "Infeasible code"},       {"silver", "Unknown"},
    };
    size_t at = 0;
    for (const auto &row : rows) {
        at = help.find(std::string("<TD STYLE=\"background-color: ") + row[0] + "\">", at);
        ASSERT_NE(at, std::string::npos) << row[1];
        EXPECT_LT(help.find(std::string("<B>") + row[1] + "</B>", at), help.find("<TD STYLE=", at + 1)) << row[1];
    }
    EXPECT_EQ(help.find("olive"), std::string::npos);
}

TEST(ReportToolBar, EachFileThatCannotBeCreatedHasItsMessage)
{
    ScratchDir noReportDir;
    Captured missing = RunCreateToolBar(noReportDir, false);
    EXPECT_EQ(missing.status, 7);
    EXPECT_EQ(missing.err, "Unable to create ToolBar file!\n");

    // A directory in the way of a file makes its creation fail.
    const char *cases[][2] = {
        {"__Home.gif", "Unable to create the Home Icon __Home.gif!\n"},
        {"__Help.gif", "Unable to create the Home Icon __Help.gif!\n"},
        {"__TarskR.gif", "Unable to create Tarsk Logo __TarskR.gif!\n"},
        {"__Spacer.gif", "Unable to create Spacer image __Spacer.gif!\n"},
        {"__HELP.HTML", "Unable to create On-Line Help!\n"},
    };
    for (const auto &blocked : cases) {
        ScratchDir dir;
        mkdir(dir.path("CodeCoverage").c_str(), 0777);
        mkdir(dir.path(std::string("CodeCoverage/") + blocked[0]).c_str(), 0777);
        Captured run = RunCreateToolBar(dir, false);
        EXPECT_EQ(run.status, 7) << blocked[0];
        EXPECT_EQ(run.err, blocked[1]);
        EXPECT_EQ(run.out, "");
    }
}

// Each byte of an image that cannot be written is reported and the writing
// goes on to the image's end; then the failed file ends the run, so the
// report is never left incomplete without an error.
TEST(ReportToolBar, ByteThatCannotBeWrittenIsReportedThenTheRunEnds)
{
    if (access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "no /dev/full";
    ScratchDir dir;
    mkdir(dir.path("CodeCoverage").c_str(), 0777);
    ASSERT_EQ(symlink("/dev/full", dir.path("CodeCoverage/__Spacer.gif").c_str()), 0);
    Captured run = RunCreateToolBar(dir, false);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "ERROR: cannot write CodeCoverage/__Spacer.gif: No space left on device\n");
    // One line per byte of the spacer, from "GIF89a" to the trailer ";".
    ASSERT_EQ(run.out.substr(0, 24), "ERR at 0 71\nERR at 1 73\n");
    EXPECT_EQ(run.out.substr(run.out.size() - 13), "ERR at 42 59\n");
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 43);
}

}  // namespace
