/* file_frameset.h -- the frameset of one source file: the toolbar and the
 * file's function lists on the left, its annotated listing on the right. */
#ifndef VEMCOV_REPORT_FILE_FRAMESET_H
#define VEMCOV_REPORT_FILE_FRAMESET_H

#include <cstdio>

/* The name of the listing's frame, which the function lists target. */
extern const char LISTING_FRAME_NAME[];  /* "src_view" */

/* Writes the frameset page of `path`. The left column holds the toolbar
 * and, first, the uncovered list in order 1, then the covered list in
 * order 1, each when the file has such functions. */
void writeFileFrameset(FILE *page, const char *path, const char *ext, bool hasCovered, bool hasUncovered);

/* Creates the frameset page in the report directory. False, after
 * "Unable to create root html file %s!\n" with the path, when it cannot be
 * created. */
bool bCreateFileFrameset(const char *path, const char *ext, bool hasCovered, bool hasUncovered);

#endif
