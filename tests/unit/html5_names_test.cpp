// The modern view's page names and common root: safe names on any file
// system and in any URL, whatever the paths hold.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "report/html5_writer.h"

namespace {

TEST(Html5Names, PathsBecomeSafePageNames)
{
    const std::string longPart(300, 'x');
    struct Case {
        std::string shown, page;
    } cases[] = {
        {"a.c", "a.c.html"},
        {"src/lib/util.c", "src/lib/util.c.html"},
        {"my file&<x>.c", "my_file__x_.c.html"},
        {"./a/../b.c", "_/a/_/b.c.html"},
        {"a//b.c", "a/_/b.c.html"},
        {"caf\xc3\xa9.c", "caf__.c.html"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(c.page, html5PageName(c.shown)) << c.shown;
    std::string cut = html5PageName("d/" + longPart + ".c");
    EXPECT_EQ(0u, cut.rfind("d/" + std::string(180, 'x') + "_", 0)) << cut;
    EXPECT_EQ(2 + 180 + 17 + 5, cut.size()) << cut;  // "d/", the cut part, "_" and 16 hex digits, ".html"
    EXPECT_NE(cut, html5PageName("d/" + longPart + ".h"));
}

TEST(Html5Names, CommonDirectoryOfThePaths)
{
    struct Case {
        std::vector<std::string> paths;
        std::string common;
    } cases[] = {
        {{"/src/a.c"}, "/src/"},
        {{"/src/a.c", "/src/lib/b.c"}, "/src/"},
        {{"/src/ab.c", "/src/ac.c"}, "/src/"},
        {{"/srcA/x.c", "/srcB/y.c"}, "/"},
        {{"a.c", "/abs/b.c"}, ""},
        {{}, ""},
    };
    for (const Case &c : cases)
        EXPECT_EQ(c.common, commonDirectory(c.paths)) << (c.paths.empty() ? "" : c.paths[0]);
}

}  // namespace
