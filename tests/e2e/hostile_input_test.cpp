// Reports on hostile and unlucky inputs: names that carry markup, paths
// longer than a file name may be, and a source that is not a regular file.
// Each run must finish with every page safe to open and every link whole.
#include <string>
#include <sys/stat.h>

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

}  // namespace
