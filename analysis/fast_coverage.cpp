/* fast_coverage.cpp -- the function and block coverage files of the fast
 * road: one walk over the dynamic profile's (file, function) pairs per file,
 * each segment read once. */
#include "analysis/fast_coverage.h"

#include <cstring>
#include <memory>
#include <string>

#include "analysis/block_files.h"
#include "analysis/comment_parser.h"
#include "analysis/coverage.h"
#include "analysis/coverage_state.h"
#include "analysis/percent_format.h"
#include "driver/component_file.h"
#include "driver/console.h"
#include "driver/demangle.h"
#include "driver/run_state.h"
#include "driver/settings.h"
#include "shared/vemtra/client/dpi_file.h"
#include "shared/vemtra/client/dpi_segment.h"

static const char MSG_CORRUPT[] = "%s is corrupt!\n";

static const char TXT_FIRST_MODULE[] = "Covered Functions in File: \"%s\"\n";
static const char TXT_NEXT_MODULE[] = "\nCovered Functions in File: \"%s\"\n";
static const char TXT_FUNCTION[] = "\"%s\"\t%s\t%u\t%u\t%6.2f\n";
static const char XML_BLOCKS[] = "<BLOCKS total=\"%u\" covered=\"%u\" coverage=\"%6.2f%%\">";
static const char XML_BLOCKS_CLOSE[] = "</BLOCKS>\n";

static bool isFunctionKind(int kind)
{
    return kind == FAST_TXT_FUNCTIONS || kind == FAST_XML_FUNCTIONS;
}

static bool isXmlKind(int kind)
{
    return kind == FAST_XML_FUNCTIONS || kind == FAST_XML_BLOCKS;
}

/* The module header, written when the pair's file differs from the last
 * one (`previous` is null before the first). */
static void writeModuleHeader(FILE *out, int kind, const char *file, const char *previous)
{
    if (isXmlKind(kind)) {
        if (previous != nullptr)
            writeModuleClose(out);
        writeModuleOpen(nullptr, out, file);
    } else {
        fprintf(out, previous == nullptr ? TXT_FIRST_MODULE : TXT_NEXT_MODULE, file);
    }
}

/* What one walk over a function's blocks found. */
struct BlockTally {
    unsigned total;     /* feasible blocks (function kinds) */
    unsigned covered;   /* feasible blocks with a count (function kinds) */
    unsigned executed;  /* listed blocks with a count (block kinds) */
    blocks *head;       /* the block list (block kinds) */
};

/* Walks the segment's blocks in index order. Blocks at line 0 or column 0
 * leave the total; without line information every block is at (1, 1). With
 * a parser, the function kinds take blocks on infeasible lines out of the
 * total and the block kinds leave them out of the list. */
static BlockTally tallyBlocks(const DPI_S *dpi, int kind, const parser *markers)
{
    bool functionKind = isFunctionKind(kind);
    bool lineInfo = (dpi->flags & VEMTRA_SEG_LINE_INFO) != 0;
    BlockTally tally = {dpi->block_cnt, 0, 0, nullptr};
    for (uint32_t i = 0; i < dpi->block_cnt; i++) {
        uint64_t count = dpi->blocks[i].count;
        int line = 1, col = 1;
        if (lineInfo) {
            line = static_cast<int>(dpi->blocks[i].start_line);
            col = static_cast<int>(dpi->blocks[i].start_col);
            if (line == 0 || col == 0) {
                tally.total--;
                continue;
            }
        }
        bool infeasible = markers != nullptr && markers->is_disabled_line(static_cast<unsigned long>(line));
        if (functionKind) {
            if (infeasible)
                tally.total--;
            else if (count != 0)
                tally.covered++;
            continue;
        }
        if (infeasible)
            continue;
        tally.head = add_block_cov(line, col, static_cast<double>(count), lb_blockNum, tally.head,
                                   static_cast<int>(i));
        if (count > 0)
            tally.executed++;
    }
    tally.head = sort_block_list(tally.head);
    return tally;
}

