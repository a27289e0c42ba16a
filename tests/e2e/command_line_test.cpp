// The command line through the real binary: the usage and External options
// texts (golden cases command_line_usage and command_line_helpx), every
// answer to a bad command line, the source root's warnings, and hostile
// arguments.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/banner_text.h"
#include "tests/support/scenario.h"

using namespace testsupport;

namespace {

// A bad command line: `message`, the banner and an empty line on standard
// error, the usage text (as `help` printed it) on standard output, status 1.
void ExpectUsage(const RunResult &help, const RunResult &result, const std::string &message = "")
{
    EXPECT_EQ(result.status, 1);
    ExpectSameBytes("standard error", message + help.err, result.err);
    ExpectSameBytes("standard output", help.out, result.out);
}

TEST(CommandLine, HelpWordsAndBadArgumentsPrintUsage)
{
    Scenario s;
    RunResult help = s.run({"-h"});
    ExpectGolden("command_line_usage", s, help);

    // Options before a help word take effect silently; the run still ends.
    for (const char *word : {"-?", "/?", "-help", "/help", "/h"})
        ExpectUsage(help, s.run({"-counts", "-prj", "p", word, "-nosuch"}));
    // These options fall back on usage when their value is missing.
    for (const char *option : {"-spi", "-dpi", "-ref", "-srcroot", "-prj", "-maddr", "-mname"})
        ExpectUsage(help, s.run({"-counts", option}));

    // An unknown argument is named; it ends the scan before -helpx is seen.
    const std::vector<std::string> wrongs = {"-SPI", "-spi=a", "--helpme", "vemtra.spi", "-helpx2", "",
                                             std::string(100000, 'x'), "\xff\x80-\xc3"};
    for (const std::string &wrong : wrongs)
        ExpectUsage(help, s.run({wrong, "-helpx"}),
                    "ERROR: wrong option " + wrong + " is specified.\n");
    EXPECT_TRUE(s.outputs().empty());
}

TEST(CommandLine, HelpxPrintsExternalOptionsOnly)
{
    Scenario s;
    ExpectGolden("command_line_helpx", s, s.run({"-counts", "-helpx", "-h"}));
    RunResult slash = s.run({"/helpx"});
    EXPECT_EQ(slash.status, 1);
    ExpectSameBytes("/helpx", s.run({"-helpx"}).out, slash.out);
}

TEST(CommandLine, MissingValueWithItsOwnMessage)
{
    const std::pair<const char *, const char *> cases[] = {
        {"-comp", "ERROR: no component-list file specified.\n"},
        {"-bcolor", "ERROR: no html color specified for the uncovered blocks.\n"},
        {"-ccolor", "ERROR: no html color specified for the covered code.\n"},
        {"-fcolor", "ERROR: no html color specified for the uncovered functions.\n"},
        {"-pcolor", "ERROR: no html color specified for the partially-covered code.\n"},
        {"-ucolor", "ERROR: no html color specified for the unknown code.\n"},
        {"-xcolor", "ERROR: no html color specified for the not feasible code.\n"},
        {"-icolor", "ERROR: no html color specified for the information lines.\n"},
        {"-txtfcvrg", "ERROR: file name for text output is not specified.\n"},
        {"-xmlfcvrg", "ERROR: file name for XML output is not specified.\n"},
        {"-txtbcvrgfull", "ERROR: file name for text block coverage output is not specified.\n"},
        {"-xmlbcvrgfull", "ERROR: file name for XML block coverage output is not specified.\n"},
        {"-txtbcvrg", "ERROR: file name for text output is not specified.\n"},
        {"-xmlbcvrg", "ERROR: file name for XML output is not specified.\n"},
        {"-onelinedsbl", "ERROR: comment for disable line is not specified.\n"},
        {"-endblkdsbl", "ERROR: comment for end disable block is not specified.\n"},
        {"-beginblkdsbl", "ERROR: comment for begin disable block is not specified.\n"},
        {"-tvx_user", "ERROR: user name to access the database has to be specified for this option.\n"},
        {"-tvx_passwd", "ERROR: password to access the database has to be specified for this option.\n"},
        {"-txtdcg", "ERROR: file name for CallGraph output is not specified.\n"},
    };
    Scenario s;
    for (const auto &[option, message] : cases) {
        // "-dpi" is taken as the static profile's name, so the scan reaches
        // the option at the end.
        RunResult result = s.run({"-nopmeter", "-spi", "-dpi", option});
        EXPECT_EQ(result.status, 1) << option;
        EXPECT_EQ(result.err, message);
        EXPECT_EQ(result.out, "") << option;
    }
    EXPECT_TRUE(s.outputs().empty());
}

TEST(CommandLine, OverLongSourceRootIsRefusedAfterTheBanner)
{
    // From -srcroot, or from the environment when -srcroot is absent.
    Scenario s;
    const std::string root = "/" + std::string(5000, 'r');
    const std::string warning =
        BANNER + "WARNING: new name for prof_src_root_dir, " + root + ", is too long. Will not set src_root dir \n";
    RunResult option = s.run({"-srcroot", root});
    EXPECT_EQ(option.err.substr(0, warning.size()), warning);
    RunResult env = s.run({}, {{"TARSK_PROF_SRC_ROOT", root}});
    EXPECT_EQ(env.err.substr(0, warning.size()), warning);
    // -srcroot wins over the environment.
    RunResult both = s.run({"-srcroot", "/tmp"}, {{"TARSK_PROF_SRC_ROOT", root}});
    EXPECT_EQ(both.err.find("WARNING"), std::string::npos) << both.err.substr(0, 400);
}

TEST(CommandLine, HostileValuesNeverCrash)
{
    // Values are taken as they are; whatever later steps make of them, the
    // parse itself ends in the banner.
    Scenario s;
    const std::string huge(100000, 'x');
    const std::string bytes = "\xff\xfe\x80\x01-\xc3\xa9";
    const std::vector<std::vector<std::string>> runs = {
        {"-prj", huge, "-mname", bytes, "-maddr", "", "-nopmeter"},
        {"-spi", "", "-dpi", bytes, "-srcroot", huge, "-nopmeter"},
        {"-onelinedsbl", "", "-beginblkdsbl", huge, "-endblkdsbl", bytes, "-icolor", "", "-nopmeter"},
    };
    for (const auto &args : runs) {
        RunResult result = s.run(args);
        EXPECT_EQ(result.signal, 0);
        EXPECT_EQ(result.err.substr(0, BANNER.size()), BANNER);
    }
}

}  // namespace
