/* block_files.h -- the "full" block-coverage files (text and XML) written
 * module by module during the coverage computation, the per-function block
 * list they print, and the function frequency that the block files share.
 *
 * Text file:                      XML file:
 *   file - <module>                 <MODULE name = "<module>">
 *   function - <name>\t<freq>       <FUNCTION name="<name>" freq="<freq>">
 *   <inst>\t<line>\t<col>\t<count>  <BLOCK line=".." col=".."><INSTANCE ..>
 *                                   </FUNCTION> ... </MODULE>
 * Names are escaped in the XML file only. Every writer accepts a null
 * stream and then writes nothing.
 */
#ifndef VEMCOV_ANALYSIS_BLOCK_FILES_H
#define VEMCOV_ANALYSIS_BLOCK_FILES_H

#include <cstdint>
#include <cstdio>

#include "analysis/coverage_records.h"
#include "shared/vemtra/tallyfold/vemtra_records.h"

/* Room for the decimal digits of any 64-bit value and the terminator. */
const int FREQUENCY_TEXT_SIZE = 28;

/* ---- the block list ---- */

/* Fills array[index] with the position and count and puts it in front of
 * the list that starts at `head`; returns the new head. The list is in the
 * order the blocks came, newest first, until sort_block_list orders it. */
blocks *add_block_cov(int line, int col, double count, blocks *array, blocks *head, int index);

/* Orders a list built by add_block_cov by position (line, then column);
 * among equal positions the block added latest comes first. Returns the
 * new head. n log n for any arrival order. */
blocks *sort_block_list(blocks *head);

/* Writes "%d\t%d\t%d\t%12.0f\n" (instance, line, column, count) per entry;
 * instances count from 1 at each new position. Returns true. */
bool printTXT_bcov_full(FILE *out, blocks *head);

/* Writes one BLOCK element per position with one INSTANCE per entry.
 * Returns true. */
bool printXML_bcov_full(FILE *out, blocks *head);

/* Makes lb_blockNum hold at least `count` entries. It is kept when its
 * capacity is strictly larger, else replaced by an array of exactly `count`.
 * Allocation failure ends the run with status 1. */
void ensureBlockArray(uint32_t count);

/* ---- the function frequency ---- */

/* The sum of the counts of the segment's entry blocks, accumulated in single
 * precision and truncated. Entry indexes outside the block array are
 * skipped. */
uint64_t functionFrequency(const DPI_S *segment);

/* The frequency as plain decimal digits ("0" for zero) in `buffer`, which is
 * returned. */
const char *functionFrequencyText(const DPI_S *segment, char buffer[FREQUENCY_TEXT_SIZE]);

/* ---- the records of the block files (the fast files share the XML ones) ---- */

/* "file - %s\n" / the MODULE opening. */
void writeModuleOpen(FILE *txt, FILE *xml, const char *module);
/* The MODULE closing (XML only). */
void writeModuleClose(FILE *xml);
/* A function that has counts: its line and FUNCTION opening. */
void writeFunctionOpen(FILE *txt, FILE *xml, const char *name, const char *frequency);
/* The FUNCTION closing (XML only). */
void writeFunctionClose(FILE *xml);
/* Its block records and, in XML, the FUNCTION closing. */
void writeFullFunctionBlocks(FILE *txt, FILE *xml, blocks *head);
/* A function that was never called: frequency 0 and, in XML, its line. */
void writeFullNeverCalled(FILE *txt, FILE *xml, const char *name, int line);

#endif
