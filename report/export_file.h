/* export_file.h -- the file an export writer writes: created at the start
 * of the full road, closed with a check at its end. */
#ifndef VEMCOV_REPORT_EXPORT_FILE_H
#define VEMCOV_REPORT_EXPORT_FILE_H

#include <cstdio>

/* Creates `path` for writing; a file that cannot be created ends the run
 * with "Couldn't open file %s for output!\n" and status 1, as the other
 * output files do. */
FILE *createExportFile(const char *path);

#endif
