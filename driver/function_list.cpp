/* function_list.cpp -- the sorted list of profiled functions. */
#include "driver/function_list.h"

#include <algorithm>
#include <cstdio>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "driver/component_file.h"
#include "driver/console.h"
#include "driver/demangle.h"
#include "driver/run_state.h"
#include "driver/settings.h"
#include "shared/vemtra/client/spi_reader.h"

/* The messages of this step, kept together. */
static const char MSG_CANNOT_OPEN[] = "ERROR: cannot open the SPI file, %s.\n";
static const char MSG_CORRUPT[] = "ERROR: corrupt SPI file %s\n";
static const char MSG_NO_MEMORY_FOR[] = "ERROR: unable to allocate %d bytes of memory for %s\n";
static const char MSG_OUT_OF_MEMORY[] = "FATAL ERROR: Out of memory.\n";
static const char MSG_CANNOT_CLOSE[] = "WARNING: couldn't close the SPI file %s\n";

/* A heap copy of `text`; ends the run naming `what` when memory runs out. */
static char *copyOrExit(const char *text, const char *what)
{
    size_t length = strlen(text) + 1;
    char *copy = static_cast<char *>(malloc(length));
    if (copy == nullptr) {
        fprintf(stderr, MSG_NO_MEMORY_FOR, static_cast<int>(length), what);
        tvx_Exit(1);
    }
    memcpy(copy, text, length);
    return copy;
}

/* The module's file name, one copy per distinct name: a module's
 * functions share it, and it lives as long as the list. */
static std::unordered_set<std::string_view> fileNames;

static char *sharedFileName(const char *fileName)
{
    auto found = fileNames.find(fileName);
    if (found != fileNames.end())
        return const_cast<char *>(found->data());
    char *copy = copyOrExit(fileName, "comp->fileName");
    fileNames.insert(copy);
    return copy;
}

/* The list's records and profile names live in large blocks, released
 * together with the list: a record and a short name each cost an
 * allocation (and its overhead) otherwise. */
static std::vector<char *> listBlocks;
static char *listFree = nullptr;
static size_t listRoom = 0;
static const size_t LIST_BLOCK = 1 << 16;

/* `bytes` from the blocks, aligned for any record; null when memory runs
 * out. */
static void *listTake(size_t bytes)
{
    const size_t align = alignof(std::max_align_t);
    bytes = (bytes + align - 1) / align * align;
    if (bytes > listRoom) {
        size_t size = bytes > LIST_BLOCK ? bytes : LIST_BLOCK;
        char *block = static_cast<char *>(malloc(size));
        if (block == nullptr)
            return nullptr;
        listBlocks.push_back(block);
        listFree = block;
        listRoom = size;
    }
    void *taken = listFree;
    listFree += bytes;
    listRoom -= bytes;
    return taken;
}

/* A copy of `text` in the blocks, or null when memory runs out. */
static char *listCopy(const char *text)
{
    size_t length = strlen(text) + 1;
    char *copy = static_cast<char *>(listTake(length));
    if (copy != nullptr)
        memcpy(copy, text, length);
    return copy;
}

/* Step 10.5: one record for a function of a module of interest. */
static COMP *newComponent(const SPI_LINE_HEADER_S &header, const char *fileName, const char *demangled,
                          int demangledLength)
{
    COMP *comp = static_cast<COMP *>(listTake(sizeof(COMP)));
    if (comp == nullptr) {
        fprintf(stderr, MSG_NO_MEMORY_FOR, static_cast<int>(sizeof(COMP)), "Components SPI");
        tvx_Exit(1);
    }
    memset(comp, 0, sizeof *comp);
    comp->fileName = sharedFileName(fileName);
    comp->procName = listCopy(header.routine_name);
    if (comp->procName == nullptr) {
        fprintf(stderr, MSG_NO_MEMORY_FOR, static_cast<int>(strlen(header.routine_name) + 1), "comp->procName");
        tvx_Exit(1);
    }
    comp->line = static_cast<int32_t>(header.line);
    comp->block_count = static_cast<uint32_t>(header.block_count - header.excluded_block_count);
    comp->spi_value = header.linkage;
    comp->name = comp->procName;
    if (demangledLength != 0 && strcmp(demangled, comp->procName) != 0) {
        comp->name = listCopy(demangled);
        if (comp->name == nullptr) {
            fputs(MSG_OUT_OF_MEMORY, stderr);
            tvx_Exit(2);
        }
    }
    return comp;
}

/* Step 10: the records in file order, appended to componentList as they
 * are read, so that a run ended by a later line still holds them. */
static void readComponents(VEMTRA_SPI_TEXT *spi, const char *spiFileName)
{
    if (VEMTRA_SPI_Text_Empty(spi))
        return;

    COMP *tail = nullptr;
    do {
        SPI_LINE_HEADER_S header;
        if (!VEMTRA_SPI_Read_Line_Header_Text(spi, &header, 1)) {
            fprintf(stderr, MSG_CORRUPT, spiFileName);
            tvx_Exit(1);
        }
        char *fileName = header.full_path_name;
        NormalizeName(fileName);
        int demangledLength = 0;
        const char *demangled = demangleName(header.routine_name, g_iDemangFlag, &demangledLength);
        if (!isInComponents(fileName))
            continue;

        /* The module starts are marked after sorting (step 12). */
        COMP *comp = newComponent(header, fileName, demangled, demangledLength);
        if (tail == nullptr)
            componentList = comp;
        else
            tail->next = comp;
        tail = comp;
        /* The call-site list that ends the line is not needed here. */
    } while (VEMTRA_SPI_Text_Next_Line(spi));
}

