// Function lists: the page in each kind and order with its header links, the
// anchor a few lines above the function, display names, the test-database
// links, both sorts, and the per-file frameset in its three forms.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <tuple>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "report/file_frameset.h"
#include "report/function_pages.h"
#include "tests/support/capture.h"
#include "tests/support/memory_stream.h"

using testsupport::CaptureInChild;
using testsupport::Captured;
using testsupport::MemoryStream;

namespace {

// Owns the records and the array a list is given.
struct Functions {
    std::vector<std::string> names;
    std::vector<std::string> procNames;
    std::vector<func> records;
    std::vector<func *> table;

    void Add(const std::string &name, uint32_t line, uint32_t blocks, uint32_t covered,
             const std::string &procName = "")
    {
        names.push_back(name);
        procNames.push_back(procName.empty() ? name : procName);
        func f{};
        f.line = line;
        f.blocks = blocks;
        f.covered = covered;
        f.percent = blocks != 0 ? 100.0 * covered / blocks : 0.0;
        records.push_back(f);
    }
    func **Table()
    {
        table.clear();
        for (size_t i = 0; i < records.size(); ++i) {
            records[i].name = &names[i][0];
            records[i].procName = &procNames[i][0];
            table.push_back(&records[i]);
        }
        return table.data();
    }
};

FunctionListOptions NoLinks()
{
    return FunctionListOptions{false, false, "tvx_host", "tvx_db", nullptr, "function_tests_viewer.php"};
}

std::string Page(bool covered, SortType order, Functions &functions, const FunctionListOptions &options)
{
    MemoryStream page;
    func **table = functions.Table();
    writeFunctionList(page.stream(), covered, order, "src/io/read.c", "html", table,
                      static_cast<int>(functions.records.size()), options);
    return page.text();
}

const char kPageStart[] =
    "<html>\n<head>\n<title>%s Functions of src/io/read.c</title>\n<base target=\"src_view\">\n</head>\n"
    "<body bgcolor=\"FFFFFF\">\n<h5 ALIGN=\"left\">%s functions</h5>\n"
    "<TABLE BORDER=0 CELLPADDING=3 CELLSPACING=0 STYLE=\"color:black;font-weight:normal;"
    "font-family:Verdana,Arial;font-size:x-small\">\n<thead>\n";

std::string Start(const char *title, const char *heading)
{
    char text[1024];
    snprintf(text, sizeof text, kPageStart, title, heading);
    return text;
}

const char kPageEnd[] = "</tbody>\n</table>\n</body>\n</html>\n";

TEST(FunctionPages, CoveredPageInOrderOne)
{
    Functions f;
    f.Add("beta<int>", 40, 4, 3);
    f.Add("alpha", 4, 3, 2);
    std::string expected =
        Start("Covered", "covered") +
        "<TH ALIGN=\"left\" COLSPAN=\"2\"><a target=\"_self\" title=\"sort based on coverage\" "
        "href=\"SRC_IO_READ_C_CVRDFNCS_5.HTML\">coverage</a></TH>\n"
        "<TH ALIGN=\"left\"><a target=\"_self\" title=\"sort based on function name\" "
        "href=\"SRC_IO_READ_C_CVRDFNCS_2.HTML\">function</a></TH>\n"
        "</thead>\n<tbody>\n"
        // Line 4 links to its own anchor, line 40 to the anchor five above it.
        "<TR>\n<td align=\"right\"> 66.67</td><td align=\"center\">(2/3)</td>\n"
        "<td align=\"left\"><a href=\"SRC_IO_READ_C_SRC.HTML#l4\" title=\"Line 4\">alpha</a></td>\n</tr>\n"
        "<TR>\n<td align=\"right\"> 75.00</td><td align=\"center\">(3/4)</td>\n"
        "<td align=\"left\"><a href=\"SRC_IO_READ_C_SRC.HTML#l35\" title=\"Line 40\">beta&lt;int&gt;</a></td>\n"
        "</tr>\n" +
        std::string(kPageEnd);
    EXPECT_EQ(expected, Page(true, 1, f, NoLinks()));
}

TEST(FunctionPages, HeadersLinkByTheTableInEveryOrder)
{
    // Per order: the page numbers linked from the blocks (uncovered list) or
    // coverage header, and from the function header.
    struct Row {
        SortType order;
        int coverageOrBlocks;
        int name;
    };
    const Row coverageRows[] = {{1, 5, 2}, {-1, 5, 4}, {2, 1, 4}, {-2, 5, 4}};
    const Row blocksRows[] = {{1, 6, 2}, {-1, 6, 4}, {3, 0, 4}, {-3, 6, 4}};
    Functions f;
    f.Add("only", 1, 1, 0);
    for (const Row &row : coverageRows) {
        std::string page = Page(true, row.order, f, NoLinks());
        EXPECT_NE(std::string::npos,
                  page.find("href=\"SRC_IO_READ_C_CVRDFNCS_" + std::to_string(row.coverageOrBlocks) +
                            ".HTML\">coverage</a>"))
            << row.order;
        EXPECT_NE(std::string::npos,
                  page.find("href=\"SRC_IO_READ_C_CVRDFNCS_" + std::to_string(row.name) + ".HTML\">function</a>"))
            << row.order;
    }
    for (const Row &row : blocksRows) {
        std::string page = Page(false, row.order, f, NoLinks());
        EXPECT_NE(std::string::npos,
                  page.find("<TH ALIGN=\"center\"><a target=\"_self\" title=\"sort based on blocks\" "
                            "href=\"SRC_IO_READ_C_UNCVRDFNCS_" +
                            std::to_string(row.coverageOrBlocks) + ".HTML\">blocks</a></TH>\n"))
            << row.order;
        EXPECT_NE(std::string::npos,
                  page.find("href=\"SRC_IO_READ_C_UNCVRDFNCS_" + std::to_string(row.name) + ".HTML\">function</a>"))
            << row.order;
    }
}

TEST(FunctionPages, UncoveredPageShowsBlocksOrMissRates)
{
    Functions f;
    f.Add("g", 12, 7, 0);
    std::string rows = "<TR>\n<td align=\"center\">7</td>\n"
                       "<td align=\"left\"><a href=\"SRC_IO_READ_C_SRC.HTML#l7\" title=\"Line 12\">g</a></td>\n"
                       "</tr>\n";
    std::string page = Page(false, -3, f, NoLinks());
    EXPECT_EQ(0u, page.find(Start("Uncovered", "uncovered")));
    EXPECT_NE(std::string::npos, page.find("</thead>\n<tbody>\n" + rows + kPageEnd));

    FunctionListOptions reference = NoLinks();
    reference.reference = true;
    page = Page(false, 2, f, reference);
    EXPECT_NE(std::string::npos,
              page.find("<TH ALIGN=\"left\" COLSPAN=\"2\"><a target=\"_self\" title=\"sort based on miss rate\" "
                        "href=\"SRC_IO_READ_C_UNCVRDFNCS_1.HTML\">miss rate</a></TH>\n"));
    EXPECT_NE(std::string::npos, page.find("<td align=\"right\">  0.00</td><td align=\"center\">(0/7)</td>\n"));
}

TEST(FunctionPages, WritesDisplayNames)
{
    struct Case {
        const char *name;
        const char *shown;
    } cases[] = {
        {"_Send@12", "_Send"},                     // a decorated name loses its argument size
        {"f@1@23x", "fx"},
        {"mail@host", "mail@host"},                // "@" without digits stays
        {"trailing@", "trailing@"},
        {"operator<<(std::ostream&, T const&)", "operator&lt;&lt;(std::ostream&, T const&)"},
        {"vector<pair<int, int> >::push_back", "vector&lt;pair&lt;int, int&gt; &gt;::push_back"},
    };
    for (const Case &c : cases) {
        MemoryStream page;
        writeFunctionName(page.stream(), c.name);
        EXPECT_EQ(c.shown, page.text()) << c.name;
    }
}

TEST(FunctionPages, LinksEachFunctionToItsTests)
{
    Functions f;
    f.Add("ns::run(int)", 3, 2, 2, "_ZN2ns3runEi");
    FunctionListOptions options = NoLinks();
    options.links = true;
    std::string cell = "<td align=\"center\"><a target=\"_new\" href=\"http://tvx_host/function_tests_viewer.php"
                       "?function_name=_ZN2ns3runEi&dbName=tvx_db\" title=\"all cover tests\">Tests</a></td></tr>\n";
    EXPECT_NE(std::string::npos, Page(true, 1, f, options).find("ns::run(int)</a></td>\n" + cell));

    // A host with its scheme, in any case, gets no second one; a project
    // narrows the search.
    options.dbHost = "HTTP://db.example.org:8080";
    options.dbName = "cov";
    options.dbProject = "kernel";
    cell = "<td align=\"center\"><a target=\"_new\" href=\"HTTP://db.example.org:8080/function_tests_viewer.php"
           "?function_name=_ZN2ns3runEi&dbName=cov&project_name=kernel\" title=\"all cover tests\">Tests</a></td>"
           "</tr>\n";
    EXPECT_NE(std::string::npos, Page(true, 1, f, options).find(cell));
    options.dbHost = "hTtP://db";
    EXPECT_NE(std::string::npos, Page(true, 1, f, options).find("href=\"hTtP://db/function_tests_viewer.php?"));
}

// The keys of an order, as the list documents them, for checking a sort.
std::tuple<double, uint32_t, std::string, uint32_t> Keys(const func *f, int key)
{
    if (key == 1)
        return {0.0, 0, f->name, f->line};
    if (key == 2)
        return {f->percent, f->blocks, f->name, f->line};
    return {0.0, f->blocks, f->name, f->line};
}

TEST(FunctionPages, BothSortsOrderEveryKeyBothWays)
{
    for (int count : {31, 32, 200}) {
        Functions f;
        // Few distinct block counts and coverages, so the later keys decide
        // often; names in a scrambled order, some shared with other lines.
        for (int i = 0; i < count; ++i) {
            int scrambled = (i * 37 + 11) % count;
            f.Add("fn" + std::to_string(scrambled % (count / 2)), 100 + scrambled, 1 + scrambled % 4,
                  scrambled % 3 == 0 ? 1 : 0);
        }
        for (SortType order : {1, -1, 2, -2, 3, -3}) {
            func **table = f.Table();
            sortFunctions(table, count, order);
            int key = order < 0 ? -order : order;
            for (int i = 0; i + 1 < count; ++i) {
                auto a = Keys(table[i], key), b = Keys(table[i + 1], key);
                if (order > 0)
                    EXPECT_LT(a, b) << "count " << count << " order " << order << " at " << i;
                else
                    EXPECT_GT(a, b) << "count " << count << " order " << order << " at " << i;
            }
        }
    }
}

TEST(FunctionPages, NamesCompareAsUnsignedBytes)
{
    Functions f;
    f.Add("\xc3\xa9t\xc3\xa9", 1, 1, 1);   // a byte above 0x7F sorts after ASCII
    f.Add("zeta", 2, 1, 1);
    func **table = f.Table();
    sortFunctions(table, 2, 1);
    EXPECT_STREQ("zeta", table[0]->name);
}

TEST(FunctionPages, RefusesOrdersItCannotSortOrWrite)
{
    Captured c = CaptureInChild([] {
        Functions f;
        f.Add("a", 1, 1, 1);
        sortFunctions(f.Table(), 1, 0);
    });
    EXPECT_EQ(1, c.status);
    EXPECT_EQ("Internal error: invalid sort oder: 0\n", c.err);

    c = CaptureInChild([] {
        Functions f;
        f.Add("a", 1, 1, 1);
        bOutputFunctionCoverageFor(true, 4, "a.c", "html", f.Table(), 1);
    });
    EXPECT_EQ(1, c.status);
    EXPECT_EQ("Invalid sorting option 4\n", c.err);

    c = CaptureInChild([] {
        Functions f;
        f.Add("a", 1, 1, 1);
        if (chdir("/") != 0 || bOutputFunctionCoverageFor(true, -1, "/no/such/dir/a.c", "html", f.Table(), 1))
            _exit(3);
    });
    EXPECT_EQ(0, c.status);
    EXPECT_EQ("Cannot open CodeCoverage/_NO_SUCH_DIR_A_C_CVRDFNCS_2.HTML for output!\n", c.err);
}

std::string Frameset(bool covered, bool uncovered)
{
    MemoryStream page;
    writeFileFrameset(page.stream(), "src/io/read.c", "html", covered, uncovered);
    return page.text();
}

TEST(FileFrameset, LeftColumnHoldsTheToolbarAndTheLists)
{
    const std::string start = "<html>\n<head>\n<title>Tarsk&#174; Compilers code-coverage information for "
                              "src/io/read.c</title>\n</head>\n<frameset cols=\"25%, *\">\n";
    const std::string toolbar = "<frame src=\"__TOOLBAR.HTML\" scrolling=\"no\">\n";
    const std::string end = "<noframes> Your browser does not have frames support</noframes>\n</frameset>\n"
                            "<frame name=\"src_view\" src=\"SRC_IO_READ_C_SRC.HTML\" scrolling=\"yes\">\n"
                            "<noframes> Your browser doesn't have frames support</noframes>\n</frameset>\n"
                            "</html>\n";
    const std::string uncovered = "<frame src=\"SRC_IO_READ_C_UNCVRDFNCS_4.HTML\" scrolling=\"yes\">\n";
    const std::string covered = "<frame src=\"SRC_IO_READ_C_CVRDFNCS_4.HTML\" scrolling=\"yes\">\n";

    EXPECT_EQ(start + "<frameset rows=\"100%, *\">\n" + toolbar + end, Frameset(false, false));
    EXPECT_EQ(start + "<frameset rows=\"10%, *\">\n" + toolbar + covered + end, Frameset(true, false));
    EXPECT_EQ(start + "<frameset rows=\"10%, *\">\n" + toolbar + uncovered + end, Frameset(false, true));
    EXPECT_EQ(start + "<frameset rows=\"10%, 40%, *\">\n" + toolbar + uncovered + covered + end,
              Frameset(true, true));
}

}  // namespace
