/* usage.h -- the two help texts of the command line. */
#ifndef VEMCOV_DRIVER_USAGE_H
#define VEMCOV_DRIVER_USAGE_H

#include <cstdio>

/* Writes the usage text ("Usage: <program>", the synopsis and one entry per
 * option) to `stream`. */
void printUsage(FILE *stream, const char *program);

/* The version that --version prints. */
extern const char VEMCOV_VERSION[];

/* Writes the External options text of "-helpx" (the TVX database options
 * and -nohtml) to `stream`. */
void printExternalOptions(FILE *stream);

#endif
