/* coverage_store.cpp -- the run's coverage store: the file list with its
 * totals, and the position table of the current source file. */
#include "analysis/coverage_store.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "analysis/line_count.h"
#include "driver/console.h"
#include "shared/vemtra/tallyfold/checked_io.h"

coverage_list g_cl;

namespace {

/* The store's messages, all on standard output. The class names inside them
 * do not always match the operation that prints them; they are kept so. */
const char MSG_ADD_FILENAME_NO_MEMORY[] = "Error - out of memory!! (coverage_list::bAddFilename)\n";
const char MSG_NODE_NO_MEMORY[] = "Error - Not enough memory!! (file_list_node::file_list_node): %s\n";
const char MSG_SET_NAME_NO_MEMORY[] = "Out of memory!! (file_list_node::bSetName %s)\n";
const char MSG_FILE_NOT_FOUND[] = "\nWarning - File %s not found!\n";
const char MSG_GET_FILENAMES_NO_MEMORY[] = "Error - Not enough memory!! (file_list_node::uiGetFilenames)\n";

char *copyString(const char *text)
{
    size_t size = strlen(text) + 1;
    char *copy = static_cast<char *>(malloc(size));
    if (copy != nullptr)
        memcpy(copy, text, size);
    return copy;
}

}  // namespace

bool coverage_list::bAddFilename(const char *path)
{
    if (pathIndex.count(path) != 0)
        return true;

    filename_list_node *node = static_cast<filename_list_node *>(calloc(1, sizeof(filename_list_node)));
    char *copy = node != nullptr ? copyString(path) : nullptr;
    if (copy == nullptr) {
        free(node);
        printf(MSG_ADD_FILENAME_NO_MEMORY);
        return false;
    }
    node->path = copy;
    if (FILE *probe = VEMTRA_Open_Regular_File(path)) {
        node->fileFlags |= FILE_READABLE;
        if (probedSource != nullptr)
            fclose(probedSource);
        probedSource = probe;
        probedPath = path;
    }
    if (fileListTail != nullptr)
        fileListTail->next = node;
    else
        fileListHead = node;
    fileListTail = node;
    ++fileCount;
    pathIndex.insert(node->path);
    return true;
}

FILE *coverage_list::takeProbed(const char *path)
{
    FILE *probe = probedSource;
    probedSource = nullptr;
    if (probe != nullptr && probedPath != path) {
        fclose(probe);
        probe = nullptr;
    }
    return probe;
}

bool coverage_list::bSetName(const char *path)
{
    if (currentFile != nullptr)
        return true;

    file_list_node *node = static_cast<file_list_node *>(calloc(1, sizeof(file_list_node)));
    if (node == nullptr) {
        printf(MSG_SET_NAME_NO_MEMORY, path);
        return false;
    }
    node->path = copyString(path);
    if (node->path == nullptr) {
        printf(MSG_NODE_NO_MEMORY, path);
        tvx_Exit(1);
    }
    currentFile = node;

    FILE *source = takeProbed(path);
    if (source == nullptr)
        source = VEMTRA_Open_Regular_File(path);
    if (source == nullptr) {
        printf(MSG_FILE_NOT_FOUND, path);
        return false;
    }
    node->lineSlots = countLinesKeeping(source, SOURCE_KEPT_BELOW, &node->sourceBytes, &node->sourceSize) + 1;
    fclose(source);
    node->lineTable = static_cast<block_list_node **>(
        calloc(static_cast<size_t>(node->lineSlots) + 1, sizeof(block_list_node *)));
    if (node->lineTable == nullptr) {
        printf(MSG_NODE_NO_MEMORY, path);
        tvx_Exit(1);
    }
    return true;
}

/* Positions walked in a line's list before the index takes over. */
static const int CROWDED_LINE_WALK = 8;

static uint64_t positionKey(uint32_t line, uint32_t column)
{
    return static_cast<uint64_t>(line) << 32 | column;
}

