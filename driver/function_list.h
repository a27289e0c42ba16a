/* function_list.h -- the list of profiled functions of the modules of
 * interest, read from the static profile: one COMP record per function,
 * sorted by file name, display name and profile name, with the first record
 * of every module and the instances of one source function marked.
 */
#ifndef VEMCOV_DRIVER_FUNCTION_LIST_H
#define VEMCOV_DRIVER_FUNCTION_LIST_H

#include "analysis/coverage_records.h"

/* Reads every header line of the static profile `spiFileName` (source root
 * applied), keeps the functions whose module isInComponents, sorts and marks
 * them, and stores the list in componentList and its length in
 * numComponents. Ends the run with status 1 when the file cannot be opened
 * ("ERROR: cannot open the SPI file, %s.\n"), a line is corrupt or memory
 * runs out, and with status 2 when a display name cannot be copied. */
void buildComponentList(const char *spiFileName);

/* Sorts the `count` records of `array` ascending by file name, then display
 * name (when both have one), then profile name; equal records keep their
 * order. */
void QuickSortComponents(COMP **array, int count);

/* Frees the list and the file names its records share; the run itself
 * keeps the list to its end. */
void freeComponentList();

#endif
