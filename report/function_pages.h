/* function_pages.h -- the pages that list a source file's covered and
 * uncovered functions, one page per sort order. A row links to the
 * function in the file's listing; a column header links to the page of
 * another order.
 */
#ifndef VEMCOV_REPORT_FUNCTION_PAGES_H
#define VEMCOV_REPORT_FUNCTION_PAGES_H

#include <cstdio>
#include <string>

#include "analysis/coverage_records.h"
#include "report/sort_order.h"

/* The settings the lists read. */
struct FunctionListOptions {
    bool reference;          /* -ref: "miss rate" columns */
    bool links;              /* rows link to the function's tests in the TVX database */
    const char *dbHost;      /* database host, with or without "http://" */
    const char *dbName;
    const char *dbProject;   /* or null */
    const char *viewerPage;  /* the database server's function page */
};

/* The base name of a list page: "<path>_CvrdFncs_<number>" or
 * "<path>_UncvrdFncs_<number>", where `number` is the order + 3. */
std::string functionListBase(const char *path, bool covered, int number);

/* Sorts functions[0..count-1] in place: orders 1 and -1 by display name
 * (bytewise) then line; 2 and -2 by coverage, blocks, name, line; 3 and -3
 * by blocks, name, line; descending for negative orders. An order that
 * cannot sort ends the run (1). */
void sortFunctions(func **functions, int count, SortType order);

/* Ranks the names of functions[0..count-1] (nameRank) for the sorts of one
 * table that follow: they then compare ranks, with the same results. */
void rankFunctionNames(func **functions, int count);

/* Writes a display name: "<", ">", '"' and "'" as entities (htmlEntity),
 * an "@" with the decimal digits after it left out. */
void writeFunctionName(FILE *page, const char *name);

/* Writes one list page (sorting the functions in the page's order). */
void writeFunctionList(FILE *page, bool covered, SortType order, const char *path, const char *ext,
                       func **functions, int count, const FunctionListOptions &options);

/* Creates the list page of `path` in `order` from the run's settings.
 * True, without writing anything, under -nohtml. An order outside -3..3
 * ends the run (1); a page that cannot be created gives false after
 * "Cannot open %s for output!\n". */
bool bOutputFunctionCoverageFor(bool covered, SortType order, const char *path, const char *ext,
                                func **functions, int count);

/* bOutputFunctionCoverageFor for each of orders[0..orderCount-1] in turn,
 * the rows made once for all of them; false at the first page that cannot
 * be created. */
bool writeFunctionListPages(bool covered, const SortType *orders, int orderCount, const char *path, const char *ext,
                            func **functions, int count);

#endif
