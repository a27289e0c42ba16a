/* coverage.cpp -- block and function coverage of one module. */
#include "analysis/coverage.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <list>
#include <map>
#include <vector>

#include "analysis/block_files.h"
#include "analysis/comment_parser.h"
#include "analysis/coverage_state.h"
#include "analysis/coverage_store.h"
#include "analysis/module_report.h"
#include "driver/console.h"
#include "driver/run_state.h"
#include "driver/settings.h"
#include "shared/vemtra/client/dpi_file.h"
#include "shared/vemtra/client/dpi_segment.h"
#include "shared/vemtra/tallyfold/assertx.h"

const char *const ExcludedFunctions[2] = {"___sti__", "__$U"};

namespace {

/* The analysis messages, all on standard error. */
const char MSG_NO_DPI[] = "Internal error: couldn't find the dpi file %s!\n";
const char MSG_ZERO_RUNS[] = "Read in 0 runs for .dpi file - .dpi File corrupt!\n";
const char MSG_NO_MEMORY[] = "ERROR: unable to allocate %d bytes of memory for %s\n";
const char MSG_CANNOT_PROCESS[] = "WARNING: unable to process func %s in file %s\n";
const char MSG_NO_LINE_INFO[] = "No line number info for %s: recompile with -Qcvinstx (instead of -Qcvinst).\n";
const char MSG_ASSIGNING[] = "...Assigning all exec counts to line 1 column 1.\n";
const char MSG_CORRUPT_TABLE[] = "ERROR: corrupt function table. cvrd = %p (%d), uncvrd = %p (%d)\n";

/* Counters of the module being processed. */
struct ModuleTally {
    unsigned functions = 0;        /* functions counted in the module */
    unsigned withCounts = 0;       /* of them with a segment in the profile */
    unsigned blocks = 0;           /* feasible blocks */
    unsigned coveredBlocks = 0;
    unsigned missingFromRef = 0;   /* -ref: with a segment here, none in the reference */
    unsigned newlyCovered = 0;     /* -ref: functions with a newly covered block */
    bool someRan = false;          /* some function's segment had a block */
};

/* Counters of the function being processed. */
struct FunctionTally {
    uint32_t blocks = 0;      /* static block count plus any excess of the segment */
    uint32_t infeasible = 0;
    uint32_t covered = 0;
};

bool sameModule(const COMP *c, const char *fileName)
{
    return c != nullptr && strcmp(c->fileName, fileName) == 0;
}

bool isExcludedName(const char *name)
{
    for (const char *prefix : ExcludedFunctions)
        if (strncmp(name, prefix, strlen(prefix)) == 0)
            return true;
    return false;
}

bool isDisabled(unsigned long line)
{
    return pars != nullptr && pars->is_disabled_line(line);
}

/* A single-precision count as stored: truncated; a value that rounds to 2^64
 * stays below the never-executed marker. */
uint64_t storedCount(float count)
{
    if (!(count < 18446744073709551616.0f))
        return NEVER_EXECUTED - 1;
    return static_cast<uint64_t>(count);
}

/* Removes entry k of the uncovered table: the table's first entry takes its
 * slot and the table starts one slot later. */
void removeUncovered(int k)
{
    func *removed = fileFuncsUncovered[k];
    fileFuncsUncovered[k] = fileFuncsUncovered[0];
    ++fileFuncsUncovered;
    --numFileFuncsUncovered;
    free(removed);
}

/* Makes the function's record and adds it to the covered or the uncovered
 * table. */
void addToTable(const COMP *c, const FunctionTally &f, uint32_t feasible, bool covered)
{
    func *record = static_cast<func *>(malloc(sizeof(func)));
    if (record == nullptr) {
        fprintf(stderr, MSG_NO_MEMORY, static_cast<int>(sizeof(func)), "function information");
        tvx_Exit(1);
    }
    record->name = c->name;
    record->procName = c->procName;
    record->line = static_cast<uint32_t>(c->line);
    record->blocks = feasible;
    record->covered = f.covered;
    record->percent = feasible != 0 ? 100.0 * f.covered / feasible : 0.0;
    record->nameRank = 0;
    /* A sanity check of the two ends; with both tables inside one array of
     * one slot per entry it does not fire. */
    if (fileFuncsCovered > fileFuncsUncovered + numFileFuncsCovered)
        fprintf(stderr, MSG_CORRUPT_TABLE, static_cast<void *>(fileFuncsCovered), numFileFuncsCovered,
                static_cast<void *>(fileFuncsUncovered), numFileFuncsUncovered);
    if (covered) {
        fileFuncsCovered[numFileFuncsCovered++] = record;
    } else {
        *--fileFuncsUncovered = record;
        ++numFileFuncsUncovered;
    }
    ++numFileFuncs;
}

/* Lists a function in the covered table unless an instance of it (same
 * display name and line) is there already; an instance in the uncovered
 * table gives way to it. */
void listCovered(const COMP *c, const FunctionTally &f, uint32_t feasible)
{
    if (c->dup_name) {
        unsigned line = static_cast<unsigned>(c->line);
        if (isDupName(c->name, line, fileFuncsCovered, numFileFuncsCovered, -1, nullptr))
            return;
        int k = 0;
        if (isDupName(c->name, line, fileFuncsUncovered, numFileFuncsUncovered, 1, &k))
            removeUncovered(k);
    }
    addToTable(c, f, feasible, true);
}

/* Lists a function in the uncovered table unless an instance of it is in
 * either table. */
void listUncovered(const COMP *c, const FunctionTally &f, uint32_t feasible)
{
    if (c->dup_name) {
        unsigned line = static_cast<unsigned>(c->line);
        if (isDupName(c->name, line, fileFuncsUncovered, numFileFuncsUncovered, 1, nullptr) ||
            isDupName(c->name, line, fileFuncsCovered, numFileFuncsCovered, -1, nullptr))
            return;
    }
    addToTable(c, f, feasible, false);
}

/* Puts a processed function into the function tables. In differential mode
 * the uncovered table lists the functions new to the reference, and a known
 * function without a newly covered block is listed nowhere. */
void listFunction(const COMP *c, const FunctionTally &f, bool newFunction)
{
    uint32_t feasible = f.blocks - f.infeasible;
    if (compWithRef) {
        if (newFunction)
            listUncovered(c, f, feasible);
        else if (f.covered > 0)
            listCovered(c, f, feasible);
    } else if (f.covered > 0) {
        listCovered(c, f, feasible);
    } else {
        listUncovered(c, f, feasible);
    }
}

/* The function's record in the report model. */
void reportFunction(const COMP *c, const FunctionTally &f, uint64_t entries, bool called)
{
    currentModule.functions.push_back(FunctionReport{c->name, c->procName, static_cast<uint32_t>(c->line),
                                                     f.blocks - f.infeasible, f.covered, entries, called});
}

/* Step 4 for one entry. Returns false when the store refuses a block. */
bool processFunction(COMP *c, const char *fileName, ModuleTally &m)
{
    FILE *txt = outtxt, *xml = outxml;
    bool fullOutput = txt != nullptr || xml != nullptr;

    /* a. Entries without a name or line, and generated functions. */
    if (c->name == nullptr || c->line == 0 || isExcludedName(c->name)) {
        ++numFileFuncs;
        return true;
    }
    /* b. A function that begins on an infeasible line is left out entirely. */
    if (isDisabled(static_cast<unsigned long>(static_cast<uint32_t>(c->line))))
        return true;

    /* c, d. The display name is the entry's; fetch the segment(s). */
    ++m.functions;
    m.blocks += c->block_count;
    DPI_SEGMENT *segment = VEMTRA_Get_Segment(pgofDPIFile, g_lpszDPIFileName, fileName, c->procName);
    DPI_SEGMENT *reference = nullptr;
    bool newFunction = false;
    if (compWithRef) {
        if (pgofRefDPIFile != nullptr)
            reference = VEMTRA_Get_Segment(pgofRefDPIFile, g_lpszRefDPIFileName, fileName, c->procName);
        if (segment != nullptr && reference == nullptr) {
            ++m.missingFromRef;
            newFunction = true;
            c->not_in_reference = 1;
        }
    }

    FunctionTally f;
    f.blocks = c->block_count;

    /* e. Never called: its first position carries the never-executed mark. */
    if (segment == nullptr) {
        if (!compWithRef) {
            writeFullNeverCalled(txt, xml, c->name, c->line);
            if (!g_cl.bAddBlockCount(fileName, static_cast<uint32_t>(c->line), 1, NEVER_EXECUTED, newFunction,
                                     nullptr))
                fprintf(stderr, MSG_CANNOT_PROCESS, c->procName, fileName);
        }
        if (reference != nullptr)
            VEMTRA_Free_Segment(reference);
        reportFunction(c, f, 0, false);
        listFunction(c, f, newFunction);
        return true;
    }

    /* f. Without line information every block sits at the function's first
     * line, column 1 (whatever the message says). */
    const DPI_S *s = segment->segment;
    const DPI_S *r = reference != nullptr ? reference->segment : nullptr;
    bool lineInfo = (s->flags & VEMTRA_SEG_LINE_INFO) != 0;
    if (!lineInfo) {
        fprintf(stderr, MSG_NO_LINE_INFO, fileName);
        fputs(MSG_ASSIGNING, stderr);
    }
    ++m.withCounts;
    const uint64_t entries = functionFrequency(s);

    /* g. More blocks than the static profile knows of. */
    if (s->block_cnt > c->block_count) {
        uint32_t excess = s->block_cnt - c->block_count;
        m.blocks += excess;
        f.blocks += excess;
    }

    /* h. The function's record in the full files. */
    if (fullOutput) {
        char frequency[FREQUENCY_TEXT_SIZE];
        writeFunctionOpen(txt, xml, c->name, functionFrequencyText(s, frequency));
        ensureBlockArray(s->block_cnt);
    }

    /* i. Every block, in index order. */
    blocks *head = nullptr;
    uint32_t maxLine = 0, maxCol = 0;
    for (uint32_t i = 0; i < s->block_cnt; ++i) {
        float count = static_cast<float>(s->blocks[i].count);
        uint32_t line, col;
        if (lineInfo) {
            vemtra_Check_Block_Index(i, s->block_cnt);
            line = s->blocks[i].start_line;
            col = s->blocks[i].start_col;
        } else {
            line = static_cast<uint32_t>(c->line);
            col = 1;
        }
        if (!compWithRef && (line > maxLine || (line == maxLine && col > maxCol))) {
            maxLine = line;
            maxCol = col;
        }

        bool infeasible = isDisabled(line) || line == 0 || col == 0;
        if (infeasible) {
            --m.blocks;
            ++f.infeasible;
        } else if (fullOutput) {
            /* The full files get the count as read, before the differential
             * rule below. */
            head = add_block_cov(static_cast<int>(line), static_cast<int>(col), count, lb_blockNum, head,
                                 static_cast<int>(i));
        }
        /* Differential: only blocks that the reference never ran count. */
        if (r != nullptr && i < r->block_cnt && static_cast<float>(r->blocks[i].count) > 0)
            count = 0;
        if (!infeasible && count > 0) {
            ++m.coveredBlocks;
            ++f.covered;
        }
        uint32_t *unexecuted = nullptr;
        if (!g_cl.bAddBlockCount(fileName, line, col, storedCount(count), newFunction, &unexecuted)) {
            VEMTRA_Free_Segment(segment);
            if (reference != nullptr)
                VEMTRA_Free_Segment(reference);
            VEMTRA_Close_Dpi_File(pgofDPIFile);
            pgofDPIFile = nullptr;
            return false;
        }
        if (lineInfo && s->blocks[i].end_line != 0)
            g_cl.noteBlockEnd(line, col, s->blocks[i].end_line, s->blocks[i].end_col);
        /* Without partial coverage, the blocks that did not run at a
         * position where another did count as covered. */
        if (g_bNoPartial && unexecuted != nullptr && !infeasible && *unexecuted != 0) {
            m.coveredBlocks += *unexecuted;
            f.covered += *unexecuted;
            *unexecuted = 0;
        }
    }

    /* j. */
    if (s->block_cnt > 0)
        m.someRan = true;
    if (fullOutput)
        writeFullFunctionBlocks(txt, xml, sort_block_list(head));

    /* k. */
    if (!isDisabled(maxLine)) {
        if (compWithRef) {
            if (m.someRan && f.covered > 0)
                ++m.newlyCovered;
        } else {
            uint64_t hits = 0;
            g_cl.bFetchHitCount(maxLine, maxCol, &hits, false, nullptr, nullptr, nullptr, nullptr);
        }
    }
    VEMTRA_Free_Segment(segment);
    if (reference != nullptr)
        VEMTRA_Free_Segment(reference);

    /* 5. */
    reportFunction(c, f, entries, true);
    listFunction(c, f, newFunction);
    return true;
}

}  // namespace