/* The function's record in the file of `kind`. */
static void writeFunction(FILE *out, int kind, const char *name, const DPI_S *dpi, const BlockTally &tally)
{
    char frequency[FREQUENCY_TEXT_SIZE];
    switch (kind) {
    case FAST_TXT_BLOCKS:
        /* The block lines follow even when no block ran, under the line of
         * the function before. */
        if (tally.executed > 0)
            writeFunctionOpen(out, nullptr, name, functionFrequencyText(dpi, frequency));
        printTXT_bcov_full(out, tally.head);
        break;
    case FAST_XML_BLOCKS:
        if (tally.executed > 0) {
            writeFunctionOpen(nullptr, out, name, functionFrequencyText(dpi, frequency));
            writeFullFunctionBlocks(nullptr, out, tally.head);
        }
        break;
    default: {
        if (tally.covered == 0)
            break;
        functionFrequencyText(dpi, frequency);
        double percent = roundHalfUp2(coveragePercent(tally.covered, tally.total));
        if (kind == FAST_TXT_FUNCTIONS) {
            fprintf(out, TXT_FUNCTION, name, frequency, tally.total, tally.covered, percent);
        } else {
            writeFunctionOpen(nullptr, out, name, frequency);
            fprintf(out, XML_BLOCKS, tally.total, tally.covered, percent);
            fputs(XML_BLOCKS_CLOSE, out);
            writeFunctionClose(out);
        }
        break;
    }
    }
}

/* The infeasible-code markers of the pairs' files. The parser of a pair is
 * made from its file and the line chain of the static profile's first
 * module, which stays the same for the whole walk; so consecutive pairs of
 * one file share one scan, and each further pair repeats the warnings that
 * a scan of its own would have printed. */
class MarkerScans {
public:
    const parser *forFile(const char *file)
    {
        if (markers != nullptr && scannedFile == file) {
            markers->replay_warnings();
            return markers.get();
        }
        markers.reset();
        if (!chainOrdered && componentList != nullptr)
            order_func(componentList);
        chainOrdered = true;
        markers.reset(new parser(file, one_line_disable, start_disable_block, end_disable_block));
        scannedFile = file;
        return markers.get();
    }

private:
    std::unique_ptr<parser> markers;
    std::string scannedFile;
    bool chainOrdered = false;
};

bool bOutputFunctionBlockFastCoverage(FILE *out, int kind)
{
    /* 1. The first pair. */
    char *file = nullptr, *function = nullptr;
    VEMTRA_Get_First_File_Function_Pair(pgofDPIFile, &file, &function);
    if (file == nullptr || function == nullptr) {
        fprintf(stderr, MSG_CORRUPT, g_lpszDPIFileName);
        tvx_Exit(1);
    }

    /* 2. The number of functions. */
    uint32_t count = pgofDPIFile->segment_count;
    if (count == 0)
        return true;

    /* 3. One function per pair. A pair that is skipped is not passed: the
     * rest of the walk sees it again and writes nothing more. */
    const char *previous = nullptr;
    MarkerScans scans;
    for (uint32_t i = 0; i < count; i++) {
        int length = 0;
        std::string name = demangleName(function, g_iDemangFlag, &length);
        if (!isInComponents(file))
            continue;

        /* The markers count for every function; the line chain the parser
         * consults is the first module's. */
        const parser *markers = Infeasible_markers_specified ? scans.forFile(file) : nullptr;

        if (previous == nullptr || strcmp(file, previous) != 0) {
            writeModuleHeader(out, kind, file, previous);
            previous = file;
        }

        DPI_SEGMENT *handle = VEMTRA_Get_Segment(pgofDPIFile, g_lpszDPIFileName, file, function);
        if (handle == nullptr)
            continue;
        const DPI_S *dpi = handle->segment;
        if (!isFunctionKind(kind))
            ensureBlockArray(dpi->block_cnt);
        BlockTally tally = tallyBlocks(dpi, kind, markers);
        writeFunction(out, kind, name.c_str(), dpi, tally);

        VEMTRA_Free_Segment(handle);
        VEMTRA_Get_Next_File_Function_Pair(pgofDPIFile, &file, &function);
    }

    /* 4. */
    if (isXmlKind(kind))
        writeModuleClose(out);
    return true;
}
