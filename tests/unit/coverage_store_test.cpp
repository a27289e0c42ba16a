// Coverage store: line counting, position merging, fetch limits, the file
// list and its split into covered and uncovered files.
#include <cstdio>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "report/coverage_store.h"
#include "tests/support/capture.h"

using testsupport::CaptureInChild;
using testsupport::Captured;

namespace {

std::string TempSource(const std::string &name, const std::string &bytes)
{
    std::string path = "/tmp/vemcov-store-" + std::to_string(getpid()) + "-" + name;
    FILE *f = fopen(path.c_str(), "wb");
    fwrite(bytes.data(), 1, bytes.size(), f);
    fclose(f);
    return path;
}

uint32_t SlotsOf(const std::string &bytes)
{
    std::string path = TempSource("slots.c", bytes);
    coverage_list store;
    EXPECT_TRUE(store.bSetName(path.c_str()));
    uint32_t slots = store.currentFile->lineSlots;
    store.deleteCurrentFile();
    remove(path.c_str());
    return slots;
}

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

TEST(CoverageStore, LineSlotsCountLinesWhateverTheLastByte)
{
    EXPECT_EQ(SlotsOf(""), 1u);
    EXPECT_EQ(SlotsOf("\n"), 2u);
    EXPECT_EQ(SlotsOf("a\nb\nc\n"), 4u);
    EXPECT_EQ(SlotsOf("a\nb\nc"), 4u);
    // Binary bytes, NULs and 0xFF are ordinary characters.
    EXPECT_EQ(SlotsOf(std::string("\0\xff\n\0", 4)), 3u);
    // A megabyte on one line, crossing the read buffer's edge.
    EXPECT_EQ(SlotsOf(std::string(1 << 20, 'x') + "\n" + std::string(70000, 'y')), 3u);
}

TEST(CoverageStore, MissingSourceWarnsAndLeavesAnEmptyTable)
{
    Captured run = CaptureInChild([] {
        coverage_list store;
        bool ok = store.bSetName("/nonexistent/dir/m.c");
        printf("[%d %d %d]", ok, store.currentFile != nullptr,
               store.currentFile != nullptr && store.currentFile->lineTable == nullptr);
        // A second call keeps the installed node.
        printf("[%d]", store.bSetName("/nonexistent/other.c"));
        uint64_t count = 9;
        bool added = store.bAddBlockCount("/nonexistent/dir/m.c", 1, 1, 3, false, nullptr);
        bool fetched = store.bFetchHitCount(1, 1, &count, false, nullptr, nullptr, nullptr, nullptr);
        printf("[%d %d %llu]", added, fetched, (unsigned long long)count);
        store.deleteCurrentFile();
        printf("[%d]", store.currentFile == nullptr);
        // Without a current file the implicit open reports the same way.
        printf("[%d]", store.bAddBlockCount("/nonexistent/x.c", 2, 1, 1, false, nullptr));
        store.deleteCurrentFile();
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "\nWarning - File /nonexistent/dir/m.c not found!\n[0 1 1][1][0 0 0][1]"
                       "\nWarning - File /nonexistent/x.c not found!\n[0]");
    EXPECT_EQ(run.err, "");
}

TEST(CoverageStore, PositionsMergeCountsAndTallies)
{
    std::string path = TempSource("merge.c", "l1\nl2\nl3\n");  // lineSlots 4
    coverage_list store;
    // The first block opens the table itself.
    ASSERT_TRUE(store.bAddBlockCount(path.c_str(), 2, 5, 0, false, nullptr));
    ASSERT_NE(store.currentFile, nullptr);
    EXPECT_EQ(store.currentFile->lineSlots, 4u);
    ASSERT_TRUE(store.bAddBlockCount(path.c_str(), 2, 5, 5, true, nullptr));
    Fetched f = Fetch(store, 2, 5);
    EXPECT_TRUE(f.found);
    EXPECT_EQ(f.count, 5u);
    EXPECT_TRUE(f.newFunction);
    EXPECT_EQ(f.blocks, 2u);
    EXPECT_EQ(f.executed, 1u);
    EXPECT_EQ(store.currentFile->lineTable[2]->numUnexecuted, 1u);

    // The never-executed marker only fills an empty count, and is replaced.
    ASSERT_TRUE(store.bAddBlockCount(nullptr, 1, 1, 7, false, nullptr));
    ASSERT_TRUE(store.bAddBlockCount(nullptr, 1, 1, NEVER_EXECUTED, false, nullptr));
    EXPECT_EQ(Fetch(store, 1, 1).count, 7u);
    ASSERT_TRUE(store.bAddBlockCount(nullptr, 3, 2, NEVER_EXECUTED, false, nullptr));
    EXPECT_EQ(Fetch(store, 3, 2).count, NEVER_EXECUTED);
    EXPECT_EQ(Fetch(store, 3, 2).executed, 1u);  // the marker counts as executed
    ASSERT_TRUE(store.bAddBlockCount(nullptr, 3, 2, 7, false, nullptr));
    EXPECT_EQ(Fetch(store, 3, 2).count, 7u);
    ASSERT_TRUE(store.bAddBlockCount(nullptr, 3, 3, 0, false, nullptr));
    ASSERT_TRUE(store.bAddBlockCount(nullptr, 3, 3, NEVER_EXECUTED, false, nullptr));
    EXPECT_EQ(Fetch(store, 3, 3).count, NEVER_EXECUTED);
    // Counts add with 64-bit wrap.
    ASSERT_TRUE(store.bAddBlockCount(nullptr, 3, 4, 0xFFFFFFFFFFFFFFF0ull, false, nullptr));
    ASSERT_TRUE(store.bAddBlockCount(nullptr, 3, 4, 0x20, false, nullptr));
    EXPECT_EQ(Fetch(store, 3, 4).count, 0x10u);

    // Positions of one line stay in insertion order, whatever the column.
    const block_list_node *n = store.currentFile->lineTable[3];
    ASSERT_NE(n, nullptr);
    EXPECT_EQ(n->column, 2u);
    EXPECT_EQ(n->next->column, 3u);
    EXPECT_EQ(n->next->next->column, 4u);
    EXPECT_EQ(n->next->next->next, nullptr);

    store.deleteCurrentFile();
    EXPECT_EQ(store.currentFile, nullptr);
    EXPECT_FALSE(Fetch(store, 2, 5).found);
    remove(path.c_str());
}

TEST(CoverageStore, LineZeroBeyondTheEndAndTheLastSlot)
{
    std::string path = TempSource("limits.c", "a\nb");  // lineSlots 3
    coverage_list store;
    ASSERT_TRUE(store.bSetName(path.c_str()));
    ASSERT_EQ(store.currentFile->lineSlots, 3u);

    uint32_t *unexecuted = reinterpret_cast<uint32_t *>(1);
    EXPECT_TRUE(store.bAddBlockCount(nullptr, 0, 4, 9, false, &unexecuted));
    EXPECT_EQ(unexecuted, reinterpret_cast<uint32_t *>(1));  // untouched: nothing stored
    EXPECT_FALSE(Fetch(store, 0, 4).found);

    // Beyond lineSlots: collapses to (1, 1).
    EXPECT_TRUE(store.bAddBlockCount(nullptr, 4, 7, 2, false, nullptr));
    EXPECT_TRUE(store.bAddBlockCount(nullptr, 1000, 1, 3, false, nullptr));
    Fetched first = Fetch(store, 1, 1);
    EXPECT_TRUE(first.found);
    EXPECT_EQ(first.count, 5u);
    EXPECT_EQ(first.blocks, 2u);

    // Line lineSlots is stored in its own slot but never fetched.
    EXPECT_TRUE(store.bAddBlockCount(nullptr, 3, 2, 6, false, nullptr));
    ASSERT_NE(store.currentFile->lineTable[3], nullptr);
    EXPECT_EQ(store.currentFile->lineTable[3]->count, 6u);
    Fetched last = Fetch(store, 3, 2);
    EXPECT_FALSE(last.found);
    EXPECT_EQ(last.count, 0u);
    EXPECT_EQ(last.blocks, 0u);
    EXPECT_FALSE(Fetch(store, 2, 9).found);
    store.deleteCurrentFile();
    remove(path.c_str());
}

TEST(CoverageStore, UnexecutedCounterIsHandedBackOnceAPositionRan)
{
    std::string path = TempSource("unexec.c", "x\n");
    coverage_list store;
    uint32_t *unexecuted = nullptr;
    ASSERT_TRUE(store.bAddBlockCount(path.c_str(), 1, 1, 0, false, &unexecuted));
    EXPECT_EQ(unexecuted, nullptr);  // nothing ran here yet
    ASSERT_TRUE(store.bAddBlockCount(path.c_str(), 1, 1, 0, false, &unexecuted));
    EXPECT_EQ(unexecuted, nullptr);
    ASSERT_TRUE(store.bAddBlockCount(path.c_str(), 1, 1, 4, false, &unexecuted));
    ASSERT_NE(unexecuted, nullptr);
    EXPECT_EQ(*unexecuted, 2u);
    *unexecuted = 0;  // what -nopartial does
    ASSERT_TRUE(store.bAddBlockCount(path.c_str(), 1, 1, 0, false, &unexecuted));
    ASSERT_NE(unexecuted, nullptr);
    EXPECT_EQ(*unexecuted, 1u);
    // Another position is reset to null first.
    ASSERT_TRUE(store.bAddBlockCount(path.c_str(), 1, 2, 0, false, &unexecuted));
    EXPECT_EQ(unexecuted, nullptr);
    store.deleteCurrentFile();
    remove(path.c_str());
}

TEST(CoverageStore, FileListKeepsFirstRegistrationAndSplitsByFlags)
{
    std::string readable = TempSource("list-a.c", "int a;\n");
    coverage_list store;
    int coveredCount = 5, uncoveredCount = 5;
    filename_list_node **covered = reinterpret_cast<filename_list_node **>(1), **uncovered = covered;
    EXPECT_EQ(store.uiGetFilenames(&coveredCount, &covered, &uncoveredCount, &uncovered), 0);
    EXPECT_EQ(coveredCount, 0);
    EXPECT_EQ(covered, nullptr);
    EXPECT_EQ(uncovered, nullptr);

    ASSERT_TRUE(store.bAddFilename(readable.c_str()));
    ASSERT_TRUE(store.bAddFilename("/nonexistent/b.c"));
    filename_list_node *b = store.fileListTail;
    ASSERT_TRUE(store.bAddFilename("/nonexistent/c.c"));
    filename_list_node *c = store.fileListTail;
    // Registering again changes nothing, not even the tail.
    store.fileListHead->fileFlags |= FILE_COVERED;
    ASSERT_TRUE(store.bAddFilename(readable.c_str()));
    EXPECT_EQ(store.fileCount, 3u);
    EXPECT_EQ(store.fileListTail, c);
    EXPECT_EQ(store.fileListHead->fileFlags, FILE_READABLE | FILE_COVERED);
    EXPECT_EQ(b->fileFlags, 0u);
    EXPECT_STREQ(b->path, "/nonexistent/b.c");
    EXPECT_EQ(b->totalFuncs + b->coveredBlocks, 0u);

    b->fileFlags |= FILE_UNCOVERED;
    c->fileFlags |= FILE_UNCOVERED | FILE_COVERED;  // a file may carry both
    EXPECT_EQ(store.uiGetFilenames(&coveredCount, &covered, &uncoveredCount, &uncovered), 2);
    ASSERT_EQ(coveredCount, 2);
    ASSERT_EQ(uncoveredCount, 2);
    EXPECT_EQ(covered[0], store.fileListHead);
    EXPECT_EQ(covered[1], c);
    EXPECT_EQ(uncovered[0], b);
    EXPECT_EQ(uncovered[1], c);
    free(covered);
    free(uncovered);
    remove(readable.c_str());
}
