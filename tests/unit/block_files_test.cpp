// The block list of the full block files: its order, its text records and
// the single-precision counts and frequency; the XML escapes. (The records of
// the files themselves are compared by the full_block_files golden cases.)
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/block_files.h"
#include "analysis/xml_escape.h"
#include "tests/support/memory_stream.h"

namespace {

struct Pos {
    int line, col;
    double count;
    bool operator==(const Pos &o) const { return line == o.line && col == o.col && count == o.count; }
};

std::vector<Pos> ListOf(const blocks *head)
{
    std::vector<Pos> out;
    for (; head != nullptr; head = head->next)
        out.push_back({head->line, head->col, head->freq});
    return out;
}

std::string TextOf(blocks *head)
{
    testsupport::MemoryStream out;
    EXPECT_TRUE(printTXT_bcov_full(out.stream(), head));
    return out.text();
}

}  // namespace

TEST(BlockFiles, ListIsOrderedWithTheLatestFirstAmongEquals)
{
    std::vector<blocks> array(6);
    blocks *head = nullptr;
    int index = 0;
    for (Pos p : std::vector<Pos>{{5, 2, 1}, {3, 9, 2}, {5, 1, 3}, {5, 2, 4}, {3, 9, 5}, {7, 1, 6}})
        head = add_block_cov(p.line, p.col, p.count, array.data(), head, index++);
    EXPECT_EQ(ListOf(head), (std::vector<Pos>{{3, 9, 5}, {3, 9, 2}, {5, 1, 3}, {5, 2, 4}, {5, 2, 1}, {7, 1, 6}}));
    EXPECT_EQ(head, &array[4]);  // slots are the block indexes
    EXPECT_EQ(TextOf(head), "1\t3\t9\t           5\n"
                            "2\t3\t9\t           2\n"
                            "1\t5\t1\t           3\n"
                            "1\t5\t2\t           4\n"
                            "2\t5\t2\t           1\n"
                            "1\t7\t1\t           6\n");
    EXPECT_EQ(TextOf(nullptr), "");
}

TEST(BlockFiles, HintedInsertionBuildsTheSameList)
{
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        int n = 1 + round % 40;
        std::vector<blocks> plain(n), hinted(n);
        blocks *plainHead = nullptr, *hintedHead = nullptr, *last = nullptr;
        int line = 1;
        for (int i = 0; i < n; ++i) {
            // Mostly ascending, with repeats and steps back.
            line += static_cast<int>(random() % 5) - 1;
            int col = 1 + static_cast<int>(random() % 3);
            plainHead = add_block_cov(line, col, i, plain.data(), plainHead, i);
            hintedHead = add_block_cov(line, col, i, hinted.data(), hintedHead, i, &last);
        }
        ASSERT_EQ(ListOf(plainHead), ListOf(hintedHead)) << "round " << round;
    }
}

TEST(BlockFiles, CountsAndFrequencyInSinglePrecision)
{
    std::vector<blocks> array(3);
    blocks *head = add_block_cov(1, 1, 0, array.data(), nullptr, 0);
    head = add_block_cov(2, 1, static_cast<float>(16777217ull), array.data(), head, 1);
    head = add_block_cov(3, 1, 1e13, array.data(), head, 2);
    EXPECT_EQ(TextOf(head), "1\t1\t1\t           0\n"
                            "1\t2\t1\t    16777216\n"
                            "1\t3\t1\t10000000000000\n");

    // The entry blocks' counts summed as floats: 2^24 + 1 + 1 stays 2^24.
    DPI_BLOCK counts[3] = {};
    counts[0].count = 16777216;
    counts[1].count = 1;
    counts[2].count = 5;
    uint32_t entries[4] = {0, 1, 1, 7};  // the last index is out of range
    DPI_S segment = {};
    segment.block_cnt = 3;
    segment.blocks = counts;
    segment.entry_cnt = 4;
    segment.entry_index = entries;
    char text[FREQUENCY_TEXT_SIZE];
    EXPECT_STREQ(functionFrequencyText(&segment, text), "16777216");
    segment.entry_cnt = 0;
    EXPECT_STREQ(functionFrequencyText(&segment, text), "0");
}

TEST(BlockFiles, EscapeXML)
{
    testsupport::MemoryStream out;
    escapeXML(out.stream(), "a\"b&c'd<e>f\x01\xff");
    escapeXML(out.stream(), "");
    escapeXML(out.stream(), nullptr);
    EXPECT_EQ(out.text(), "a&quot;b&amp;c&apos;d&lt;e&gt;f\x01\xff");
}