/* Links the module's functions in the order `ordered` gives them. */
template <typename Ordered>
static void linkByLine(const Ordered &ordered)
{
    COMP *head = nullptr;
    COMP *previous = nullptr;
    for (COMP *c : ordered) {
        if (previous != nullptr)
            previous->next_by_line = c;
        else
            head = c;
        previous = c;
    }
    for (COMP *c : ordered)
        c->first_by_line = head;
    previous->next_by_line = nullptr;
    first_func_line = head;
}

/* The line order when two functions share a line: groups of equal lines in
 * chain order. A new line lower than all or higher than all opens a group
 * at that end; an entry joining the head's group goes right after the
 * head; one joining any other group goes before its members. */
static void orderSharedLines(COMP *first)
{
    std::map<int32_t, std::list<COMP *>> groups;
    for (COMP *c = first; sameModule(c, first->fileName); c = c->next) {
        if (groups.empty() || c->line > groups.rbegin()->first) {
            groups[c->line].push_back(c);
        } else if (c->line < groups.begin()->first) {
            groups[c->line].push_front(c);
        } else if (c->line == groups.begin()->first) {
            std::list<COMP *> &headGroup = groups.begin()->second;
            headGroup.insert(std::next(headGroup.begin()), c);
        } else {
            groups[c->line].push_front(c);
        }
    }
    std::vector<COMP *> ordered;
    for (auto &group : groups)
        ordered.insert(ordered.end(), group.second.begin(), group.second.end());
    linkByLine(ordered);
}

