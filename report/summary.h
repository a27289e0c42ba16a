/* summary.h -- the project summary page and the root frameset of the
 * report. */
#ifndef VEMCOV_REPORT_SUMMARY_H
#define VEMCOV_REPORT_SUMMARY_H

#include <cstdint>
#include <cstdio>

/* The run totals the summary shows. */
struct SummaryTotals {
    uint64_t files, coveredFiles;
    uint64_t functions, coveredFunctions;
    uint64_t blocks, coveredBlocks;
};

/* Writes the summary page (the Dir name of `summaryName`), from the run
 * totals of the coverage analysis, and the root frameset (the plain name of
 * `rootName`, in the current directory) that shows it above the covered and
 * uncovered file tables. `coveredName` and `uncoveredName` are the tables'
 * base names, null when a table was not written; `project` may be null.
 * False, after "Unable to create root html file %s!\n" with the page's base
 * name, when a page cannot be created. */
bool bCreateSummary(const char *project, const char *rootName, const char *summaryName,
                    const char *coveredName, const char *uncoveredName, const char *ext);

/* The summary page itself. */
void writeSummaryPage(FILE *page, const char *project, const SummaryTotals &totals, bool reference);

/* The root frameset itself. */
void writeRootFrameset(FILE *page, const char *project, const char *summaryName,
                       const char *coveredName, const char *uncoveredName, const char *ext,
                       bool reference);

#endif