block_list_node *coverage_list::findPosition(uint32_t line, uint32_t column, block_list_node ***link,
                                             bool *crowded) const
{
    block_list_node **at = &currentFile->lineTable[line];
    int walked = 0;
    for (block_list_node *node = *at; node != nullptr; at = &node->next, node = node->next) {
        if (node->line == line && node->column == column)
            return node;
        if (++walked < CROWDED_LINE_WALK)
            continue;
        /* The rest of a crowded line is in the index; a new position goes
         * right after the walked ones (the list's order is not used). */
        if (link != nullptr) {
            *link = &node->next;
            *crowded = true;
        }
        if (node->next == nullptr)
            return nullptr;
        auto found = crowdedPositions.find(positionKey(line, column));
        return found != crowdedPositions.end() ? found->second : nullptr;
    }
    if (link != nullptr) {
        *link = at;
        *crowded = false;
    }
    return nullptr;
}

block_list_node *coverage_list::newPosition()
{
    if (usedInChunk == POSITION_CHUNK) {
        ++chunkInUse;
        usedInChunk = 0;
    }
    if (chunkInUse == positionChunks.size())
        positionChunks.push_back(std::make_unique<block_list_node[]>(POSITION_CHUNK));
    block_list_node *node = &positionChunks[chunkInUse][usedInChunk++];
    *node = block_list_node{};
    return node;
}

bool coverage_list::bAddBlockCount(const char *path, uint32_t line, uint32_t column, uint64_t count,
                                   bool newFunction, uint32_t **unexecutedOut)
{
    if (currentFile == nullptr && !bSetName(path))
        return false;
    /* A table whose source could not be read takes no blocks. */
    if (currentFile->lineTable == nullptr)
        return false;

    if (line == 0)
        return true;
    /* Positions beyond the file collapse onto its first position. Line
     * lineSlots itself has a slot, though a fetch never reaches it. */
    if (line > currentFile->lineSlots) {
        line = 1;
        column = 1;
    }
    if (unexecutedOut != nullptr)
        *unexecutedOut = nullptr;

    block_list_node **link = nullptr;
    bool crowded = false;
    block_list_node *node = findPosition(line, column, &link, &crowded);
    if (node == nullptr) {
        node = newPosition();
        node->line = line;
        node->column = column;
        node->next = *link;
        *link = node;
        if (crowded)
            crowdedPositions.emplace(positionKey(line, column), node);
    }

    if (count == NEVER_EXECUTED) {
        if (node->count == 0)
            node->count = NEVER_EXECUTED;
    } else if (node->count == NEVER_EXECUTED) {
        node->count = count;
    } else {
        node->count += count;
    }
    ++node->numBlocks;
    node->newFunction = node->newFunction || newFunction;
    if (count == 0)
        ++node->numUnexecuted;
    else
        ++node->numExecuted;

    if (unexecutedOut != nullptr && node->numExecuted > 0)
        *unexecutedOut = &node->numUnexecuted;
    return true;
}

void coverage_list::noteBlockEnd(uint32_t line, uint32_t column, uint32_t endLine, uint32_t endColumn)
{
    if (currentFile == nullptr || currentFile->lineTable == nullptr || line == 0 || line >= currentFile->lineSlots)
        return;
    block_list_node *node = findPosition(line, column, nullptr, nullptr);
    if (node == nullptr)
        return;
    if (endLine > node->endLine || (endLine == node->endLine && endColumn > node->endColumn)) {
        node->endLine = endLine;
        node->endColumn = endColumn;
    }
}

