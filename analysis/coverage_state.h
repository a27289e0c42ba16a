/* coverage_state.h -- the per-module function tables and percentages, and
 * the run totals, that the coverage analysis fills and the report reads. */
#ifndef VEMCOV_ANALYSIS_COVERAGE_STATE_H
#define VEMCOV_ANALYSIS_COVERAGE_STATE_H

#include "analysis/coverage_records.h"

class parser;

/* Function table of the current module: one slot per COMP entry. Covered
 * entries grow upward from the start; uncovered ones grow downward from the
 * end, so fileFuncsUncovered points at the most recently added one. */
extern func **fileFuncs;
extern func **fileFuncsCovered;
extern func **fileFuncsUncovered;
extern int numFileFuncs;
extern int numFileFuncsCovered;
extern int numFileFuncsUncovered;

extern double functionCoverage;   /* current module's function percentage */
extern double blockCoverage;      /* current module's block percentage */

/* Run totals, accumulated over all modules. */
extern unsigned totalNumberOfFiles;
extern unsigned totalNumberOfFilesCovered;
extern unsigned totalNumberOfProcs;
extern unsigned totalNumberOfProcsCovered;
extern unsigned totalNumberOfBlocks;
extern unsigned totalNumberOfBlocksCovered;

extern COMP *first_func_line;     /* head of the current module's line chain */
extern parser *pars;              /* the current module's comment parser, or null */

/* The block list's storage, reused by every function of the run: one slot
 * per block index of the current function. */
extern blocks *lb_blockNum;
extern unsigned s_blockNum;       /* its capacity */

#endif
