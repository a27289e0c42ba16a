// The annotated listing where the end-to-end pages cannot reach: the
// look-ahead limit, an infeasible line's positions, counter labels and their
// spacing, the information colour, a long marker line, positions past a
// line's end, line numbers past 999999, the adjusted last block, and lines
// with and without positions across the reading buffer. Pages are compared
// from "<pre>" on.
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/comment_parser.h"
#include "analysis/coverage_state.h"
#include "report/colors.h"
#include "analysis/coverage_store.h"
#include "report/source_listing.h"
#include "report/source_reader.h"
#include "tests/support/listing_text.h"
#include "tests/support/memory_stream.h"
#include "tests/support/scenario.h"
#include "tests/support/scratch_dir.h"

using testsupport::MemoryStream;

namespace {

// One source file in the store, with its recorded positions.
class ListingCase {
public:
    explicit ListingCase(const std::string &bytes) : path_(dir_.path("demo.c"))
    {
        FILE *f = fopen(path_.c_str(), "wb");
        fwrite(bytes.data(), 1, bytes.size(), f);
        fclose(f);
        EXPECT_TRUE(store_.bSetName(path_.c_str()));
    }

    void Block(uint32_t line, uint32_t column, uint64_t count)
    {
        EXPECT_TRUE(store_.bAddBlockCount(path_.c_str(), line, column, count, false, nullptr));
    }

    std::string Label(uint32_t line, uint32_t column)
    {
        char label[COUNTER_LABEL_MAX];
        return std::string(label, counterLabel(label, store_, line, column));
    }

    // The listed lines, with -counts unless told: the page after
    // "<pre>\n", up to the foot. With `kept`, from the bytes the store
    // kept when it counted the lines, else read from the file.
    std::string Lines(const parser *infeasible = nullptr, bool counts = true, bool kept = false)
    {
        ListingSource file{path_.c_str(), 0.0, 0.0, &store_, infeasible, nullptr};
        if (kept) {
            file.bytes = store_.currentSourceBytes(&file.size);
            EXPECT_NE(nullptr, file.bytes);
        }
        ListingOptions options{counts, false, false, "nobody", "Nobody"};
        FILE *source = fopen(path_.c_str(), "r");
        MemoryStream page;
        MarkerLine marker;
        markerLineCreate(&marker);
        std::vector<char> buffer;
        EXPECT_TRUE(writeSourceListing(page.stream(), source, file, options, &marker, buffer));
        markerLineFree(&marker);
        fclose(source);
        std::string text = page.text();
        size_t start = text.find("<pre>\n") + 6;
        return text.substr(start, text.find("</pre>\n") - start);
    }

