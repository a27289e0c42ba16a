/* coverage_store.h -- the run's coverage store: the list of every source
 * file with its totals, and the (line, column) position table of the file
 * being processed. */
#ifndef VEMCOV_ANALYSIS_COVERAGE_STORE_H
#define VEMCOV_ANALYSIS_COVERAGE_STORE_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/* Count stored for a position inside a function that never ran; never shown
 * as a number. */
const uint64_t NEVER_EXECUTED = ~(uint64_t)0;

/* One source position of the current file. */
struct block_list_node {
    uint32_t line;             /* 1-based position */
    uint32_t column;
    uint64_t count;            /* accumulated count, or NEVER_EXECUTED */
    block_list_node *next;     /* next position of the same line (no particular order) */
    uint32_t numBlocks;        /* blocks added here */
    uint32_t numExecuted;      /* of them with a non-zero count (the marker counts) */
    uint32_t numUnexecuted;    /* of them with count 0 */
    bool lastBlockAdjusted;    /* never set in practice; the listing honours it */
    bool newFunction;          /* OR of the flags passed with the blocks (-ref) */
    uint32_t endLine;          /* the furthest end of the blocks starting here, when */
    uint32_t endColumn;        /* the profile gives ends (packed ranges); else 0 */
};

/* Position table of one source file. */
struct file_list_node {
    block_list_node **lineTable; /* lineSlots + 1 heads indexed by line; null if unreadable */
    char *path;                  /* copy of the source path as given */
    uint32_t lineSlots;          /* number of lines + 1 */
    char *sourceBytes;           /* the source as read to count its lines, or null (not kept) */
    size_t sourceSize;           /* their number */
};

/* Sources smaller than this are kept in memory from the count of their
 * lines to their listing, which then does not open and read them again;
 * a larger one is read twice rather than held whole. */
const size_t SOURCE_KEPT_BELOW = size_t(16) << 20;

/* One source file of the run with its totals; lives until exit. */
struct filename_list_node {
    filename_list_node *next;
    char *path;                  /* copy of the source path */
    uint32_t totalFuncs;
    uint32_t coveredFuncs;
    uint32_t totalBlocks;
    uint32_t coveredBlocks;
    uint32_t fileFlags;          /* FILE_READABLE | FILE_UNCOVERED | FILE_COVERED */
    double funcPercent;          /* 100 * covered / total, 0 when total is 0 */
    double blockPercent;
};

const uint32_t FILE_READABLE = 1;  /* the source could be opened when registered */
const uint32_t FILE_UNCOVERED = 2; /* listed as uncovered */
const uint32_t FILE_COVERED = 4;   /* listed as covered */

class coverage_list {
public:
    coverage_list() = default;
    coverage_list(const coverage_list &) = delete;
    coverage_list &operator=(const coverage_list &) = delete;
    /* Frees the file list and any current file (at process exit for g_cl). */
    ~coverage_list();

    file_list_node *currentFile = nullptr;   /* position table of the current file */
    uint32_t fileCount = 0;
    filename_list_node *fileListHead = nullptr;
    filename_list_node *fileListTail = nullptr;

    /* Registers a source file once; true unless its entry cannot be made. */
    bool bAddFilename(const char *path);

    /* Opens the position table of the current file (no-op when one is open).
     * False, after "\nWarning - File %s not found!\n", when the file cannot
     * be read; the node is installed all the same. */
    bool bSetName(const char *path);

    /* Adds one block at (line, column) of the current file, opening the
     * table for `path` first when none is open (false when that fails, or
     * when the current file could not be read). Line 0 stores nothing; a line
     * beyond lineSlots becomes position (1, 1). Counts add up; the
     * NEVER_EXECUTED marker fills only a zero count and gives way to any real
     * count. When `unexecutedOut` is given it receives the position's
     * numUnexecuted counter once some block there ran, else null. */
    bool bAddBlockCount(const char *path, uint32_t line, uint32_t column, uint64_t count,
                        bool newFunction, uint32_t **unexecutedOut);

