// Coverage store: line counting, position merging, fetch limits, a missing
// source, and the file list with its split into covered and uncovered files.
// (The -nopartial hand-back of the unexecuted counter is proved through
// markBlocks in coverage_test.)
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/coverage_store.h"
#include "analysis/line_count.h"
#include "tests/support/capture.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scratch_dir.h"

namespace {

struct Fetched {
    bool found;
    uint64_t count;
    bool newFunction;
    uint32_t blocks, executed;
};

Fetched Fetch(coverage_list &store, uint32_t line, uint32_t col)
{
    Fetched f{};
    bool adjusted = true;
    f.found = store.bFetchHitCount(line, col, &f.count, false, &f.newFunction, &f.blocks, &f.executed, &adjusted);
    EXPECT_FALSE(adjusted);
    return f;
}

}  // namespace

// The lines are counted whatever the last byte; the bytes read for it are
// kept for the listing, unless the file is too large to hold.
TEST(CoverageStore, LineSlotsCountLinesWhateverTheLastByte)
{
    testsupport::ScratchDir dir;
    auto slotsOf = [&](const std::string &bytes) {
        EXPECT_TRUE(testsupport::WriteBytes(dir.path("s.c"), bytes));
        coverage_list store;
        EXPECT_TRUE(store.bSetName(dir.path("s.c").c_str()));
        size_t size = 0;
        const char *kept = store.currentSourceBytes(&size);
        if (bytes.size() < SOURCE_KEPT_BELOW)
            EXPECT_TRUE(kept != nullptr && std::string(kept, size) == bytes) << bytes.size();
        else
            EXPECT_EQ(nullptr, kept);
        return store.currentFile->lineSlots;
    };
    EXPECT_EQ(slotsOf(""), 1u);
    EXPECT_EQ(slotsOf("\n"), 2u);
    EXPECT_EQ(slotsOf("a\nb\nc\n"), 4u);
    EXPECT_EQ(slotsOf("a\nb\nc"), 4u);
    EXPECT_EQ(slotsOf(std::string("\0\xff\n\0", 4)), 3u);  // any byte is a character
    // A megabyte on one line, crossing the read buffer's edge.
    EXPECT_EQ(slotsOf(std::string(1 << 20, 'x') + "\n" + std::string(70000, 'y')), 3u);
    // Too large to keep: counted as it is read.
    EXPECT_EQ(slotsOf(std::string(SOURCE_KEPT_BELOW, '\n') + "z"), SOURCE_KEPT_BELOW + 2);
    // Newlines counted sixteen bytes at a time: dense runs longer than a
    // lane's count can hold before it is summed, and ragged ends.
    for (size_t length : {15, 16, 17, 4079, 4080, 4081, 70001}) {
        std::string bytes;
        size_t newlines = 0;
        for (size_t i = 0; i < length; ++i) {
            bool newline = i % 7 == 0 || (i > 3000 && i < 12000);
            bytes += newline ? '\n' : 'x';
            newlines += newline;
        }
        EXPECT_EQ(countNewlines(bytes.data(), bytes.size()), newlines) << length;
        EXPECT_EQ(slotsOf(bytes), newlines + (bytes.back() != '\n') + 1) << length;
    }
}

