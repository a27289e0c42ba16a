// The annotated listing page: colours of recorded positions, colour changes,
// the look-ahead over leading blanks, escaping, infeasible lines, the stop at
// a 0xFF byte, empty files and last lines without a line feed, the -ref
// colours, and the counter lines of -counts.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/comment_parser.h"
#include "analysis/coverage_state.h"
#include "report/colors.h"
#include "report/coverage_store.h"
#include "report/page_foot.h"
#include "report/source_listing.h"
#include "tests/support/memory_stream.h"
#include "tests/support/scratch_dir.h"

using testsupport::MemoryStream;
using testsupport::ScratchDir;

namespace {

const char kCovered[] = "#ffffff";
const char kPartial[] = "#fafad2";
const char kUncoveredBlock[] = "#ffff99";
const char kUncoveredFunction[] = "#ffcccc";
const char kInfeasible[] = "#90ee90";

// One source file with its recorded positions.
class ListingCase {
public:
    explicit ListingCase(const std::string &bytes, const std::string &name = "demo.cpp")
        : path_(dir_.path(name))
    {
        std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
        FILE *f = fopen(path_.c_str(), "wb");
        fwrite(bytes.data(), 1, bytes.size(), f);
        fclose(f);
        EXPECT_TRUE(store_.bSetName(path_.c_str()));
        first_func_line = nullptr;
    }

    void Block(uint32_t line, uint32_t column, uint64_t count, bool newFunction = false)
    {
        EXPECT_TRUE(store_.bAddBlockCount(path_.c_str(), line, column, count, newFunction, nullptr));
    }

    std::string Listing(const ListingOptions &options, const parser *infeasible = nullptr,
                        const COMP *functions = nullptr, double funcPercent = 50.0, double blockPercent = 25.0)
    {
        ListingSource file{path_.c_str(), funcPercent, blockPercent, &store_, infeasible, functions};
        FILE *source = fopen(path_.c_str(), "r");
        MemoryStream page;
        MarkerLine marker;
        markerLineCreate(&marker);
        std::vector<char> buffer;
        EXPECT_TRUE(writeSourceListing(page.stream(), source, file, options, &marker, buffer));
        markerLineFree(&marker);
        fclose(source);
        return page.text();
    }

