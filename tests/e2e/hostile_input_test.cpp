// Reports on hostile and unlucky inputs: names that carry markup, paths
// longer than a file name may be, and a source that is not a regular file.
// Each run must finish with every page safe to open and every link whole.
#include <string>
#include <vector>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "report/naming.h"
#include "tests/support/html_links.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

using testsupport::Project;
using testsupport::RunResult;
using testsupport::Scenario;

namespace {

// Every value below carries this; once escaped it reads as the entities.
const std::string MARKUP = "<\"'>";
const std::string ESCAPED = "&lt;&quot;&#39;&gt;";

// The end of `text` as long as `expected`, for messages after the banner.
std::string TailLike(const std::string &text, const std::string &expected)
{
    return text.size() < expected.size() ? text : text.substr(text.size() - expected.size());
}

// An address-sanitizer build reserves terabytes of address space for its
// shadow memory, so it cannot run under an address-space limit.
#if defined(__SANITIZE_ADDRESS__)
const bool MEMORY_LIMITS_WORK = false;
#else
const bool MEMORY_LIMITS_WORK = true;
#endif

bool IsPage(const std::string &name)
{
    return name.size() > 5 && name.compare(name.size() - 5, 5, ".HTML") == 0;
}

// The source path, the function's name, the project, the owner, a colour and
// the test-database settings all carry markup characters. No page may hold
// them as they are, in text or in any attribute; the listing's source text
// keeps its own documented escaping; the database query is percent-encoded.
TEST(HostileInput, NamesFromProfilesAndOptionsNeverOpenATag)
{
    Scenario scenario;
    const std::string source = "src/a" + MARKUP + "b.c";
    scenario.write(source, "int h(void)\n{\n    return 1;\n}\nint k(void) { return 2; }\n");
    Project p;
    p.Add(scenario.path(source), "h" + MARKUP + "x", 1).Blocks({{3, 3, 5}});
    p.Add(scenario.path(source), "k&&" + MARKUP, 5).Blocks({{0, 5, 15}});
    scenario.writeProfiles(p);

    RunResult result = scenario.run({"-nopmeter", "-prj", "p" + MARKUP + "p", "-mname", "m" + MARKUP + "m",
                                     "-maddr", "a" + MARKUP + "a", "-ccolor", "c" + MARKUP + "c", "-tvx_host",
                                     "t" + MARKUP + "t", "-tvx_db_name", "d&" + MARKUP, "-tvx_db_prj", "j j"});
    ASSERT_EQ(0, result.status) << result.err;

    int pages = 0, escapedValues = 0;
    for (const auto &[name, bytes] : scenario.outputs()) {
        if (!IsPage(name))
            continue;
        ++pages;
        EXPECT_EQ(bytes.find(MARKUP), std::string::npos) << name << " holds markup characters unescaped";
        for (size_t at = bytes.find(ESCAPED); at != std::string::npos; at = bytes.find(ESCAPED, at + 1))
            ++escapedValues;
    }
    EXPECT_EQ(pages, 20);
    // Titles, headings, links, the owner line, the colour, the names.
    EXPECT_GT(escapedValues, 30);

    const std::string list =
        scenario.read(getDirVerHTMLname((scenario.path(source) + "_UncvrdFncs").c_str(), 4, "html"));
    EXPECT_NE(list.find("<a target=\"_new\" href=\"http://t&lt;&quot;&#39;&gt;t/function_tests_viewer.php?"
                        "function_name=k%26%26%3C%22%27%3E&dbName=d%26%3C%22%27%3E&project_name=j%20j\""),
              std::string::npos)
        << list;
    EXPECT_NE(list.find(">k&&" + ESCAPED + "</a>"), std::string::npos) << list;
    // The links still lead to the pages whose names hold those characters.
    testsupport::ExpectLinksResolve(scenario.dir());
}

// Build sandboxes record source paths far past 255 bytes. Their page names
// are cut with a hash; the run succeeds and the report links up.
TEST(HostileInput, SourcePathsLongerThanAFileName)
{
    Scenario scenario;
    std::string dir = "src";
    while (dir.size() < 600)
        dir += "/a_directory_of_an_out_of_tree_build";
    const std::string source = dir + "/deeply_nested_module.c";
    scenario.write(source, "int f(void)\n{\n    return 1;\n}\n");
    Project p;
    p.Add(scenario.path(source), "f", 1).Blocks({{1, 3, 5}});
    p.Add(scenario.path(source), "g", 4).Blocks({{0, 4, 1}}).OnlyInSpi();
    scenario.writeProfiles(p);

    RunResult result = scenario.run({"-nopmeter", "-counts"});
    EXPECT_EQ(0, result.status) << result.err;
    EXPECT_EQ("", result.out);
    for (const auto &[name, bytes] : scenario.outputs()) {
        const std::string file = name.substr(name.rfind('/') + 1);
        EXPECT_LE(file.size(), 255u) << file;
    }
    testsupport::ExpectLinksResolve(scenario.dir());
}

// A FIFO where a source should be is treated as a missing file: the run
// neither waits for a writer nor reads it.
TEST(HostileInput, ASourceThatIsNoRegularFileIsMissing)
{
    Scenario scenario;
    const std::string fifo = scenario.path("pipe.c");
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    Project p;
    p.Add(fifo, "f", 1).Blocks({{1, 1, 1}});
    scenario.writeProfiles(p);

    RunResult result = scenario.run({"-nopmeter", "-onelinedsbl", "NOT_FEASIBLE"}, {}, 10);
    ASSERT_FALSE(result.timed_out) << "vemcov waited on the FIFO";
    EXPECT_EQ(0, result.status) << result.err;
    EXPECT_EQ("\nWarning - File " + fifo + " not found!\n", result.out);
}

// A file that cannot be written ends the run with a message naming it,
// whatever kind of output it is: a text or XML file of the fast or the full
// road, a page, an image.
TEST(HostileInput, AnOutputThatCannotBeWrittenEndsTheRun)
{
    if (access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "no /dev/full";
    const std::string full = "ERROR: cannot write %s: No space left on device\n";
    const struct {
        std::vector<std::string> args;
        std::string page;  // a report file made a link to /dev/full, or ""
        std::string named;
    } cases[] = {
        {{"-txtfcvrg", "/dev/full"}, "", "/dev/full"},
        {{"-xmlbcvrg", "/dev/full"}, "", "/dev/full"},
        {{"-txtdcg", "/dev/full"}, "", "/dev/full"},
        {{"-nohtml", "-xmlbcvrgfull", "/dev/full"}, "", "/dev/full"},
        {{}, "CodeCoverage/__HELP.HTML", "CodeCoverage/__HELP.HTML"},
        {{}, "CodeCoverage/__Home.gif", "CodeCoverage/__Home.gif"},
        {{}, "CODE_COVERAGE.HTML", "CODE_COVERAGE.HTML"},
    };
    for (const auto &c : cases) {
        Scenario scenario;
        scenario.write("a.c", "int f(void) { return 1; }\n");
        Project p;
        p.Add(scenario.path("a.c"), "f", 1).Blocks({{1, 1, 13}});
        scenario.writeProfiles(p);
        if (!c.page.empty()) {
            mkdir(scenario.path("CodeCoverage").c_str(), 0777);
            ASSERT_EQ(0, symlink("/dev/full", scenario.path(c.page).c_str()));
        }
        std::vector<std::string> args = {"-nopmeter"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        RunResult result = scenario.run(args);
        std::string expected = full;
        expected.replace(expected.find("%s"), 2, c.named);
        EXPECT_EQ(1, result.status) << c.named;
        EXPECT_EQ(expected, TailLike(result.err, expected)) << result.err;
    }
}

// Unmounts a test's file system, even when the test fails.
struct Mount {
    std::string at;
    ~Mount() { umount2(at.c_str(), MNT_DETACH); }
};

// A report directory on a file system that fills up halfway through a
// listing: the run ends with the page's name, not with status 0.
TEST(HostileInput, AFileSystemThatFillsEndsTheRun)
{
    Scenario scenario;
    const std::string reportDir = scenario.path("CodeCoverage");
    mkdir(reportDir.c_str(), 0777);
    if (geteuid() != 0 || mount("tmpfs", reportDir.c_str(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "cannot mount a small file system here";
    Mount mounted{reportDir};
    std::string source;
    for (int line = 0; line < 8000; ++line)
        source += "int value_" + std::to_string(line) + " = " + std::to_string(line) + ";\n";
    scenario.write("big.c", source);
    Project p;
    p.Add(scenario.path("big.c"), "f", 1).Blocks({{1, 1, 1}, {0, 4000, 1}});
    scenario.writeProfiles(p);

    RunResult result = scenario.run({"-nopmeter"});
    const std::string listing = getDirSrcHTMLname(scenario.path("big.c").c_str(), "html");
    const std::string expected = "ERROR: cannot write " + listing + ": No space left on device\n";
    EXPECT_EQ(1, result.status);
    EXPECT_EQ(expected, TailLike(result.err, expected));
}

// Under an address-space limit: 2,000 segments that all name one 1 MB
// string share the one copy of the file's bytes, so the run fits (a copy
// per segment would need 4 GB) and ends normally; a profile whose bytes do
// not fit at all ends with the documented message and status 2, never with
// a signal.
TEST(HostileInput, MemoryStaysBoundedAndItsEndIsReported)
{
    if (!MEMORY_LIMITS_WORK)
        GTEST_SKIP() << "no address-space limit under the address sanitizer";
    const struct {
        int segments;
        size_t nameBytes;
        int limitMb;
        int status;
        std::string message;  // the end of standard error
    } cases[] = {
        // The duplicate-key warning names the key: "<file>'<function>'".
        {2000, 1 << 20, 512, 0, "x'" + std::string(1 << 20, 'x') + "'\n"},
        {10, 96 << 20, 128, 2, "FATAL ERROR: Out of memory.\n"},
    };
    for (const auto &c : cases) {
        Scenario scenario;
        scenario.write("vemtra.dpi", testsupport::DpiWithOneLongName(c.segments, c.nameBytes));
        scenario.write("vemtra.spi", "");
        RunResult result = scenario.run({"-nopmeter", "-nohtml"}, {}, 120, c.limitMb);
        EXPECT_EQ(c.status, result.status) << result.err.substr(0, 300);
        EXPECT_TRUE(TailLike(result.err, c.message) == c.message) << c.segments << " segments";
    }
}

}  // namespace