bool coverage_list::bFetchHitCount(uint32_t line, uint32_t column, uint64_t *countOut, bool trackTop,
                                   bool *newFunctionOut, uint32_t *numBlocksOut, uint32_t *numExecutedOut,
                                   bool *lastBlockAdjustedOut)
{
    (void)trackTop;  /* the top-hit-count table is not kept */
    const block_list_node *node = nullptr;
    if (currentFile != nullptr && currentFile->lineTable != nullptr && line < currentFile->lineSlots)
        node = findPosition(line, column, nullptr, nullptr);
    *countOut = node != nullptr ? node->count : 0;
    if (newFunctionOut != nullptr)
        *newFunctionOut = node != nullptr && node->newFunction;
    if (numBlocksOut != nullptr)
        *numBlocksOut = node != nullptr ? node->numBlocks : 0;
    if (numExecutedOut != nullptr)
        *numExecutedOut = node != nullptr ? node->numExecuted : 0;
    if (lastBlockAdjustedOut != nullptr)
        *lastBlockAdjustedOut = node != nullptr && node->lastBlockAdjusted;
    return node != nullptr;
}

const block_list_node *coverage_list::linePositions(uint32_t line) const
{
    if (currentFile == nullptr || currentFile->lineTable == nullptr || line >= currentFile->lineSlots)
        return nullptr;
    return currentFile->lineTable[line];
}

int coverage_list::uiGetFilenames(int *coveredCountOut, filename_list_node ***coveredListOut,
                                  int *uncoveredCountOut, filename_list_node ***uncoveredListOut)
{
    int covered = 0, uncovered = 0;
    for (const filename_list_node *node = fileListHead; node != nullptr; node = node->next) {
        if (node->fileFlags & FILE_COVERED)
            ++covered;
        if (node->fileFlags & FILE_UNCOVERED)
            ++uncovered;
    }
    filename_list_node **coveredList = nullptr, **uncoveredList = nullptr;
    if (covered > 0)
        coveredList = static_cast<filename_list_node **>(malloc(covered * sizeof(filename_list_node *)));
    if (uncovered > 0)
        uncoveredList = static_cast<filename_list_node **>(malloc(uncovered * sizeof(filename_list_node *)));
    if ((covered > 0 && coveredList == nullptr) || (uncovered > 0 && uncoveredList == nullptr)) {
        free(coveredList);
        free(uncoveredList);
        printf(MSG_GET_FILENAMES_NO_MEMORY);
        *coveredCountOut = -1;
        *coveredListOut = nullptr;
        *uncoveredCountOut = 0;
        *uncoveredListOut = nullptr;
        return -1;
    }
    int c = 0, u = 0;
    for (filename_list_node *node = fileListHead; node != nullptr; node = node->next) {
        if (node->fileFlags & FILE_COVERED)
            coveredList[c++] = node;
        if (node->fileFlags & FILE_UNCOVERED)
            uncoveredList[u++] = node;
    }
    *coveredCountOut = covered;
    *coveredListOut = coveredList;
    *uncoveredCountOut = uncovered;
    *uncoveredListOut = uncoveredList;
    return uncovered;
}

const char *coverage_list::currentSourceBytes(size_t *size) const
{
    if (currentFile == nullptr || currentFile->sourceBytes == nullptr) {
        *size = 0;
        return nullptr;
    }
    *size = currentFile->sourceSize;
    return currentFile->sourceBytes;
}

void coverage_list::deleteCurrentFile()
{
    file_list_node *file = currentFile;
    if (file == nullptr)
        return;
    free(file->lineTable);
    free(file->sourceBytes);
    chunkInUse = 0;
    usedInChunk = 0;
    free(file->path);
    free(file);
    currentFile = nullptr;
    crowdedPositions.clear();
}

void coverage_list::moveCurrentFileTo(coverage_list &into)
{
    into.currentFile = currentFile;
    into.positionChunks.swap(positionChunks);
    into.chunkInUse = chunkInUse;
    into.usedInChunk = usedInChunk;
    into.crowdedPositions.swap(crowdedPositions);
    currentFile = nullptr;
    positionChunks.clear();
    chunkInUse = 0;
    usedInChunk = 0;
    crowdedPositions.clear();
}

coverage_list::~coverage_list()
{
    if (probedSource != nullptr)
        fclose(probedSource);
    deleteCurrentFile();
    for (filename_list_node *node = fileListHead; node != nullptr;) {
        filename_list_node *next = node->next;
        free(node->path);
        free(node);
        node = next;
    }
}
