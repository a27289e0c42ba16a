/* table_markup.h -- markup shared by the summary page and the file tables:
 * the page title, the orange-framed table and the column labels. */
#ifndef VEMCOV_REPORT_TABLE_MARKUP_H
#define VEMCOV_REPORT_TABLE_MARKUP_H

#include <cstdio>

/* Writes from "<TABLE" of the frame (with the spacer image) to the first
 * header row's "<TR BGCOLOR=\"#F0F0F0\">\n". */
void writeFramedTableStart(FILE *page);

/* A header row of the framed table. */
extern const char HEADER_ROW_START[];       /* "<TR BGCOLOR=\"#F0F0F0\">\n" */

/* Between the header rows and the data rows. */
extern const char TABLE_HEAD_END[];         /* "</TR>\n</THEAD>\n<TBODY>\n" */

/* A data row. */
extern const char DATA_ROW_START[];

/* After the last data row's "</TR>\n": closes the inner and the framing
 * table. */
extern const char FRAMED_TABLE_END[];

/* The column labels: covered, uncovered and coverage, or with a reference
 * profile missed, similar and miss. */
struct CoverageLabels {
    const char *covered;
    const char *uncovered;
    const char *coverage;
};
CoverageLabels coverageLabels(bool reference);

/* "<title>...</title>\n" of the root and table pages, with the project
 * when there is one; the per-file framesets pass their source path. */
void writeReportTitle(FILE *page, const char *project);

#endif
