// Full block files: the block list order, the exact records, the function
// frequency and the XML escapes.
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/block_files.h"
#include "analysis/coverage_state.h"
#include "analysis/xml_escape.h"

namespace {

// What `write` prints to a stream.
std::string Printed(const std::function<void(FILE *)> &write)
{
    char *data = nullptr;
    size_t size = 0;
    FILE *out = open_memstream(&data, &size);
    write(out);
    fclose(out);
    std::string text(data, size);
    free(data);
    return text;
}

struct Pos {
    int line, col;
    double count;
};

std::vector<Pos> ListOf(const blocks *head)
{
    std::vector<Pos> out;
    for (; head != nullptr; head = head->next)
        out.push_back({head->line, head->col, head->freq});
    return out;
}

bool operator==(const Pos &a, const Pos &b)
{
    return a.line == b.line && a.col == b.col && a.count == b.count;
}

}  // namespace

TEST(BlockFiles, ListIsOrderedWithTheLatestFirstAmongEquals)
{
    std::vector<blocks> array(6);
    blocks *head = nullptr;
    head = add_block_cov(5, 2, 1, array.data(), head, 0);
    head = add_block_cov(3, 9, 2, array.data(), head, 1);
    head = add_block_cov(5, 1, 3, array.data(), head, 2);
    head = add_block_cov(5, 2, 4, array.data(), head, 3);
    head = add_block_cov(3, 9, 5, array.data(), head, 4);
    head = add_block_cov(7, 1, 6, array.data(), head, 5);
    EXPECT_EQ(ListOf(head), (std::vector<Pos>{{3, 9, 5}, {3, 9, 2}, {5, 1, 3}, {5, 2, 4}, {5, 2, 1}, {7, 1, 6}}));
    EXPECT_EQ(head, &array[4]);  // slots are the block indexes

    EXPECT_EQ(Printed([&](FILE *out) { EXPECT_TRUE(printTXT_bcov_full(out, head)); }),
              "1\t3\t9\t           5\n"
              "2\t3\t9\t           2\n"
              "1\t5\t1\t           3\n"
              "1\t5\t2\t           4\n"
              "2\t5\t2\t           1\n"
              "1\t7\t1\t           6\n");
    EXPECT_EQ(Printed([&](FILE *out) { EXPECT_TRUE(printXML_bcov_full(out, head)); }),
              "<BLOCK line=\"3\" col=\"9\">\n"
              "<INSTANCE id=\"1\" freq=\"           5\">\n</INSTANCE>\n"
              "<INSTANCE id=\"2\" freq=\"           2\">\n</INSTANCE>\n"
              "</BLOCK>\n"
              "<BLOCK line=\"5\" col=\"1\">\n<INSTANCE id=\"1\" freq=\"           3\">\n</INSTANCE>\n</BLOCK>\n"
              "<BLOCK line=\"5\" col=\"2\">\n"
              "<INSTANCE id=\"1\" freq=\"           4\">\n</INSTANCE>\n"
              "<INSTANCE id=\"2\" freq=\"           1\">\n</INSTANCE>\n"
              "</BLOCK>\n"
              "<BLOCK line=\"7\" col=\"1\">\n<INSTANCE id=\"1\" freq=\"           6\">\n</INSTANCE>\n</BLOCK>\n");
    // An empty list writes nothing.
    EXPECT_EQ(Printed([](FILE *out) { printTXT_bcov_full(out, nullptr); printXML_bcov_full(out, nullptr); }), "");
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

TEST(BlockFiles, CountsPrintAsWholeNumbersInTwelveColumns)
{
    std::vector<blocks> array(3);
    blocks *head = add_block_cov(1, 1, 0, array.data(), nullptr, 0);
    head = add_block_cov(2, 1, static_cast<float>(16777217ull), array.data(), head, 1);
    head = add_block_cov(3, 1, 1e13, array.data(), head, 2);
    EXPECT_EQ(Printed([&](FILE *out) { printTXT_bcov_full(out, head); }),
              "1\t1\t1\t           0\n"
              "1\t2\t1\t    16777216\n"  // single precision
              "1\t3\t1\t10000000000000\n");
}

TEST(BlockFiles, FrequencySumsEntryBlocksInSinglePrecision)
{
    DPI_BLOCK blocks3[3] = {};
    blocks3[0].count = 16777216;
    blocks3[1].count = 1;
    blocks3[2].count = 5;
    uint32_t entries[4] = {0, 1, 1, 7};  // the last index is out of range
    DPI_S segment = {};
    segment.block_cnt = 3;
    segment.blocks = blocks3;
    segment.entry_cnt = 4;
    segment.entry_index = entries;
    char text[FREQUENCY_TEXT_SIZE];
    // 2^24 + 1 + 1 stays 2^24 in single precision.
    EXPECT_STREQ(functionFrequencyText(&segment, text), "16777216");
    segment.entry_cnt = 0;
    EXPECT_STREQ(functionFrequencyText(&segment, text), "0");
    entries[0] = 2;
    segment.entry_cnt = 1;
    EXPECT_STREQ(functionFrequencyText(&segment, text), "5");
    blocks3[2].count = UINT64_MAX;
    EXPECT_EQ(functionFrequency(&segment), UINT64_MAX);
}

TEST(BlockFiles, RecordsOfTheFullFiles)
{
    std::vector<blocks> array(1);
    blocks *head = add_block_cov(4, 2, 3, array.data(), nullptr, 0);
    std::string xml;
    std::string txt = Printed([&](FILE *t) {
        xml = Printed([&](FILE *x) {
            writeFullModuleOpen(t, x, "/src/a<b>.c");
            writeFullFunctionOpen(t, x, "f<int>(\"q\")", "12");
            writeFullFunctionBlocks(t, x, head);
            writeFullNeverCalled(t, x, "g&h", 17);
            writeFullModuleClose(x);
        });
    });
    EXPECT_EQ(txt,
              "file - /src/a<b>.c\n"
              "function - f<int>(\"q\")\t12\n"
              "1\t4\t2\t           3\n"
              "function - g&h\t0\n");
    EXPECT_EQ(xml,
              "<MODULE name = \"/src/a&lt;b&gt;.c\">\n"
              "<FUNCTION name=\"f&lt;int&gt;(&quot;q&quot;)\" freq=\"12\">\n"
              "<BLOCK line=\"4\" col=\"2\">\n<INSTANCE id=\"1\" freq=\"           3\">\n</INSTANCE>\n</BLOCK>\n"
              "</FUNCTION>\n"
              "<FUNCTION name=\"g&amp;h\" freq=\"0\" line=\"17\"></FUNCTION>\n"
              "</MODULE>\n");
    // Absent streams are skipped.
    writeFullModuleOpen(nullptr, nullptr, "x");
    writeFullFunctionBlocks(nullptr, nullptr, head);
}

TEST(BlockFiles, EscapeXML)
{
    EXPECT_EQ(Printed([](FILE *out) { escapeXML(out, "a\"b&c'd<e>f\x01\xff"); }),
              "a&quot;b&amp;c&apos;d&lt;e&gt;f\x01\xff");
    EXPECT_EQ(Printed([](FILE *out) { escapeXML(out, "<<"); escapeXML(out, ""); escapeXML(out, nullptr); }),
              "&lt;&lt;");
}

TEST(BlockFiles, BlockArrayIsReplacedUnlessStrictlyLarger)
{
    ensureBlockArray(4);
    blocks *first = lb_blockNum;
    EXPECT_EQ(s_blockNum, 4u);
    ensureBlockArray(3);
    EXPECT_EQ(lb_blockNum, first);
    EXPECT_EQ(s_blockNum, 4u);
    ensureBlockArray(4);  // equal: a new array of exactly 4
    EXPECT_EQ(s_blockNum, 4u);
    ensureBlockArray(0);
    EXPECT_NE(lb_blockNum, nullptr);
    ensureBlockArray(9);
    EXPECT_EQ(s_blockNum, 9u);
    lb_blockNum[8].line = 1;  // every slot is usable
    free(lb_blockNum);
    lb_blockNum = nullptr;
    s_blockNum = 0;
}
