// Page names of the report where the golden trees cannot reach: the name
// rules on unusual paths, the shared name buffer; the text helpers and the
// refused sort types. (Every page form is named in the golden trees.)
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "report/naming.h"
#include "report/sort_order.h"
#include "tests/support/capture.h"
#include "tests/support/memory_stream.h"

TEST(ReportNaming, RulesOnUnusualPaths)
{
    EXPECT_STREQ(getHTMLname("Makefile", "html"), "MAKEFILE.HTML");          // no dot at all
    EXPECT_STREQ(getHTMLname("rel.3/main", "html"), "REL_3_MAIN.HTML");      // the last dot lies in a directory
    EXPECT_STREQ(getHTMLname("C:\\src\\m.f90", "html"), "C__SRC_M_F90.HTML");
    EXPECT_STREQ(getHTMLname("Src/Maze.c", "html"), "SRC_MAZE_C.HTML");      // shares its page with "src_maze.c"
    EXPECT_STREQ(getDirVerHTMLname("lib/x.y.cc", 2, "htm"), "CodeCoverage/LIB_X.Y_CC_2.HTM");
}

TEST(ReportNaming, OneBufferThatGrowsToThePowerOfTwoAboveTheNeed)
{
    const char *first = getHTMLname("a.c", "html");
    EXPECT_EQ(first, getDirSrcHTMLname("b.c", "html"));
    EXPECT_STREQ(first, "CodeCoverage/B_C_SRC.HTML");

    // Start from whatever size earlier names left: a power of two.
    const size_t start = reportNameBufferSize();
    ASSERT_GE(start, 4096u);
    ASSERT_EQ(start & (start - 1), 0u);
    // getHTMLname needs the name, the extension and 2 bytes; a need equal to
    // the size fits, one more byte doubles it. Such names are then cut to
    // the file system's 255 bytes.
    std::string name(start - 4 - 2, 'a');
    std::string cut = getHTMLname(name.c_str(), "html");
    EXPECT_EQ(reportNameBufferSize(), start);
    name += 'b';
    EXPECT_NE(getHTMLname(name.c_str(), "html"), cut);
    EXPECT_EQ(reportNameBufferSize(), 2 * start);
    // The Dir order forms need 28 bytes beyond the name and the extension.
    name.assign(4 * start - 4 - 28, 'c');
    getDirVerHTMLname(name.c_str(), 6, "html");
    EXPECT_EQ(reportNameBufferSize(), 8 * start);
}

// A name of at most 255 bytes is kept; a longer one keeps its front, gets
// "_" and 16 hexadecimal digits of a hash of the whole name, and keeps its
// extension, in every form, so that links and pages agree.
TEST(ReportNaming, NamesPastTheFileSystemLimitAreCutWithAHash)
{
    std::string fits(255 - 5, 'a');  // + ".HTML"
    EXPECT_EQ(getHTMLname(fits.c_str(), "html"), std::string(250, 'A') + ".HTML");

    std::string path;
    while (path.size() < 20000)
        path += "deep.dir/";
    path += "file.c";
    std::string full = path;
    full[full.rfind('.')] = '_';
    for (char &c : full)
        c = c == '/' ? '_' : static_cast<char>(toupper(c));
    full += "_SRC.HTML";

    std::string link = getSrcHTMLname(path.c_str(), "html");
    ASSERT_EQ(link.size(), 255u);
    EXPECT_EQ(link.substr(0, 233), full.substr(0, 233));
    EXPECT_EQ(link[233], '_');
    EXPECT_EQ(link.find_first_not_of("0123456789ABCDEF", 234), 250u);
    EXPECT_EQ(link.substr(250), ".HTML");
    EXPECT_EQ(getDirSrcHTMLname(path.c_str(), "html"), "CodeCoverage/" + link);

    // One more byte at the end changes the hash, not the kept front.
    std::string other = getSrcHTMLname((path + "x").c_str(), "html");
    EXPECT_EQ(other.substr(0, 234), link.substr(0, 234));
    EXPECT_NE(other, link);
    EXPECT_EQ(strlen(getVerHTMLname(path.c_str(), 3, "html")), 255u);
    EXPECT_EQ(strlen(getDirHTMLname(path.c_str(), "html")), 13u + 255u);
}

TEST(ReportText, Helpers)
{
    char text[] = "C:a.b.c";
    EXPECT_STREQ(strtrns(text, '.', '_'), "C:a_b_c");
    EXPECT_EQ(strtrns(nullptr, 'a', 'b'), nullptr);

    testsupport::MemoryStream page;
    printHTMLstr(page.stream(), "if (a<b && c>d) puts(\"x\");");
    printHTMLstr(page.stream(), nullptr);
    EXPECT_EQ(page.text(), "if (a&lt;b && c>d) puts(&quot;x&quot;);");
}

TEST(ReportSortOrder, UnknownSortTypes)
{
    for (int order = 0; order <= 3; ++order)
        EXPECT_TRUE(isLinear(order));
    EXPECT_FALSE(isLinear(4));
    for (int order : {5, -1}) {
        testsupport::Captured run = testsupport::CaptureInChild([=] { isLinear(order); });
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, "ERROR: unknown sort type " + std::to_string(order) + "\n in isLinear");
    }
}