    const std::string &path() const { return path_; }

private:
    testsupport::ScratchDir dir_;
    std::string path_;
    coverage_list store_;
};

TEST(SourceListing, LooksPastAtMost255LeadingBlanks)
{
    ListingCase c(std::string(254, ' ') + "x\n" + std::string(300, ' ') + "y\n");
    c.Block(1, 255, 0);   // where the text begins: the line opens in its colour
    c.Block(2, 256, 7);   // after 255 blanks, where the look-ahead stops
    c.Block(2, 301, 0);   // beyond it: a change inside the line
    testsupport::ExpectSameAsFile("listing_look_ahead.html", c.Lines());
}

TEST(SourceListing, InfeasibleLineFollowsItsPositionsUnseen)
{
    ListingCase c("a;\nb; /* off */ c;\nd;\n");
    std::vector<std::string> oneLine{"off"}, none;
    parser infeasible(c.path().c_str(), oneLine, none, none);
    ASSERT_TRUE(infeasible.is_disabled_line(2));
    c.Block(1, 1, 1);
    c.Block(2, 14, 1);   // partial, on the infeasible line: no change, no marker
    c.Block(2, 14, 0);
    testsupport::ExpectSameAsFile("listing_infeasible_line.html", c.Lines(&infeasible));
}

TEST(SourceListing, PositionsPastTheLineEndAreNotShown)
{
    ListingCase c("ab\ncd\n");
    c.Block(1, 1, 1);
    c.Block(1, 9, 0);   // past the end of "ab\n": no colour change, no marker
    c.Block(2, 3, 0);   // on the newline itself: shown
    testsupport::ExpectSameAsFile("listing_past_line_end.html", c.Lines());
}

TEST(SourceListing, CounterLabels)
{
    ListingCase c("abcdef\n");
    c.Block(1, 1, 7);                      // one block
    for (int i = 0; i < 3; ++i)            // three blocks that all ran
        c.Block(1, 2, 4);
    c.Block(1, 3, 0);                      // two blocks, none ran
    c.Block(1, 3, 0);
    for (int i = 0; i < 10; ++i)           // ten blocks, eight ran
        c.Block(1, 4, i < 8 ? 125 : 0);
    c.Block(1, 5, NEVER_EXECUTED);         // a function never called
    c.Block(1, 5, NEVER_EXECUTED);
    c.Block(1, 6, 1234567);
    EXPECT_EQ("^ 7 ", c.Label(1, 1));
    EXPECT_EQ("^ 12 (3)", c.Label(1, 2));
    EXPECT_EQ("^ 0 (2)", c.Label(1, 3));
    EXPECT_EQ("^ 1,000 (8/10)", c.Label(1, 4));
    EXPECT_EQ("^ 0 (2)", c.Label(1, 5));
    EXPECT_EQ("^ 1,234,567 ", c.Label(1, 6));
}

TEST(SourceListing, LabelsShareALineFromTheirOwnWidthOnInTheInformationColour)
{
    const char *saved = BGColor[COLOR_INFO];
    SetBGColor(COLOR_INFO, "#eeeeee");
    ListingCase c("abcdefgh\n");
    c.Block(1, 1, 5);   // "^ 5 " is four wide
    c.Block(1, 5, 6);   // exactly four further: the same counter line
    c.Block(1, 8, 7);   // three further than "^ 6 ": the next one
    testsupport::ExpectSameAsFile("listing_shared_counter_line.html", c.Lines());
    BGColor[COLOR_INFO] = saved;
}

TEST(SourceListing, MarkerLineGrowsPastItsFirstSize)
{
    ListingCase c(std::string(3000, 'x') + "\n");
    c.Block(1, 2500, 1);
    c.Block(1, 2999, 2);
    testsupport::ExpectSameAsFile("listing_long_marker_line.html", c.Lines());
}

// A line without recorded positions is copied as it is read, one with
// positions in pieces between them: the same text either way, whether read
// from the file or from the bytes kept when the lines were counted, for
// lines across the reading buffer and longer than it, markup characters
// anywhere, and a last line cut by a byte 0xFF.
TEST(SourceListing, ALineReadsTheSameWithOrWithoutPositions)
{
    std::vector<std::string> lines;
    std::string bytes;
    for (int i = 0; bytes.size() < 2 * SOURCE_READ_CHUNK; ++i) {
        std::string line(i == 40 ? SOURCE_READ_CHUNK + 100 : 1 + (i * 7919) % 3000, static_cast<char>('a' + i % 26));
        for (size_t at = i % 17; at < line.size(); at += 13 + i % 7)
            line[at] = "<>&\"\t"[at % 5];
        lines.push_back(line + "\n");
        bytes += lines.back();
    }
    lines.push_back("last <line>");
    bytes += lines.back() + "\xff rest\n";

    // Each line as the page shows it, escaped here one byte at a time.
    std::string expected;
    for (size_t n = 1; n <= lines.size(); ++n) {
        expected += std::string(n < 10 ? "     " : n < 100 ? "    " : "   ") + std::to_string(n) + ") <a name=\"l" +
                    std::to_string(n) + "\" style=\"background-color: #ffffff\">" +
                    testsupport::ListingText(lines[n - 1]);
    }

    ListingCase plain(bytes);
    EXPECT_TRUE(plain.Lines(nullptr, false) == expected);
    EXPECT_TRUE(plain.Lines(nullptr, false, true) == expected);
    // A covered position where each line begins: the same colour as the
    // one in force, so no change shows.
    ListingCase positioned(bytes);
    for (uint32_t n = 1; n <= lines.size(); ++n)
        positioned.Block(n, 1, 1);
    EXPECT_TRUE(positioned.Lines(nullptr, false) == expected);
    EXPECT_TRUE(positioned.Lines(nullptr, false, true) == expected);
}

TEST(SourceListing, NumbersLinesUpTo999999)
{
    for (uint32_t line : {1u, 999999u, 1000000u, 4294967295u}) {
        MemoryStream page;
        writeLineNumber(page.stream(), line);
        EXPECT_EQ(line == 1 ? "     1) " : "999999) ", page.text()) << line;
    }
}

TEST(SourceListing, AnAdjustedLastBlockThatDidNotRunLeavesThePositionCovered)
{
    EXPECT_EQ(COLOR_COVERED, classifyPosition(5, 3, 2, true, false, false));
    EXPECT_EQ(COLOR_PARTIAL, classifyPosition(5, 3, 1, true, false, false));
    EXPECT_EQ(COLOR_PARTIAL, classifyPosition(5, 3, 2, false, false, false));
}

}  // namespace
