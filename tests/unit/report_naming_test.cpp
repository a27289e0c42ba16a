// Page names of the report, the shared name buffer, the text helpers and the
// sort-order rules that the tables share.
#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "report/naming.h"
#include "report/percent_format.h"
#include "report/sort_order.h"
#include "tests/support/capture.h"

using testsupport::CaptureInChild;
using testsupport::Captured;

TEST(ReportNaming, DocumentedExamples)
{
    EXPECT_STREQ(getDirSrcHTMLname("src/io/read.c", "html"), "CodeCoverage/SRC_IO_READ_C_SRC.HTML");
    EXPECT_STREQ(getDirHTMLname("src/io/read.c", "html"), "CodeCoverage/SRC_IO_READ_C.HTML");
    EXPECT_STREQ(getDirHTMLname("src/io/read.c_CvrdFncs_4", "html"),
                 "CodeCoverage/SRC_IO_READ_C_CVRDFNCS_4.HTML");
    EXPECT_STREQ(getDirHTMLname("/home/a/x.cpp", "html"), "CodeCoverage/_HOME_A_X_CPP.HTML");
    EXPECT_STREQ(getHTMLname("Code_Coverage", "html"), "CODE_COVERAGE.HTML");
    EXPECT_STREQ(getDirHTMLname("__Help", "html"), "CodeCoverage/__HELP.HTML");
}

TEST(ReportNaming, EachFormComposesItsText)
{
    EXPECT_STREQ(getHTMLname("src/io/read.c", "html"), "SRC_IO_READ_C.HTML");
    EXPECT_STREQ(getSrcHTMLname("src/io/read.c", "html"), "SRC_IO_READ_C_SRC.HTML");
    EXPECT_STREQ(getVerHTMLname("__Covered_Files_Coverage", 4, "html"), "__COVERED_FILES_COVERAGE_4.HTML");
    EXPECT_STREQ(getDirVerHTMLname("__Uncovered_Files_Coverage", 2, "html"),
                 "CodeCoverage/__UNCOVERED_FILES_COVERAGE_2.HTML");
    EXPECT_STREQ(getDirSlashVerHTMLname("__Covered_Files_Coverage", 0, "html"),
                 "CodeCoverage/__COVERED_FILES_COVERAGE_0.HTML");
    EXPECT_STREQ(getDirSlashHTMLname("__Code_Coverage", "html"), "CodeCoverage/__CODE_COVERAGE.HTML");
    // The extension is upper-cased too; the directory keeps its case.
    EXPECT_STREQ(getDirHTMLname("a.b", "htm"), "CodeCoverage/A_B.HTM");
}

TEST(ReportNaming, DotsSeparatorsAndCase)
{
    // No dot at all: only separators change.
    EXPECT_STREQ(getHTMLname("Makefile", "html"), "MAKEFILE.HTML");
    // The only dot lies in a directory: it still becomes "_".
    EXPECT_STREQ(getHTMLname("rel.3/main", "html"), "REL_3_MAIN.HTML");
    // Only the last dot changes; earlier ones stay.
    EXPECT_STREQ(getHTMLname("a.b/c.d", "html"), "A.B_C_D.HTML");
    EXPECT_STREQ(getVerHTMLname("lib/x.y.cc", 5, "html"), "LIB_X.Y_CC_5.HTML");
    // Drive colons and backslashes.
    EXPECT_STREQ(getHTMLname("C:\\src\\m.f90", "html"), "C__SRC_M_F90.HTML");
    // Paths that differ only in case or in "/" versus "_" share a page.
    std::string first = getHTMLname("Src/Main.c", "html");
    EXPECT_EQ(first, getHTMLname("src_main.c", "html"));
}

TEST(ReportNaming, OneSharedBuffer)
{
    const char *first = getHTMLname("a.c", "html");
    std::string copy = first;
    const char *second = getDirSrcHTMLname("b.c", "html");
    EXPECT_EQ(first, second);
    EXPECT_EQ(copy, "A_C.HTML");
    EXPECT_STREQ(first, "CodeCoverage/B_C_SRC.HTML");
}

TEST(ReportNaming, BufferGrowsToThePowerOfTwoAboveTheNeed)
{
    // Start from whatever size earlier names left: a power of two.
    const size_t start = reportNameBufferSize();
    ASSERT_GE(start, 4096u);
    ASSERT_EQ(start & (start - 1), 0u);

    // getHTMLname needs the name, the extension and 2 bytes.
    std::string name(start + 1 - 4 - 2, 'a');
    std::string page = getHTMLname(name.c_str(), "html");
    EXPECT_EQ(reportNameBufferSize(), 2 * start);
    EXPECT_EQ(page, std::string(name.size(), 'A') + ".HTML");

    // A need equal to the size fits.
    name.assign(2 * start - 4 - 2, 'b');
    page = getHTMLname(name.c_str(), "html");
    EXPECT_EQ(reportNameBufferSize(), 2 * start);
    EXPECT_EQ(page.size(), name.size() + 5);

    // A need that is itself a larger power of two gets the next one.
    name.assign(4 * start - 4 - 15, 'c');
    page = getDirHTMLname(name.c_str(), "html");
    EXPECT_EQ(reportNameBufferSize(), 8 * start);
    EXPECT_EQ(page, "CodeCoverage/" + std::string(name.size(), 'C') + ".HTML");
}

