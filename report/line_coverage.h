/* line_coverage.h -- the report pages of one source file: its annotated
 * listing, its function lists and its frameset, written from the state the
 * coverage analysis left for the file. */
#ifndef VEMCOV_REPORT_LINE_COVERAGE_H
#define VEMCOV_REPORT_LINE_COVERAGE_H

#include <vector>

/* Kept by the run driver for the whole run, so that the listing's reading
 * buffer is allocated once. */
struct ListingWorkArea {
    std::vector<char> readBuffer;
};

/* Writes the pages of the coverage store's current file (g_cl): the listing
 * from the source, then the covered list in the orders 1, -1, 2, -2 when the
 * file has covered functions, the uncovered list in the orders 1, -1, 3, -3
 * (2, -2 under -ref) when it has uncovered ones, then the file's frameset.
 * Reads the module's function tables and percentages, its parser (pars) and
 * line chain (first_func_line), and the settings.
 * False, after its message, when the source cannot be opened ("Error -
 * Cannot open %s!\n"), a page cannot be created, or the marker line cannot
 * grow; the frameset is then not written. */
bool bOutputLineCoverage(const char *ext, ListingWorkArea *work);

class coverage_list;
class parser;
struct COMP;
struct func;

/* What the pages of one source file are written from: the run's current
 * module, or one taken over from it (detachCurrentModule) to be written on
 * another thread. */
struct ModulePages {
    const char *path;
    coverage_list *store;         /* its current file holds the positions */
    const parser *infeasible;
    COMP *functionsByLine;
    double functionPercent;
    double blockPercent;
    func **covered;
    int coveredCount;
    func **uncovered;
    int uncoveredCount;
};

/* The pages of `module`, as bOutputLineCoverage writes the current one. */
bool writeModulePages(const ModulePages &module, const char *ext, ListingWorkArea *work);

#endif
