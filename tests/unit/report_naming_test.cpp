// Page names of the report where the golden trees cannot reach: the name
// rules on unusual paths, the shared name buffer; the text helpers and the
// refused sort types. (Every page form is named in the golden trees.)
#include <cctype>
#include <cstdio>
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
    // the size fits, one more byte doubles it.
    std::string name(start - 4 - 2, 'a');
    EXPECT_EQ(getHTMLname(name.c_str(), "html"), std::string(name.size(), 'A') + ".HTML");
    EXPECT_EQ(reportNameBufferSize(), start);
    name += 'b';
    EXPECT_EQ(getHTMLname(name.c_str(), "html"), std::string(name.size() - 1, 'A') + "B.HTML");
    EXPECT_EQ(reportNameBufferSize(), 2 * start);
    // The Dir order forms need 28 bytes beyond the name and the extension.
    name.assign(4 * start - 4 - 28, 'c');
    EXPECT_EQ(getDirVerHTMLname(name.c_str(), 6, "html"), "CodeCoverage/" + std::string(name.size(), 'C') + "_6.HTML");
    EXPECT_EQ(reportNameBufferSize(), 8 * start);

    // Paths far longer than any fixed buffer, in every form.
    std::string path;
    while (path.size() < 20000)
        path += "deep.dir/";
    path += "file.c";
    std::string expected = path;
    expected[expected.rfind('.')] = '_';
    for (char &c : expected)
        c = c == '/' ? '_' : static_cast<char>(toupper(c));
    EXPECT_EQ(getDirSrcHTMLname(path.c_str(), "html"), "CodeCoverage/" + expected + "_SRC.HTML");
    EXPECT_EQ(getSrcHTMLname(path.c_str(), "html"), expected + "_SRC.HTML");
    EXPECT_EQ(getVerHTMLname(path.c_str(), 3, "html"), expected + "_3.HTML");
    EXPECT_EQ(getDirHTMLname(path.c_str(), "html"), "CodeCoverage/" + expected + ".HTML");
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
