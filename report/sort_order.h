/* sort_order.h -- the sort orders of the report's tables.
 *
 * A table that can be sorted is written once per order, and the order is
 * part of the page name as order + 3 (0 to 6). Orders 1, 2 and 3 sort by
 * name, by coverage (or miss rate) and by blocks; a negative order sorts the
 * same key descending. A column header links to the page of the order that
 * a click on it should show.
 */
#ifndef VEMCOV_REPORT_SORT_ORDER_H
#define VEMCOV_REPORT_SORT_ORDER_H

/* A sort order, -3 to 3. */
typedef int SortType;

/* The sortable columns of a table, in header-link table order. */
enum SortColumn {
    SORT_COLUMN_NAME = 0,      /* "function" or "Name" */
    SORT_COLUMN_COVERAGE = 1,  /* "coverage"/"miss rate", or the function percentage */
    SORT_COLUMN_BLOCKS = 2     /* "blocks", or the block percentage */
};

/* The page number (order + 3) that the header of `column` links to on the
 * page of `order`. `order` must lie in -3..3. */
int sortHeaderLink(SortType order, SortColumn column);

/* True for 0 to 3, false for 4; any other value prints
 * "ERROR: unknown sort type %d\n in isLinear" and ends the run (1). */
bool isLinear(SortType order);

/* A page order outside -3..3 prints "Invalid sorting option %d\n" to
 * standard error and ends the run (1). */
void checkSortOption(SortType order);

/* An order that cannot sort (0, or outside -3..3) prints
 * "Internal error: invalid sort oder: %d\n" to standard error and ends the
 * run (1). */
void checkSortKeyOrder(SortType order);

#endif
