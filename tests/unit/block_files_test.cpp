// The block list of the full block files where the golden cases cannot
// reach: the hinted insertion against the plain one on many lists, and the
// single-precision counts and frequency.
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/block_files.h"
#include "tests/support/memory_stream.h"

namespace {

// The list as (line, column, count) triples.
std::vector<std::tuple<int, int, double>> ListOf(const blocks *head)
{
    std::vector<std::tuple<int, int, double>> out;
    for (; head != nullptr; head = head->next)
        out.emplace_back(head->line, head->col, head->freq);
    return out;
}

std::string TextOf(blocks *head)
{
    testsupport::MemoryStream out;
    EXPECT_TRUE(printTXT_bcov_full(out.stream(), head));
    return out.text();
}

}  // namespace

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