    const std::string &path() const { return path_; }

private:
    ScratchDir dir_;
    std::string path_;
    coverage_list store_;
};

ListingOptions Plain()
{
    return ListingOptions{false, false, false, "owner@example.org", "Owner"};
}

ListingOptions Counts()
{
    ListingOptions options = Plain();
    options.counts = true;
    return options;
}

std::string Head(const std::string &name, const std::string &percents = "coverage:&#160 50.00&#160;%func"
                                                                         "&#160;&#160;&#160;&#160; 25.00&#160;%block")
{
    return "<html>\n<head>\n<title>Listing of " + name +
           "</title>\n</head>\n<body bgcolor=\"FFFFFF\">\n"
           "<h4>&#160;&#160;&#160;&#160;&#160;&#160;&#160;&#160;&#160;&#160;&#160;&#160;" +
           name + "&#160;&#160;&#160;&#160;&#160;&#160;&#160;<font size=-1>" + percents +
           "</font></h4>\n<hr size=1 noshade>\n<pre>\n";
}

std::string Foot()
{
    MemoryStream page;
    writePageFoot(page.stream(), "owner@example.org", "Owner");
    return "</pre>\n" + page.text();
}

std::string Open(int line, const char *colour)
{
    char number[16];
    snprintf(number, sizeof number, "%6d) ", line > 999999 ? 999999 : line);
    return std::string(number) + "<a name=\"l" + std::to_string(line) + "\" style=\"background-color: " + colour +
           "\">";
}

std::string Change(const char *colour)
{
    return std::string("</a><a style=\"background-color: ") + colour + "\">";
}

std::string CounterLine(const std::string &body, const char *colour = "#ffffff")
{
    return std::string("        <a style=\"background-color: ") + colour + "\">" + body + "</a>\n";
}

// Restores the colour table after a test that changes it.
class ColourGuard {
public:
    ColourGuard()
    {
        for (int i = 0; i < 8; ++i)
            saved_[i] = BGColor[i];
    }
    ~ColourGuard()
    {
        for (int i = 0; i < 8; ++i)
            BGColor[i] = saved_[i];
    }

private:
    const char *saved_[8];
};

TEST(SourceListing, PaintsPositionsEscapesAndEndsWithTheFoot)
{
    ListingCase c("int main() {\n"
                  "  if (a < b && c > \"d\")\n"
                  "  x;\n"
                  "}");
    c.Block(1, 1, 5);
    c.Block(2, 3, 0);                   // uncovered block, where the text begins
    c.Block(2, 14, 3);                  // partial: one of two blocks ran
    c.Block(2, 14, 0);
    c.Block(4, 1, NEVER_EXECUTED);      // a function that never ran
    std::string expected = Head("demo.cpp") +
                           Open(1, kCovered) + "int main() {</a>\n" +
                           Open(2, kUncoveredBlock) + "  if (a &lt; b &amp;" + Change(kPartial) +
                           "&amp; c &gt; &quot;d&quot;)</a>\n" +
                           // No position: the colour in force goes on.
                           Open(3, kPartial) + "  x;</a>\n" +
                           // The last line has no line feed: no "</a>", the foot follows.
                           Open(4, kUncoveredFunction) + "}" + Foot();
    EXPECT_EQ(expected, c.Listing(Plain()));
    EXPECT_NE(std::string::npos,
              expected.find("<tr><a>Web-Page Owner: <a href=\"mailto:owner@example.org\">Owner</a></tr>\n"));
}

TEST(SourceListing, WritesAChangeOnlyWhenTheColourStringDiffers)
{
    ColourGuard guard;
    SetBGColor(COLOR_PARTIAL, "#ffffff");
    ListingCase c("a b c d\n");
    c.Block(1, 1, 4);   // covered
    c.Block(1, 3, 4);   // partial, painted like covered: no change
    c.Block(1, 3, 0);
    c.Block(1, 5, 0);   // uncovered block
    c.Block(1, 7, 2);   // covered again
    EXPECT_EQ(Head("demo.cpp") + Open(1, kCovered) + "a b " + Change(kUncoveredBlock) + "c " + Change(kCovered) +
                  "d</a>\n" + Foot(),
              c.Listing(Plain()));
}

TEST(SourceListing, LooksPastAtMost255LeadingBlanks)
{
    ListingCase c(std::string(254, ' ') + "x\n" + std::string(300, ' ') + "y\n" + "\t \tz\n");
    c.Block(1, 255, 0);   // where the text begins: the line opens in its colour
    c.Block(2, 301, 7);   // beyond the look-ahead: a change in the line
    c.Block(2, 1, 0);     // inside the blanks
    c.Block(3, 4, 7);
    EXPECT_EQ(Head("demo.cpp") +
                  Open(1, kUncoveredBlock) + std::string(254, ' ') + "x</a>\n" +
                  // Line 2 opens in the colour in force (line 1's); its position at
                  // column 1 changes nothing, column 301 does.
                  Open(2, kUncoveredBlock) + std::string(300, ' ') + Change(kCovered) + "y</a>\n" +
                  Open(3, kCovered) + "\t \tz</a>\n" + Foot(),
              c.Listing(Plain()));
}

TEST(SourceListing, ClassifiesPositions)
{
    // Without -ref: count 0, never executed, some blocks ran, all ran.
    EXPECT_EQ(COLOR_UNCOVERED_BLOCK, classifyPosition(0, 1, 0, false, false, false));
    EXPECT_EQ(COLOR_UNCOVERED_FUNCTION, classifyPosition(NEVER_EXECUTED, 1, 1, false, false, false));
    EXPECT_EQ(COLOR_PARTIAL, classifyPosition(5, 3, 2, false, false, false));
    EXPECT_EQ(COLOR_COVERED, classifyPosition(5, 3, 3, false, false, false));
    // An adjusted last block that did not run is not partial; two are.
    EXPECT_EQ(COLOR_COVERED, classifyPosition(5, 3, 2, true, false, false));
    EXPECT_EQ(COLOR_PARTIAL, classifyPosition(5, 3, 1, true, false, false));
    // With -ref: a count of 0 ran in the reference too.
    EXPECT_EQ(COLOR_COVERED, classifyPosition(0, 1, 0, false, true, true));
    EXPECT_EQ(COLOR_UNCOVERED_FUNCTION, classifyPosition(4, 1, 1, false, true, true));
    EXPECT_EQ(COLOR_UNCOVERED_FUNCTION, classifyPosition(NEVER_EXECUTED, 1, 1, false, false, true));
    EXPECT_EQ(COLOR_UNCOVERED_BLOCK, classifyPosition(4, 2, 1, false, false, true));
}

TEST(SourceListing, NumbersLinesUpTo999999)
{
    struct Case {
        uint32_t line;
        const char *text;
    } cases[] = {{1, "     1) "}, {42, "    42) "}, {999999, "999999) "}, {1000000, "999999) "},
                 {4294967295u, "999999) "}};
    for (const Case &c : cases) {
        MemoryStream page;
        writeLineNumber(page.stream(), c.line);
        EXPECT_EQ(c.text, page.text()) << c.line;
    }
}

TEST(SourceListing, InfeasibleLinesKeepTheirColourButFollowPositions)
{
    ListingCase c("a;\n"
                  "b; /* off */ c;\n"
                  "d;\n");
    std::vector<std::string> oneLine{"off"}, begin, end;
    parser infeasible(c.path().c_str(), oneLine, begin, end);
    ASSERT_TRUE(infeasible.is_disabled_line(2));
    c.Block(1, 1, 1);
    c.Block(2, 1, 0);
    c.Block(2, 14, 1);
    c.Block(2, 14, 0);   // partial, but on an infeasible line: no change, no marker
    EXPECT_EQ(Head("demo.cpp") +
                  Open(1, kCovered) + "a;</a>\n" + CounterLine("^ 1 ") +
                  Open(2, kInfeasible) + "b; /* off */ c;</a>\n" +
                  // The class followed line 2's positions.
                  Open(3, kPartial) + "d;</a>\n" + Foot(),
              c.Listing(Counts(), &infeasible));
}

TEST(SourceListing, StopsAtAByte0xFFAndListsNothingOfAnEmptyFile)
{
    {
        ListingCase c("a;\nb\xff;\nc;\n");
        EXPECT_EQ(Head("demo.cpp") + Open(1, "#ffffff") + "a;</a>\n" + Open(2, "#ffffff") + "b" + Foot(),
                  c.Listing(Plain()));
    }
    {
        ListingCase c("\xff" "a;\n");
        EXPECT_EQ(Head("demo.cpp"), c.Listing(Plain()));
    }
    {
        ListingCase c("");
        EXPECT_EQ(Head("demo.cpp"), c.Listing(Plain()));
    }
}

TEST(SourceListing, ReferenceRunColoursFunctionsAndBlocks)
{
    ListingCase c("void f()\n{}\nvoid g()\n{ x; }\n");
    COMP g{};
    g.line = 3;
    COMP f{};
    f.line = 1;
    f.not_in_reference = 1;
    f.next_by_line = &g;
    c.Block(2, 1, 0);   // ran in the reference too
    c.Block(4, 3, 9);   // newly covered block
    ListingOptions options = Plain();
    options.reference = true;
    EXPECT_EQ(Head("demo.cpp", "miss rate:&#160 66.67&#160;%func&#160;&#160;&#160;&#160; 62.50&#160;%block") +
                  Open(1, kUncoveredFunction) + "void f()</a>\n" +
                  Open(2, kCovered) + "{}</a>\n" +
                  Open(3, kCovered) + "void g()</a>\n" +
                  Open(4, kCovered) + "{ " + Change(kUncoveredBlock) + "x; }</a>\n" + Foot(),
              c.Listing(options, nullptr, &f, 200.0 / 3, 62.5));
}

TEST(SourceListing, CounterLinesStandUnderTheirCharacters)
{
    ListingCase c("\tif (p) q(r);\n"
                  "  g();\n"
                  "h(); }\n", "dir/sub/counts.c");
    for (int i = 0; i < 8; ++i)           // ten blocks, eight ran
        c.Block(1, 2, 125);
    c.Block(1, 2, 0);
    c.Block(1, 2, 0);
    c.Block(1, 5, 4);                     // three blocks that all ran
    c.Block(1, 5, 4);
    c.Block(1, 5, 4);
    c.Block(1, 13, 7);                    // one block
    c.Block(2, 3, NEVER_EXECUTED);        // shows 0
    c.Block(3, 1, 1234567);
    c.Block(3, 1, 0);                     // two blocks, one ran
    c.Block(3, 6, 0);                     // a label's width away
    c.Block(3, 6, 0);
    std::string listing = c.Listing(Counts());
    EXPECT_EQ(Head("counts.c") +
                  Open(1, kPartial) + "\tif " + Change(kCovered) + "(p) q(r);</a>\n" +
                  // The second label is too close to the first: a line of its own,
                  // where the third one still fits beside it.
                  CounterLine("\t^ 1,000 (8/10)") + CounterLine("\t   ^ 12 (3)^ 7 ") +
                  Open(2, kUncoveredFunction) + "  g();</a>\n" + CounterLine("  ^ 0 ") +
                  Open(3, kPartial) + "h(); " + Change(kUncoveredBlock) + "}</a>\n" +
                  CounterLine("^ 1,234,567 (1/2)") + CounterLine("     ^ 0 (2)") + Foot(),
              listing);
}

TEST(SourceListing, LabelsShareALineFromTheirOwnWidthOn)
{
    ListingCase c("abcdefgh\n");
    c.Block(1, 1, 5);   // "^ 5 " is four wide
    c.Block(1, 5, 6);   // exactly four further: same line, no blank between
    c.Block(1, 8, 7);   // three further than "^ 6 ": next line
    EXPECT_EQ(Head("demo.cpp") + Open(1, kCovered) + "abcdefgh</a>\n" + CounterLine("^ 5 ^ 6 ") +
                  CounterLine("       ^ 7 ") + Foot(),
              c.Listing(Counts()));
}

TEST(SourceListing, CounterLinesTakeTheInformationColourOrFloat)
{
    ColourGuard guard;
    SetBGColor(COLOR_INFO, "#eeeeee");
    ListingCase c("x(y);\nz;\n");
    c.Block(1, 1, 3);
    c.Block(1, 3, 0);   // the line ends uncovered
    std::string lines = Open(1, kCovered) + "x(" + Change(kUncoveredBlock) + "y);</a>\n";
    EXPECT_EQ(Head("demo.cpp") + lines + CounterLine("^ 3 ", "#eeeeee") + CounterLine("  ^ 0 ", "#eeeeee") + Open(2, kUncoveredBlock) +
                  "z;</a>\n" + Foot(),
              c.Listing(Counts()));
    ListingOptions floating = Counts();
    floating.floatingInfo = true;
    EXPECT_EQ(Head("demo.cpp") + lines + CounterLine("^ 3 ", kUncoveredBlock) +
                  CounterLine("  ^ 0 ", kUncoveredBlock) + Open(2, kUncoveredBlock) +
                  "z;</a>\n" + Foot(),
              c.Listing(floating));
}

TEST(SourceListing, MarkerLineGrowsForLongLinesAndLastLineGetsNoCounters)
{
    ListingCase c(std::string(3000, 'x') + "\n" + "tail;");
    c.Block(1, 2500, 1);
    c.Block(1, 2999, 2);
    c.Block(2, 1, 3);
    EXPECT_EQ(Head("demo.cpp") + Open(1, kCovered) + std::string(3000, 'x') + "</a>\n" +
                  CounterLine(std::string(2499, ' ') + "^ 1 " + std::string(495, ' ') + "^ 2 ") +
                  Open(2, kCovered) + "tail;" + Foot(),
              c.Listing(Counts()));
}

}  // namespace