void order_func(COMP *first)
{
    if (first == nullptr)
        return;
    /* Functions on lines of their own (the usual case) simply go by line. */
    std::vector<COMP *> ordered;
    for (COMP *c = first; sameModule(c, first->fileName); c = c->next)
        ordered.push_back(c);
    std::sort(ordered.begin(), ordered.end(), [](const COMP *a, const COMP *b) { return a->line < b->line; });
    for (size_t i = 1; i < ordered.size(); ++i) {
        if (ordered[i]->line == ordered[i - 1]->line) {
            orderSharedLines(first);
            return;
        }
    }
    linkByLine(ordered);
}

bool isDupName(char *name, unsigned line, func **table, int count, int direction, int *index)
{
    if (name == nullptr || table == nullptr || count < 1)
        return false;
    for (int step = 0; step < count; ++step) {
        int i = direction < 0 ? count - 1 - step : step;
        const func *f = table[i];
        if (f != nullptr && f->line == line && f->name != nullptr && strcmp(f->name, name) == 0) {
            if (index != nullptr)
                *index = i;
            return true;
        }
    }
    return false;
}

bool markBlocks(COMP *first)
{
    const char *fileName = first->fileName;

    /* 1. The module's records and its position table. */
    functionCoverage = 0.0;
    blockCoverage = 0.0;
    startModuleReport(&currentModule, fileName);
    writeModuleOpen(outtxt, outxml, fileName);
    if (!g_cl.bAddFilename(fileName))
        return false;
    if (!g_cl.bSetName(fileName))
        return false;

    /* 2. The profile. */
    if (pgofDPIFile == nullptr) {
        fprintf(stderr, MSG_NO_DPI, g_lpszDPIFileName);
        tvx_Exit(1);
    }
    if (pgofDPIFile->runs == 0) {
        fputs(MSG_ZERO_RUNS, stderr);
        VEMTRA_Close_Dpi_File(pgofDPIFile);
        pgofDPIFile = nullptr;
        tvx_Exit(1);
    }

    /* 3. The function table: one slot per entry, covered functions from the
     * start, uncovered ones from the end. */
    int entries = 0;
    for (const COMP *c = first; sameModule(c, fileName); c = c->next)
        ++entries;
    fileFuncs = static_cast<func **>(calloc(entries, sizeof(func *)));
    if (fileFuncs == nullptr) {
        fprintf(stderr, MSG_NO_MEMORY, static_cast<int>(entries * sizeof(func *)), "function table");
        tvx_Exit(1);
    }
    fileFuncsCovered = fileFuncs;
    fileFuncsUncovered = fileFuncs + entries;
    numFileFuncs = numFileFuncsCovered = numFileFuncsUncovered = 0;
    ModuleTally m;

    /* 4, 5. Every function. */
    for (COMP *c = first; sameModule(c, fileName); c = c->next)
        if (!processFunction(c, fileName, m))
            return false;

    /* 6. The module's numbers and status. */
    unsigned coveredFunctions = compWithRef ? m.newlyCovered : m.withCounts;
    uint32_t status = 0;
    if (!compWithRef)
        status = m.someRan ? FILE_COVERED : FILE_UNCOVERED;
    else if (m.newlyCovered > 0)
        status = m.missingFromRef == m.functions ? FILE_UNCOVERED : FILE_COVERED;
    if (m.functions != 0) {
        functionCoverage = 100.0 * coveredFunctions / m.functions;
        if (m.blocks != 0)
            blockCoverage = 100.0 * m.coveredBlocks / m.blocks;
    }
    filename_list_node *entry = g_cl.fileListTail;
    entry->fileFlags |= status;
    entry->totalFuncs = m.functions;
    entry->coveredFuncs = coveredFunctions;
    entry->funcPercent = functionCoverage;
    entry->totalBlocks = m.blocks;
    entry->coveredBlocks = m.coveredBlocks;
    entry->blockPercent = blockCoverage;

    currentModule.functionsTotal = m.functions;
    currentModule.functionsCovered = coveredFunctions;
    currentModule.blocksTotal = m.blocks;
    currentModule.blocksCovered = m.coveredBlocks;
    currentModule.functionPercent = functionCoverage;
    currentModule.blockPercent = blockCoverage;
    currentModule.covered = status == FILE_COVERED;

    ++totalNumberOfFiles;
    if (status == FILE_COVERED)
        ++totalNumberOfFilesCovered;
    totalNumberOfProcs += m.functions;
    totalNumberOfProcsCovered += coveredFunctions;
    totalNumberOfBlocks += m.blocks;
    totalNumberOfBlocksCovered += m.coveredBlocks;

    writeModuleClose(outxml);
    return compWithRef ? m.coveredBlocks > 0 : true;
}

void releaseModuleTables()
{
    for (int i = 0; i < numFileFuncsCovered; ++i)
        free(fileFuncsCovered[i]);
    for (int i = 0; i < numFileFuncsUncovered; ++i)
        free(fileFuncsUncovered[i]);
    free(fileFuncs);
    fileFuncs = fileFuncsCovered = fileFuncsUncovered = nullptr;
    numFileFuncs = numFileFuncsCovered = numFileFuncsUncovered = 0;
}