    /* Records that a block starting at (line, column) of the current file
     * ends at (endLine, endColumn), keeping the furthest end of the
     * position's blocks. A position not recorded is left alone. */
    void noteBlockEnd(uint32_t line, uint32_t column, uint32_t endLine, uint32_t endColumn);

    /* Looks a position up in the current file. False, with zero outputs,
     * when there is no table, the line is not below lineSlots or the position
     * was never recorded. Every output but countOut may be null; trackTop
     * must be false. */
    bool bFetchHitCount(uint32_t line, uint32_t column, uint64_t *countOut, bool trackTop,
                        bool *newFunctionOut, uint32_t *numBlocksOut, uint32_t *numExecutedOut,
                        bool *lastBlockAdjustedOut);

    /* The first recorded position of `line` in the current file, in the
     * order bFetchHitCount walks them, or null when the line has none or
     * cannot be fetched (no table, or `line` not below lineSlots). Lets a
     * reader skip the lookups of lines without positions. */
    const block_list_node *linePositions(uint32_t line) const;

    /* Splits the file list into newly allocated arrays of covered and
     * uncovered entries, in list order; an empty selection is a null array.
     * Returns the uncovered count, or -1 (with the covered count -1 too) when
     * an array cannot be allocated. The arrays belong to the caller. */
    int uiGetFilenames(int *coveredCountOut, filename_list_node ***coveredListOut,
                       int *uncoveredCountOut, filename_list_node ***uncoveredListOut);

    /* The current file's bytes as read when it was named, or null when
     * they were not kept (see SOURCE_KEPT_BELOW); `*size` their number. */
    const char *currentSourceBytes(size_t *size) const;

    /* Frees the current file's position table and clears currentFile. */
    void deleteCurrentFile();

    /* Hands the current file's position table, with the nodes it holds, to
     * `into` (which has none), and clears currentFile; the file list stays
     * here. Lets the pages of a file be written while the next one is
     * analysed. */
    void moveCurrentFileTo(coverage_list &into);

private:
    /* The node of (line, column) in the current file's table, or null. When
     * `link` is given it receives where a new node of that position is to
     * be linked in, and `crowded` whether that lies past the walked part of
     * the line (the node then belongs in crowdedPositions too). */
    block_list_node *findPosition(uint32_t line, uint32_t column, block_list_node ***link, bool *crowded) const;

    /* A zeroed position node from the pool. */
    block_list_node *newPosition();

    /* The current file's position nodes come from chunks that are kept
     * from file to file: a position costs no allocation of its own, and
     * dropping a file's table is one reset. */
    static const size_t POSITION_CHUNK = 4096;
    std::vector<std::unique_ptr<block_list_node[]>> positionChunks;
    size_t chunkInUse = 0;      /* index of the chunk being filled */
    size_t usedInChunk = 0;     /* nodes handed out from it */

    /* The registered paths (views of the entries' own copies), so that a
     * registration costs the same however many files the run has. */
    std::unordered_set<std::string_view> pathIndex;
    /* A line holds a few positions, found by walking its list; the nodes
     * past the first CROWDED_LINE_WALK of a crowded line (generated code,
     * macros) are found here instead, keyed by line << 32 | column, so that
     * no line costs time quadratic in its positions. */
    std::unordered_map<uint64_t, block_list_node *> crowdedPositions;

    /* The stream bAddFilename opened to learn that its file can be read,
     * kept for the bSetName of the same path that usually follows (one
     * open of each source instead of two). */
    FILE *probedSource = nullptr;
    std::string probedPath;
    /* The kept stream when it is `path`'s, else null; any other is closed. */
    FILE *takeProbed(const char *path);
};

/* The run's one store. */
extern coverage_list g_cl;

#endif