TEST(ReportNaming, VeryLongPathsInEveryForm)
{
    std::string path;
    while (path.size() < 20000)
        path += "deep.dir/";
    path += "file.c";
    // Only the last dot is replaced by the dot rule; the others are dots of
    // directories, which stay.
    std::string expected = path;
    expected[expected.rfind('.')] = '_';
    for (char &c : expected)
        c = c == '/' ? '_' : static_cast<char>(toupper(c));

    EXPECT_EQ(std::string(getDirSrcHTMLname(path.c_str(), "html")), "CodeCoverage/" + expected + "_SRC.HTML");
    EXPECT_EQ(std::string(getSrcHTMLname(path.c_str(), "html")), expected + "_SRC.HTML");
    EXPECT_EQ(std::string(getDirVerHTMLname(path.c_str(), 6, "html")), "CodeCoverage/" + expected + "_6.HTML");
    EXPECT_EQ(std::string(getVerHTMLname(path.c_str(), 3, "html")), expected + "_3.HTML");
    EXPECT_EQ(std::string(getHTMLname(path.c_str(), "html")), expected + ".HTML");
    EXPECT_GT(reportNameBufferSize(), path.size() + 4 + 15);
}

TEST(ReportText, HyphenizeAndStrtrns)
{
    char text[] = "C:\\a/b:c.d";
    hyphenize(text);
    EXPECT_STREQ(text, "C__a_b_c.d");

    char word[] = "a.b.c";
    EXPECT_EQ(strtrns(word, '.', '/'), word);
    EXPECT_STREQ(word, "a/b/c");
    char empty[] = "";
    EXPECT_EQ(strtrns(empty, 'a', 'b'), empty);
    EXPECT_EQ(strtrns(nullptr, 'a', 'b'), nullptr);
}

TEST(ReportText, PrintHTMLstrEscapesOnlyLessThanAndQuote)
{
    char *buffer = nullptr;
    size_t size = 0;
    FILE *stream = open_memstream(&buffer, &size);
    printHTMLstr(stream, "if (a<b && c>d) puts(\"x\");");
    printHTMLstr(stream, "");
    printHTMLstr(stream, nullptr);
    fclose(stream);
    EXPECT_EQ(std::string(buffer, size), "if (a&lt;b && c>d) puts(&quot;x&quot;);");
    free(buffer);
}

TEST(ReportPercent, HalfUpToTwoDecimals)
{
    EXPECT_DOUBLE_EQ(coveragePercent(0, 0), 0.0);
    EXPECT_DOUBLE_EQ(coveragePercent(3, 3), 100.0);
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
    EXPECT_EQ(printed(coveragePercent(0, 7)), "  0.00");
    EXPECT_EQ(printed(100.0), "100.00");
}

TEST(ReportSortOrder, HeaderLinksFollowTheToggleRule)
{
    // A header toggles its own key and otherwise asks for its key ascending,
    // except that between descending coverage (-2) and descending blocks
    // (-3) the other header keeps the descending direction.
    const SortColumn columns[] = {SORT_COLUMN_NAME, SORT_COLUMN_COVERAGE, SORT_COLUMN_BLOCKS};
    for (int order = -3; order <= 3; ++order) {
        if (order == 0)
            continue;
        for (int key = 1; key <= 3; ++key) {
            int target = key;
            if (order == key)
                target = -key;
            else if ((order == -2 && key == 3) || (order == -3 && key == 2))
                target = -key;
            EXPECT_EQ(sortHeaderLink(order, columns[key - 1]), target + 3)
                << "order " << order << " key " << key;
        }
    }
    for (SortColumn column : columns)
        EXPECT_EQ(sortHeaderLink(0, column), 4);
}

TEST(ReportSortOrder, IsLinearAndTheOrderChecks)
{
    for (int order = 0; order <= 3; ++order)
        EXPECT_TRUE(isLinear(order));
    EXPECT_FALSE(isLinear(4));

    Captured bad = CaptureInChild([] { isLinear(5); });
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.err, "ERROR: unknown sort type 5\n in isLinear");
    Captured negative = CaptureInChild([] { isLinear(-1); });
    EXPECT_EQ(negative.status, 1);
    EXPECT_EQ(negative.err, "ERROR: unknown sort type -1\n in isLinear");

    Captured option = CaptureInChild([] { checkSortOption(4); });
    EXPECT_EQ(option.status, 1);
    EXPECT_EQ(option.err, "Invalid sorting option 4\n");
    Captured inside = CaptureInChild([] { checkSortKeyOrder(0); });
    EXPECT_EQ(inside.status, 1);
    EXPECT_EQ(inside.err, "Internal error: invalid sort oder: 0\n");
    Captured fine = CaptureInChild([] {
        checkSortOption(-3);
        checkSortKeyOrder(3);
    });
    EXPECT_EQ(fine.status, 0);
    EXPECT_EQ(fine.err, "");
}
