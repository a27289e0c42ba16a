// The report's fixed files: the four images (checked with an independent GIF
// decoder), the toolbar page, the help page with the colours of the run, and
// the failure of each file.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "driver/settings.h"
#include "report/colors.h"
#include "report/toolbar.h"
#include "tests/support/capture.h"
#include "tests/support/scratch_dir.h"

using testsupport::CaptureInChild;
using testsupport::Captured;
using testsupport::ScratchDir;

namespace {

// Runs createToolBar("html") in a child, in `dir`, after `prepare`.
Captured RunCreateToolBar(const ScratchDir &dir, bool makeReportDir,
                          const std::function<void()> &prepare = [] {})
{
    return CaptureInChild([&] {
        if (chdir(dir.path().c_str()) != 0)
            _exit(90);
        if (makeReportDir)
            mkdir("CodeCoverage", 0777);
        prepare();
        if (!createToolBar("html"))
            _exit(7);
    });
}

// Runs a command and returns its standard output; `status` gets its exit status.
std::string Command(const std::string &command, int *status)
{
    std::string output;
    FILE *pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) {
        *status = -1;
        return output;
    }
    char buffer[512];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0)
        output.append(buffer, n);
    *status = pclose(pipe);
    return output;
}

bool HaveIdentify()
{
    int status = 0;
    Command("identify -version", &status);
    return status == 0;
}

}  // namespace

