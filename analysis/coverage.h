/* coverage.h -- block and function coverage of one module (source file).
 *
 * For each module the run driver calls order_func, creates the module's
 * comment parser (pars), calls markBlocks, and afterwards releases the
 * module's state with releaseModuleTables and the store's deleteCurrentFile.
 */
#ifndef VEMCOV_ANALYSIS_COVERAGE_H
#define VEMCOV_ANALYSIS_COVERAGE_H

#include "analysis/coverage_records.h"

/* Display-name prefixes of compiler-generated functions that are skipped. */
extern const char *const ExcludedFunctions[2];

/* Links the entries of the module that starts at `first` (those with its
 * fileName) into a chain ascending by line (next_by_line), sets every
 * member's first_by_line and first_func_line to the chain's head. An entry
 * whose line equals others' goes before them, except that the head keeps its
 * place. */
void order_func(COMP *first);

/* Computes the coverage of the module that starts at `first`: records every
 * block's count in the coverage store (g_cl), fills the function tables
 * (fileFuncs...) and the module percentages, stores the module's totals and
 * status in the store's file entry, adds to the run totals, and writes the
 * module's part of the full block files (outtxt, outxml). Reads the current
 * and the reference profile, the settings and `pars`.
 * Returns false when the store refuses the file or a block (no listing for
 * the module then); otherwise true, except in differential mode, where it
 * is true only when the module has a newly covered block. A missing or
 * zero-run profile, an allocation failure or a bad block index ends the run
 * with status 1. */
bool markBlocks(COMP *first);

/* Whether one of the first `count` entries of `table` has `line` and the
 * display name `name`. A negative `direction` searches from the last entry
 * backward, else from the first forward. On success stores the entry's index
 * (from the table's start) into `index` when that is not null. A null name or
 * table, or a count below 1, gives false. */
bool isDupName(char *name, unsigned line, func **table, int count, int direction, int *index);

/* Frees the module's listed func records and its function table, and resets
 * fileFuncs, fileFuncsCovered, fileFuncsUncovered and their three counts. */
void releaseModuleTables();

#endif