/* The sort key: file name, display name when both have one, profile name.
 * The file names are compared by their places among the list's (set by
 * rankFileNames): the records of one module share their path's first
 * bytes, often most of them, and two numbers compare faster. */
struct ComponentLess {
    bool operator()(const COMP *a, const COMP *b) const
    {
        if (a->file_rank != b->file_rank)
            return a->file_rank < b->file_rank;
        int order = 0;
        if (a->name != nullptr && b->name != nullptr)
            order = strcmp(a->name, b->name);
        if (order == 0)
            order = strcmp(a->procName, b->procName);
        return order < 0;
    }
};

/* Sets the file_rank of array[0..count-1]: the place of each file name
 * among theirs, equal names sharing one. A module's records share one
 * copy of its file name and come one after the other, so there are about
 * as many copies as modules. */
static void rankFileNames(COMP **array, int count)
{
    std::vector<const char *> copies;
    for (int i = 0; i < count; i++) {
        if (i == 0 || array[i]->fileName != array[i - 1]->fileName)
            copies.push_back(array[i]->fileName);
    }
    std::sort(copies.begin(), copies.end(), [](const char *a, const char *b) { return strcmp(a, b) < 0; });
    std::unordered_map<const char *, uint32_t> rankOf;
    uint32_t rank = 0;
    for (size_t i = 0; i < copies.size(); i++) {
        if (i > 0 && strcmp(copies[i - 1], copies[i]) != 0)
            ++rank;
        rankOf[copies[i]] = rank;
    }
    for (int i = 0; i < count; i++) {
        if (i == 0 || array[i]->fileName != array[i - 1]->fileName)
            rank = rankOf[array[i]->fileName];
        array[i]->file_rank = rank;
    }
}

void QuickSortComponents(COMP **array, int count)
{
    rankFileNames(array, count);
    std::stable_sort(array, array + count, ComponentLess());
}

/* Step 11: the list sorted; returns the new head. */
static COMP *sortComponents(COMP *head)
{
    int count = 0;
    for (COMP *c = head; c != nullptr; c = c->next)
        count++;
    if (count == 0)
        return nullptr;
    size_t bytes = static_cast<size_t>(count) * sizeof(COMP *);
    COMP **array = static_cast<COMP **>(malloc(bytes));
    if (array == nullptr) {
        fprintf(stderr, MSG_NO_MEMORY_FOR, static_cast<int>(bytes), "Components Array");
        tvx_Exit(1);
    }
    int i = 0;
    for (COMP *c = head; c != nullptr; c = c->next)
        array[i++] = c;
    QuickSortComponents(array, count);
    for (i = 0; i + 1 < count; i++)
        array[i]->next = array[i + 1];
    array[count - 1]->next = nullptr;
    head = array[0];
    free(array);
    return head;
}

static bool sameText(const char *a, const char *b)
{
    return a != nullptr && b != nullptr && strcmp(a, b) == 0;
}

/* Step 12: module starts and duplicate instances marked, repeated entries
 * of the profile dropped. */
static void markModulesAndDuplicates(COMP *head)
{
    COMP *kept = head;
    if (head != nullptr)
        head->first_in_module = 1;
    while (kept != nullptr && kept->next != nullptr) {
        COMP *record = kept->next;
        record->first_in_module = 1;
        if (strcmp(record->fileName, kept->fileName) == 0) {
            bool sameName = sameText(record->name, kept->name);
            if (record->line != kept->line || record->name == nullptr || !sameName) {
                record->first_in_module = 0;
            } else if (strcmp(record->procName, kept->procName) != 0) {
                record->first_in_module = 0;
                record->dup_name = 1;
                kept->dup_name = 1;
            } else {
                /* The same function listed twice: keep one (the other's
                 * memory goes with the list's). */
                kept->next = record->next;
                continue;
            }
        }
        kept = record;
    }
}

void buildComponentList(const char *spiFileName)
{
    /* Step 9. */
    FILE *spi = fopen(spiFileName, "r");
    if (spi == nullptr) {
        fprintf(stderr, MSG_CANNOT_OPEN, spiFileName);
        tvx_Exit(1);
    }

    /* Steps 10 to 12. */
    componentList = nullptr;
    VEMTRA_SPI_TEXT text;
    VEMTRA_SPI_Text_Open(spi, spiFileName, &text);
    readComponents(&text, spiFileName);
    VEMTRA_SPI_Text_Close(&text);
    componentList = sortComponents(componentList);
    markModulesAndDuplicates(componentList);

    /* Step 13. */
    if (fclose(spi) != 0)
        fprintf(stderr, MSG_CANNOT_CLOSE, spiFileName);
    numComponents = 0;
    for (COMP *c = componentList; c != nullptr; c = c->next)
        numComponents++;
}

void freeComponentList()
{
    componentList = nullptr;
    for (char *block : listBlocks)
        free(block);
    listBlocks.clear();
    listFree = nullptr;
    listRoom = 0;
    for (std::string_view name : fileNames)
        free(const_cast<char *>(name.data()));
    fileNames.clear();
    numComponents = 0;
}
