/* run_state.h -- state of the run that the driver owns and the analysis and
 * report stages read. */
#ifndef VEMCOV_DRIVER_RUN_STATE_H
#define VEMCOV_DRIVER_RUN_STATE_H

#include <cstdio>

#include "analysis/coverage_records.h"
#include "shared/vemtra/tallyfold/vemtra_records.h"

extern DPI_FILE *pgofDPIFile;     /* the profile being reported */
extern DPI_FILE *pgofRefDPIFile;  /* the reference profile of -ref, or null */
extern FILE *outxml;              /* -xmlbcvrgfull stream, or null */
extern FILE *outtxt;              /* -txtbcvrgfull stream, or null */
extern COMP *componentList;       /* head of the sorted function list */
extern int numComponents;         /* its length; the progress meter's total */
extern int isWindows;             /* host flag; 0 on this platform */

#endif
