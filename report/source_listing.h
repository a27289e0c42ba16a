/* source_listing.h -- the annotated listing of one source file: the source
 * copied into a page with numbered lines, each stretch of text painted in
 * the colour class of the recorded position where it starts, and, with
 * -counts, counter lines under the code.
 */
#ifndef VEMCOV_REPORT_SOURCE_LISTING_H
#define VEMCOV_REPORT_SOURCE_LISTING_H

#include <cstdint>
#include <cstdio>
#include <vector>

#include "analysis/coverage_records.h"
#include "report/counter_lines.h"

class coverage_list;
class parser;

/* The settings the listing reads. */
struct ListingOptions {
    bool counts;               /* -counts: counter lines under the code */
    bool reference;            /* -ref: differential colours, "miss rate" */
    bool floatingInfo;         /* -icolor floating: counter lines in the code's colour */
    const char *ownerAddress;  /* web-page owner, for the page foot */
    const char *ownerName;
};

/* What the listing shows of one source file. */
struct ListingSource {
    const char *path;              /* the source path, as the store has it */
    double funcPercent;            /* the file's function and block percentages */
    double blockPercent;
    coverage_list *store;          /* its current file holds the positions */
    const parser *infeasible;      /* the file's infeasible lines, or null */
    const COMP *functionsByLine;   /* -ref: the file's functions ascending by line */
    const char *bytes = nullptr;   /* the source read whole before, or null: read from the stream */
    size_t size = 0;               /* the number of those bytes */
};

/* The colour class of a recorded position from what the store holds for it:
 * count, blocks, executed blocks, the last-block adjustment and the
 * new-function flag. */
int classifyPosition(uint64_t count, uint32_t blocks, uint32_t executed, bool lastBlockAdjusted,
                     bool newFunction, bool reference);

/* "%6u) " with `line`; lines above 999999 are numbered 999999. */
void writeLineNumber(FILE *page, uint32_t line);

/* Copies the source into the listing page: head, lines, and the foot when
 * at least one line was listed. The source is `file.bytes` when there are
 * any, else read from `source`. `marker` is an empty marker line and
 * `readBuffer` the reading buffer kept across files. False only when the
 * marker line cannot grow. */
bool writeSourceListing(FILE *page, FILE *source, const ListingSource &file, const ListingOptions &options,
                        MarkerLine *marker, std::vector<char> &readBuffer);

#endif