TEST(CoverageStore, MissingSourceWarnsAndTakesNoBlocks)
{
    testsupport::Captured run = testsupport::CaptureInChild([] {
        coverage_list store;
        bool opened = store.bSetName("/nonexistent/m.c");
        printf("[%d %d]", opened, store.currentFile->lineTable == nullptr);
        printf("[%d]", store.bSetName("/nonexistent/other.c"));  // the installed node stays
        bool added = store.bAddBlockCount("/nonexistent/m.c", 1, 1, 3, false, nullptr);
        uint64_t count = 9;
        bool fetched = store.bFetchHitCount(1, 1, &count, false, nullptr, nullptr, nullptr, nullptr);
        printf("[%d %d %llu]", added, fetched, (unsigned long long)count);
        store.deleteCurrentFile();
        // Without a current file, the implicit open reports the same way.
        printf("[%d]", store.bAddBlockCount("/nonexistent/x.c", 2, 1, 1, false, nullptr));
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "\nWarning - File /nonexistent/m.c not found!\n[0 1][1][0 0 0]"
                       "\nWarning - File /nonexistent/x.c not found!\n[0]");
    EXPECT_EQ(run.err, "");
}

TEST(CoverageStore, PositionsMergeCountsAndTallies)
{
    testsupport::ScratchDir dir;
    ASSERT_TRUE(testsupport::WriteBytes(dir.path("m.c"), "l1\nl2\nl3\n"));  // lineSlots 4
    coverage_list store;
    // The first block opens the table itself.
    ASSERT_TRUE(store.bAddBlockCount(dir.path("m.c").c_str(), 2, 5, 0, false, nullptr));
    ASSERT_TRUE(store.bAddBlockCount(nullptr, 2, 5, 5, true, nullptr));
    Fetched f = Fetch(store, 2, 5);
    EXPECT_TRUE(f.found && f.newFunction);
    EXPECT_EQ(f.count, 5u);
    EXPECT_EQ(f.blocks, 2u);
    EXPECT_EQ(f.executed, 1u);
    EXPECT_EQ(store.currentFile->lineTable[2]->numUnexecuted, 1u);
    // A later block of an old function leaves the position new.
    ASSERT_TRUE(store.bAddBlockCount(nullptr, 2, 5, 1, false, nullptr));
    EXPECT_TRUE(Fetch(store, 2, 5).newFunction);

    // The never-executed marker fills only an empty count, counts as
    // executed, and gives way to any real count.
    store.bAddBlockCount(nullptr, 1, 1, 7, false, nullptr);
    store.bAddBlockCount(nullptr, 1, 1, NEVER_EXECUTED, false, nullptr);
    EXPECT_EQ(Fetch(store, 1, 1).count, 7u);
    store.bAddBlockCount(nullptr, 3, 2, NEVER_EXECUTED, false, nullptr);
    EXPECT_EQ(Fetch(store, 3, 2).count, NEVER_EXECUTED);
    EXPECT_EQ(Fetch(store, 3, 2).executed, 1u);
    store.bAddBlockCount(nullptr, 3, 2, 7, false, nullptr);
    EXPECT_EQ(Fetch(store, 3, 2).count, 7u);
    store.bAddBlockCount(nullptr, 3, 3, 0, false, nullptr);
    store.bAddBlockCount(nullptr, 3, 3, NEVER_EXECUTED, false, nullptr);
    EXPECT_EQ(Fetch(store, 3, 3).count, NEVER_EXECUTED);
    // Counts add with 64-bit wrap.
    store.bAddBlockCount(nullptr, 3, 4, 0xFFFFFFFFFFFFFFF0ull, false, nullptr);
    store.bAddBlockCount(nullptr, 3, 4, 0x20, false, nullptr);
    EXPECT_EQ(Fetch(store, 3, 4).count, 0x10u);

    // Positions of one line stay in insertion order, whatever the column.
    std::vector<uint32_t> columns;
    for (const block_list_node *n = store.currentFile->lineTable[3]; n != nullptr; n = n->next)
        columns.push_back(n->column);
    EXPECT_EQ(columns, (std::vector<uint32_t>{2, 3, 4}));

    store.deleteCurrentFile();
    EXPECT_FALSE(Fetch(store, 2, 5).found);
}

TEST(CoverageStore, LineZeroBeyondTheEndAndTheLastSlot)
{
    testsupport::ScratchDir dir;
    ASSERT_TRUE(testsupport::WriteBytes(dir.path("m.c"), "a\nb"));  // lineSlots 3
    coverage_list store;
    ASSERT_TRUE(store.bSetName(dir.path("m.c").c_str()));

    uint32_t *unexecuted = reinterpret_cast<uint32_t *>(1);
    EXPECT_TRUE(store.bAddBlockCount(nullptr, 0, 4, 9, false, &unexecuted));
    EXPECT_EQ(unexecuted, reinterpret_cast<uint32_t *>(1));  // untouched: nothing stored
    EXPECT_FALSE(Fetch(store, 0, 4).found);
    // Elsewhere it is reset first, and stays null while nothing ran there.
    EXPECT_TRUE(store.bAddBlockCount(nullptr, 2, 1, 0, false, &unexecuted));
    EXPECT_EQ(unexecuted, nullptr);

    // Beyond lineSlots: collapses to (1, 1).
    EXPECT_TRUE(store.bAddBlockCount(nullptr, 4, 7, 2, false, nullptr));
    EXPECT_TRUE(store.bAddBlockCount(nullptr, 1000, 1, 3, false, nullptr));
    EXPECT_EQ(Fetch(store, 1, 1).count, 5u);
    EXPECT_EQ(Fetch(store, 1, 1).blocks, 2u);

    // Line lineSlots is stored in its own slot but never fetched.
    EXPECT_TRUE(store.bAddBlockCount(nullptr, 3, 2, 6, false, nullptr));
    ASSERT_NE(store.currentFile->lineTable[3], nullptr);
    EXPECT_EQ(store.currentFile->lineTable[3]->count, 6u);
    Fetched last = Fetch(store, 3, 2);
    EXPECT_FALSE(last.found);
    EXPECT_EQ(last.count + last.blocks, 0u);
}

TEST(CoverageStore, FileListKeepsFirstRegistrationAndSplitsByFlags)
{
    testsupport::ScratchDir dir;
    ASSERT_TRUE(testsupport::WriteBytes(dir.path("a.c"), "int a;\n"));
    coverage_list store;
    int coveredCount = 5, uncoveredCount = 5;
    filename_list_node **covered = nullptr, **uncovered = nullptr;
    for (const std::string &path : {dir.path("a.c"), std::string("/nonexistent/b.c"), std::string("/nonexistent/c.c")}) {
        ASSERT_TRUE(store.bAddFilename(path.c_str()));
        store.fileListTail->fileFlags |= store.fileCount == 2 ? FILE_UNCOVERED : FILE_UNCOVERED | FILE_COVERED;
    }
    filename_list_node *a = store.fileListHead, *b = a->next, *c = store.fileListTail;
    // Registering again changes nothing, not even the tail.
    ASSERT_TRUE(store.bAddFilename(dir.path("a.c").c_str()));
    EXPECT_EQ(store.fileCount, 3u);
    EXPECT_EQ(store.fileListTail, c);
    EXPECT_EQ(a->fileFlags, FILE_READABLE | FILE_UNCOVERED | FILE_COVERED);
    EXPECT_EQ(b->fileFlags, FILE_UNCOVERED);

    b->fileFlags = 0;
    EXPECT_EQ(store.uiGetFilenames(&coveredCount, &covered, &uncoveredCount, &uncovered), 2);
    ASSERT_EQ(coveredCount, 2);
    ASSERT_EQ(uncoveredCount, 2);
    EXPECT_TRUE(covered[0] == a && covered[1] == c && uncovered[0] == a && uncovered[1] == c);
    free(covered);
    free(uncovered);
    a->fileFlags = c->fileFlags = 0;
    EXPECT_EQ(store.uiGetFilenames(&coveredCount, &covered, &uncoveredCount, &uncovered), 0);
    EXPECT_TRUE(coveredCount == 0 && covered == nullptr && uncovered == nullptr);
}
