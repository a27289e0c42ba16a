// Page names of the report, the shared name buffer, the text helpers, the
// percentage rule and the checks of sort orders.
#include <cctype>
#include <cstdio>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "report/naming.h"
#include "report/percent_format.h"
#include "report/sort_order.h"
#include "tests/support/capture.h"
#include "tests/support/memory_stream.h"

using testsupport::Captured;
using testsupport::CaptureInChild;

TEST(ReportNaming, EveryFormAndRule)
{
    const struct {
        std::string name, expected;
    } cases[] = {
        {getDirSrcHTMLname("src/io/read.c", "html"), "CodeCoverage/SRC_IO_READ_C_SRC.HTML"},
        {getSrcHTMLname("src/io/read.c", "html"), "SRC_IO_READ_C_SRC.HTML"},
        {getDirHTMLname("src/io/read.c_CvrdFncs_4", "html"), "CodeCoverage/SRC_IO_READ_C_CVRDFNCS_4.HTML"},
        {getDirSlashHTMLname("/home/a/x.cpp", "html"), "CodeCoverage/_HOME_A_X_CPP.HTML"},
        {getVerHTMLname("__Covered_Files_Coverage", 4, "html"), "__COVERED_FILES_COVERAGE_4.HTML"},
        {getDirVerHTMLname("lib/x.y.cc", 2, "htm"), "CodeCoverage/LIB_X.Y_CC_2.HTM"},
        {getDirSlashVerHTMLname("__Uncovered_Files_Coverage", 0, "html"),
         "CodeCoverage/__UNCOVERED_FILES_COVERAGE_0.HTML"},
        {getHTMLname("Makefile", "html"), "MAKEFILE.HTML"},          // no dot at all
        {getHTMLname("rel.3/main", "html"), "REL_3_MAIN.HTML"},      // the last dot lies in a directory
        {getHTMLname("C:\\src\\m.f90", "html"), "C__SRC_M_F90.HTML"},
        {getHTMLname("Src/Main.c", "html"), "SRC_MAIN_C.HTML"},      // shares its page with "src_main.c"
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.expected, c.name);
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
    char text[] = "C:\\a/b:c.d";
    hyphenize(text);
    EXPECT_STREQ(text, "C__a_b_c.d");
    EXPECT_STREQ(strtrns(text, '_', '.'), "C..a.b.c.d");
    EXPECT_EQ(strtrns(nullptr, 'a', 'b'), nullptr);

    testsupport::MemoryStream page;
    printHTMLstr(page.stream(), "if (a<b && c>d) puts(\"x\");");
    printHTMLstr(page.stream(), nullptr);
    EXPECT_EQ(page.text(), "if (a&lt;b && c>d) puts(&quot;x&quot;);");
}

TEST(ReportPercent, HalfUpToTwoDecimals)
{
    EXPECT_EQ(coveragePercent(0, 0), 0.0);
    auto printed = [](double percent) {
        char text[16];
        snprintf(text, sizeof text, "%6.2f", roundHalfUp2(percent));
        return std::string(text);
    };
    EXPECT_EQ(printed(coveragePercent(2, 3)), " 66.67");
    EXPECT_EQ(printed(coveragePercent(1, 3)), " 33.33");
    // A half is raised where printf alone would round to even.
    EXPECT_EQ(printed(0.125), "  0.13");
    EXPECT_EQ(printed(coveragePercent(1, 800)), "  0.13");
    EXPECT_EQ(printed(coveragePercent(3, 3)), "100.00");
}

TEST(ReportSortOrder, ChecksOfOrders)
{
    for (int order = 0; order <= 3; ++order)
        EXPECT_TRUE(isLinear(order));
    EXPECT_FALSE(isLinear(4));
    const struct {
        std::function<void()> check;
        const char *message;
    } refused[] = {
        {[] { isLinear(5); }, "ERROR: unknown sort type 5\n in isLinear"},
        {[] { isLinear(-1); }, "ERROR: unknown sort type -1\n in isLinear"},
        {[] { checkSortOption(4); }, "Invalid sorting option 4\n"},
        {[] { checkSortKeyOrder(0); }, "Internal error: invalid sort oder: 0\n"},
    };
    for (const auto &c : refused) {
        Captured run = CaptureInChild(c.check);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, c.message);
    }
    for (SortColumn column : {SORT_COLUMN_NAME, SORT_COLUMN_COVERAGE, SORT_COLUMN_BLOCKS})
        EXPECT_EQ(sortHeaderLink(0, column), 4);
}