TEST(ReportToolBar, ImagesHaveTheirFormatsSizesAndDimensions)
{
    ScratchDir dir;
    Captured run = RunCreateToolBar(dir, true);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");

    struct Expected {
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
    for (const Expected &image : images) {
        std::string bytes = dir.read(std::string("CodeCoverage/") + image.name);
        EXPECT_EQ(bytes.size(), image.size) << image.name;
        EXPECT_EQ(bytes.substr(0, 6), image.signature) << image.name;
        EXPECT_EQ(bytes.back(), ';') << image.name << " lacks the trailer";
    }
    // The home image's colour table ends in 705 black entries' worth of zeros.
    std::string home = dir.read("CodeCoverage/__Home.gif");
    EXPECT_EQ(home.substr(76, 705), std::string(705, '\0'));
    EXPECT_NE(home[75], '\0');
    EXPECT_NE(home[781], '\0');

    if (!HaveIdentify()) {
        if (getenv("CI") != nullptr)
            FAIL() << "identify (imagemagick) is needed to decode the images";
        GTEST_SKIP() << "identify (imagemagick) is not installed";
    }
    for (const Expected &image : images) {
        // %k counts the colours, so the whole image is decoded; a warning
        // about the data is an error.
        int status = 0;
        std::string info = Command("identify -regard-warnings -format '%m %w %h %k\\n' " +
                                       dir.path(std::string("CodeCoverage/") + image.name),
                                   &status);
        EXPECT_EQ(status, 0) << image.name << ": " << info;
        EXPECT_EQ(info.substr(0, info.rfind(' ')), image.identified) << info;
    }
}

TEST(ReportToolBar, ToolbarPage)
{
    ScratchDir dir;
    Captured run = RunCreateToolBar(dir, true);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(dir.read("CodeCoverage/__TOOLBAR.HTML"),
              "<html>\n"
              "<head>\n"
              "<base target=\"_parent\">\n"
              "</head>\n"
              "<body bgcolor=\"FFFFFF\">\n"
              "<table border=0 cellpadding=3 cellspacing=0>\n"
              "<tr>\n"
              "<td>\n"
              "<a href=\"../CODE_COVERAGE.HTML\" title=\"Coverage Summary\"><img src=\"__Home.gif\" border=\"0\"></a>\n"
              "</td>\n"
              "<td>\n"
              "<a target=\"_new\" href=\"../CodeCoverage/__HELP.HTML\" title=\"Help\"><img src=\"__Help.gif\" border=\"0\"></a>\n"
              "</td>\n"
              "<td width=\"100%\" align=\"right\">\n"
              "<a target=\"_new\" href=\"http://www.example.com/\"><img src=\"__TarskR.gif\" border=\"0\"></a>\n"
              "</td>\n"
              "</tr>\n"
              "</table>\n"
              "</body>\n"
              "</html>\n");
}

TEST(ReportToolBar, HelpShowsTheColoursInForce)
{
    ScratchDir dir;
    Captured plain = RunCreateToolBar(dir, true);
    ASSERT_EQ(plain.status, 0) << plain.err;
    std::string help = dir.read("CodeCoverage/__HELP.HTML");
    EXPECT_EQ(help.rfind("<html>\n<head>\n<title>Tarsk&#174; Compilers code-coverage tool on-line help</title>\n", 0), 0u);
    EXPECT_NE(help.find("<h5 ALIGN=\"left\" style=\"color:#3366ff\">Coloring Scheme</h5>\n"), std::string::npos);
    EXPECT_NE(help.find("<h5 ALIGN=\"left\" style=\"color:#3366ff\">Dynamic Counters</h5>\n"), std::string::npos);
    EXPECT_NE(help.find("<h5 ALIGN=\"left\" style=\"color:#3366ff\">Coverage Summary</h5>\n"), std::string::npos);
    EXPECT_NE(help.find("^ 1000 (8/10) means that ten blocks were generated for this position, however, "
                        "only eight of them were executed with a total execution count of 1000."),
              std::string::npos);
    EXPECT_NE(help.find("<B>^</B>"), std::string::npos);
    EXPECT_EQ(help.substr(help.size() - 16), "</body>\n</html>\n");
    // Default colours, and no infeasible row without markers.
    EXPECT_NE(help.find("background-color: #ffff99\">"), std::string::npos);
    EXPECT_NE(help.find("background-color: #ffcccc\">"), std::string::npos);
    EXPECT_NE(help.find("background-color: #fafad2\">"), std::string::npos);
    EXPECT_EQ(help.find("Infeasible code"), std::string::npos);
    EXPECT_EQ(help.find("#90ee90"), std::string::npos);
    EXPECT_NE(help.find("<B>Covered code</B> The portion of code colored in this color was exercised by the tests."),
              std::string::npos);

    ScratchDir custom;
    Captured run = RunCreateToolBar(custom, true, [] {
        SetBGColor(COLOR_COVERED, "aqua");
        SetBGColor(COLOR_UNCOVERED_BLOCK, "yellow");
        SetBGColor(COLOR_UNCOVERED_FUNCTION, "#ff0000");
        SetBGColor(COLOR_PARTIAL, "orange");
        SetBGColor(COLOR_INFEASIBLE, "gray");
        SetBGColor(COLOR_UNKNOWN, "silver");
        Infeasible_markers_specified = 1;
    });
    ASSERT_EQ(run.status, 0) << run.err;
    help = custom.read("CodeCoverage/__HELP.HTML");
    // The rows, in their order, each painted in its class's colour.
    const char *rows[][2] = {
        {"aqua", "Covered code"},     {"yellow", "Uncovered basic block"},
        {"#ff0000", "Uncovered function"}, {"orange", "Partially-covered code"},
        {"gray", "Infeasible code"},  {"silver", "Unknown"},
    };
    size_t at = 0;
    for (const auto &row : rows) {
        std::string cell = std::string("<TD STYLE=\"background-color: ") + row[0] + "\">";
        size_t found = help.find(cell, at);
        ASSERT_NE(found, std::string::npos) << row[1];
        size_t name = help.find(std::string("<B>") + row[1] + "</B>", found);
        EXPECT_EQ(help.find("<TD STYLE=", found + 1) > name, true) << row[1] << " is not beside its colour";
        at = found + 1;
    }
    EXPECT_EQ(help.find("#ffff99"), std::string::npos);
}

TEST(ReportToolBar, EachFileThatCannotBeCreatedHasItsMessage)
{
    ScratchDir noDir;
    Captured missing = RunCreateToolBar(noDir, false);
    EXPECT_EQ(missing.status, 7);
    EXPECT_EQ(missing.err, "Unable to create ToolBar file!\n");

    // A directory in the way of a file makes its creation fail.
    const struct {
        const char *blocked;
        const char *message;
    } cases[] = {
        {"__Home.gif", "Unable to create the Home Icon __Home.gif!\n"},
        {"__Help.gif", "Unable to create the Home Icon __Help.gif!\n"},
        {"__TarskR.gif", "Unable to create Tarsk Logo __TarskR.gif!\n"},
        {"__Spacer.gif", "Unable to create Spacer image __Spacer.gif!\n"},
        {"__HELP.HTML", "Unable to create On-Line Help!\n"},
    };
    for (const auto &blocked : cases) {
        ScratchDir dir;
        mkdir(dir.path("CodeCoverage").c_str(), 0777);
        mkdir(dir.path(std::string("CodeCoverage/") + blocked.blocked).c_str(), 0777);
        Captured run = RunCreateToolBar(dir, false);
        EXPECT_EQ(run.status, 7) << blocked.blocked;
        EXPECT_EQ(run.err, blocked.message);
        EXPECT_EQ(run.out, "");
    }
}

TEST(ReportToolBar, ByteThatCannotBeWrittenIsReportedAndWritingGoesOn)
{
    if (access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "no /dev/full";
    ScratchDir dir;
    mkdir(dir.path("CodeCoverage").c_str(), 0777);
    ASSERT_EQ(symlink("/dev/full", dir.path("CodeCoverage/__Spacer.gif").c_str()), 0);
    Captured run = RunCreateToolBar(dir, false);
    EXPECT_EQ(run.status, 0) << run.err;
    // One line per byte of the spacer: "ERR at <index> <byte>".
    std::string expected;
    const unsigned char first[] = {'G', 'I', 'F', '8', '9', 'a'};
    for (int i = 0; i < 6; ++i)
        expected += "ERR at " + std::to_string(i) + " " + std::to_string(first[i]) + "\n";
    EXPECT_EQ(run.out.substr(0, expected.size()), expected);
    const std::string last = "ERR at 42 59\n";  // the trailer ';'
    ASSERT_GE(run.out.size(), last.size());
    EXPECT_EQ(run.out.substr(run.out.size() - last.size()), last);
    size_t lines = 0;
    for (char c : run.out)
        lines += c == '\n';
    EXPECT_EQ(lines, 43u);
    EXPECT_TRUE(dir.exists("CodeCoverage/__TOOLBAR.HTML"));
}
