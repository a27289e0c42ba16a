// The block list of the full block files where the golden cases cannot
// reach: the list's order on many random lists, and the
// single-precision counts and frequency.
#include <algorithm>
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

// The list is ordered by position and, among blocks at one position, the
// one added last comes first: checked against that rule on random lists,
// mostly ascending (as compilers lay blocks out), shuffled, and crowded onto
// a few positions.
TEST(BlockFiles, ListOrderedByPositionNewestFirstAtEachPosition)
{
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        int n = 1 + round % 70;
        std::vector<blocks> array(n);
        std::vector<std::tuple<int, int, int, double>> expected;  // line, col, -index, count
        blocks *head = nullptr;
        int line = 1;
        for (int i = 0; i < n; ++i) {
            if (round % 3 == 0)
                line += static_cast<int>(random() % 5) - 1;
            else
                line = 1 + static_cast<int>(random() % (round % 3 == 1 ? 1000 : 3));
            int col = 1 + static_cast<int>(random() % 3);
            head = add_block_cov(line, col, i, array.data(), head, i);
            expected.emplace_back(line, col, -i, i);
        }
        std::sort(expected.begin(), expected.end());
        std::vector<std::tuple<int, int, double>> want;
        for (const auto &[l, c, order, count] : expected)
            want.emplace_back(l, c, count);
        ASSERT_EQ(ListOf(sort_block_list(head)), want) << "round " << round;
    }
    EXPECT_EQ(sort_block_list(nullptr), nullptr);
}

TEST(BlockFiles, CountsAndFrequencyInSinglePrecision)
{
    std::vector<blocks> array(3);
    blocks *head = add_block_cov(1, 1, 0, array.data(), nullptr, 0);
    head = add_block_cov(2, 1, static_cast<float>(16777217ull), array.data(), head, 1);
    head = add_block_cov(3, 1, 1e13, array.data(), head, 2);
    EXPECT_EQ(TextOf(sort_block_list(head)), "1\t1\t1\t           0\n"
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
