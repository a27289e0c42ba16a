/* file_table.h -- the tables of covered and uncovered source files, one
 * page per sort order. */
#ifndef VEMCOV_REPORT_FILE_TABLE_H
#define VEMCOV_REPORT_FILE_TABLE_H

#include "analysis/coverage_store.h"
#include "report/sort_order.h"

/* The covered-file table `name` in the orders 1, -1, 2, -2, 3 and -3. True
 * when every page was written. */
bool bCreateCovProfMain(const char *name, const char *ext, const char *project, int count,
                        filename_list_node **files);

/* The uncovered-file table `name` in the orders 1 and -1, and with a
 * reference profile also 2, -2, 3 and -3. True when every page was written. */
bool bCreateUnCovProfMain(const char *name, const char *ext, const char *project, int count,
                          filename_list_node **files);

/* One page of a file table: the Dir order name of `name` with order + 3.
 * `project` may be null. An order outside -3..3 ends the run (1); a page
 * that cannot be created prints "Unable to create root html file %s!\n"
 * with `name` and gives false. The files themselves are not reordered. */
bool bCreateCov(bool covered, SortType order, const char *name, const char *ext,
                const char *project, int count, filename_list_node **files);

/* Sorts `index` (positions into `files`) in `order`: by the file name after
 * its last "/" (1), by function percentage (2) or by block percentage (3),
 * each then by that name; a negative order reverses every key. Fewer than 32
 * entries are exchange-sorted, more are quicksorted. An order that cannot
 * sort ends the run (1). */
void sortFileIndex(int *index, int count, filename_list_node **files, SortType order);

#endif
