/* report_files.h -- where the HTML report's files go: the current
 * directory, or the directory of -outdir. Page names stay as the naming
 * rules make them (relative, "CodeCoverage/..."); only the place they are
 * opened in changes. */
#ifndef VEMCOV_REPORT_REPORT_FILES_H
#define VEMCOV_REPORT_REPORT_FILES_H

#include <cstdio>

#include "report/file_handoff.h"

/* Makes `dir` (null or "": the current directory) the report's place,
 * creating it and its parents when missing. False, with errno set, when it
 * cannot be created. */
bool setReportRoot(const char *dir);

/* checked_open_rewritable of the report file `name` in the report's place:
 * close it with checked_close_rewritten. */
FILE *openReportFile(const char *name);

/* openReportFile(name) for a page written and closed before the same
 * thread opens the next one: the stream is given the thread's page buffer,
 * so that it needs no buffer of its own and no look at the file to size
 * one. While pages are handed off (-j), the file is opened and written on
 * the hand-off thread. A file that cannot be opened prints `failure`'s
 * message: here, with a null result, or there, ending the run. */
FILE *openPageFile(const char *name, const OpenFailure &failure);

/* mkdir of the directory `name` in the report's place with `mode`; the
 * result is the system call's. */
int makeReportDir(const char *name, unsigned mode);

#endif
