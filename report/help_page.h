/* help_page.h -- the on-line help of the report. */
#ifndef VEMCOV_REPORT_HELP_PAGE_H
#define VEMCOV_REPORT_HELP_PAGE_H

#include <cstdio>

/* Writes the whole help page: what the tool does, the colours in force
 * (from the colour table; the infeasible-code row only when
 * `showInfeasible`), the dynamic counters and the summary pages. */
void writeHelpPage(FILE *page, bool showInfeasible);

#endif
