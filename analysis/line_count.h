/* line_count.h -- the number of lines of a source file, as the position
 * table sizes itself by it. */
#ifndef VEMCOV_ANALYSIS_LINE_COUNT_H
#define VEMCOV_ANALYSIS_LINE_COUNT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

/* The newlines among `size` bytes. */
uint32_t countNewlines(const char *bytes, size_t size);

/* The lines of an open stream read to its end: its newlines, plus one when
 * the last byte is not a newline. An empty file has no lines. */
uint32_t countLines(FILE *stream);

/* Counts the lines of an open stream as countLines does, and keeps the
 * bytes of a regular file of less than `keepBelow` bytes read without a
 * failure: `*kept` (from malloc, the caller's to free) holds its `*size`
 * bytes, so that the file need not be read again. `*kept` is null when
 * they were not kept. */
uint32_t countLinesKeeping(FILE *stream, size_t keepBelow, char **kept, size_t *size);

#endif
