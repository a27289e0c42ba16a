/* colors.h -- the colour classes of the report and their HTML colours. */
#ifndef VEMCOV_REPORT_COLORS_H
#define VEMCOV_REPORT_COLORS_H

#include <cstdio>

enum Color {
    COLOR_INFEASIBLE = 1,          /* -xcolor: lines excluded by markers */
    COLOR_UNKNOWN = 2,             /* -ucolor: no code at the position */
    COLOR_COVERED = 3,             /* -ccolor */
    COLOR_PARTIAL = 4,             /* -pcolor: some blocks of a position ran */
    COLOR_UNCOVERED_BLOCK = 5,     /* -bcolor */
    COLOR_UNCOVERED_FUNCTION = 6,  /* -fcolor: function never called */
    COLOR_INFO = 7                 /* -icolor: counter lines */
};

/* Colour strings indexed by Color (slot 0 unused); written as they stand
 * into style attributes, so SetBGColor stores them escaped for that. */
extern const char *BGColor[8];

/* Stores `colour` (escaped as an HtmlValue) for class `color`; an invalid
 * class prints
 * "ERROR: unknown color %d\n" to standard output and ends the run (1). */
void SetBGColor(int color, const char *colour);

/* Makes the partial colour equal to the covered colour now in the table. */
void SetNoPartialColor();

/* The colour string of a class (no range check). */
const char *takeBGColor(int color);

/* Checks both classes like SetBGColor and writes the anchor that switches
 * the listing to `newColor`. */
void changeColor(FILE *stream, int newColor, int oldColor);

/* The same into a page being built. */
class PageWriter;
void changeColor(PageWriter &page, int newColor, int oldColor);

#endif
