/* toolbar.h -- the fixed files of the report: toolbar, images and help. */
#ifndef VEMCOV_REPORT_TOOLBAR_H
#define VEMCOV_REPORT_TOOLBAR_H

#include <cstdio>

/* Writes, into the existing report directory, the four images, the on-line
 * help page and the toolbar page that heads each file's frameset; `ext` is
 * the extension of the pages. False, after a message on standard error,
 * when one of the files cannot be created. */
bool createToolBar(const char *ext);

/* The toolbar page: links to the root page and to the help page, and the
 * maker's logo. */
void writeToolBarPage(FILE *page, const char *ext);

#endif
