/* counter_lines.h -- the dynamic counter lines of the annotated listing
 * (-counts).
 *
 * While a source line is copied, its marker line collects one character per
 * source character: "^" under a recorded position, the character itself for
 * a tab, line feed or carriage return, else a blank. After the line the
 * markers are printed as labels on as many counter lines as needed: each
 * label stands under its position, and a label shares a counter line with
 * the one before it only when there is room for the one before it.
 */
#ifndef VEMCOV_REPORT_COUNTER_LINES_H
#define VEMCOV_REPORT_COUNTER_LINES_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

class coverage_list;

/* Characters of a new marker line (a terminator follows them). */
const size_t MARKER_LINE_START = 1024;

/* The marker line of the source line being copied. */
struct MarkerLine {
    char *text;        /* length characters and a terminator */
    size_t length;
    size_t capacity;   /* characters it holds before it must grow */
};

/* Allocates an empty marker line; out of memory ends the run (2). */
void markerLineCreate(MarkerLine *marker);

/* Frees the marker line. */
void markerLineFree(MarkerLine *marker);

/* Appends one character, doubling the line when it is full. False, after
 * "Error - Not enough memory!! (bOutputLineCoverage)\n" on standard output,
 * when it cannot grow. */
bool markerLineAppend(MarkerLine *marker, char c);

/* The marker character of an unrecorded source character. */
inline char markerFor(char c)
{
    return (c == '\t' || c == '\n' || c == '\r') ? c : ' ';
}

/* Writes the label of the position (line, column) of the current file into
 * `label` (at least COUNTER_LABEL_MAX bytes): "^", the count between blanks
 * (the never-executed marker as 0) and, for two or more blocks,
 * "(executed/blocks)", or "(blocks)" when none or all of them ran. Returns
 * its length. */
const size_t COUNTER_LABEL_MAX = 96;
size_t counterLabel(char *label, coverage_list &store, uint32_t line, uint32_t column);

/* Writes the counter lines of the marker line for source line `line` and
 * leaves the marker line's "^" characters blank. Each counter line starts
 * with eight blanks and an anchor in `colour`, and ends with "</a>\n". */
void writeCounterLines(FILE *page, MarkerLine *marker, coverage_list &store, uint32_t line, const char *colour);

#endif
