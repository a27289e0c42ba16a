/* run_summary.h -- what a run tells CI at its end: the totals on standard
 * output (-summary) and the coverage gates (-minblock, -minfunc). */
#ifndef VEMCOV_DRIVER_RUN_SUMMARY_H
#define VEMCOV_DRIVER_RUN_SUMMARY_H

#include <cstdio>

#include "analysis/module_report.h"

/* Three lines: files, functions and blocks, each covered, total and the
 * percentage as the summary page rounds it:
 *   "Files:     3 of 4 covered (75.00%)\n" */
void printRunSummary(FILE *out, const RunReport &run);

/* 3 when the block coverage is below `minBlock` or the function coverage
 * below `minFunc` (a negative threshold is no gate), after printing
 * "ERROR: block coverage 56.32% is below the required 80.00%\n" (or
 * "function coverage") on standard error for each; else 0. Coverages are
 * compared as the summary page shows them, rounded to two decimals. */
int coverageGateStatus(const RunReport &run, double minBlock, double minFunc);

#endif
