/* spi_reader.h -- reading the fixed part of one static-profile line. */
#ifndef VEMTRA_CLIENT_SPI_READER_H
#define VEMTRA_CLIENT_SPI_READER_H

#include <cstdint>
#include <cstdio>

#include "shared/vemtra/tallyfold/vemtra_records.h"

/* Reads one header (V3/V4, V1/V2 or unversioned) from `stream` into `record`
 * and leaves the stream right after the linkage character. With
 * `use_src_root` nonzero, paths with a base directory are re-rooted at the
 * library's source root. The record's strings live in reader-owned buffers
 * until the next call. Returns 1, or 0 when the line does not match its
 * form. `spi_file_name` is used only in checked-I/O messages. */
int VEMTRA_SPI_Read_Line_Header(FILE *stream, const char *spi_file_name,
                                SPI_LINE_HEADER_S *record, uint32_t use_src_root);

/* A static profile read through a window in memory: read in large pieces,
 * with no position query per line, and holding only the lines not yet
 * consumed (the window moves on at line ends), so that a profile of
 * millions of functions costs no more memory than one of a few. */
struct VEMTRA_SPI_TEXT {
    FILE *stream;
    const char *file_name;  /* for the checked-I/O messages */
    char *bytes;            /* the window, then a NUL */
    size_t size;            /* bytes in the window */
    size_t capacity;
    size_t position;        /* read position in the window */
    int64_t window_offset;  /* file offset of bytes[0] */
    int at_end;             /* the stream has no more bytes */
};

/* Starts reading `stream` from its position. A non-empty file read from a
 * stream without a position (a pipe) ends the run with the checked-tell
 * message, as the first header read from the stream would. */
void VEMTRA_SPI_Text_Open(FILE *stream, const char *spi_file_name, VEMTRA_SPI_TEXT *text);
void VEMTRA_SPI_Text_Close(VEMTRA_SPI_TEXT *text);

/* Appends the stream's next bytes to the window; 0 at the end of the file. */
int VEMTRA_SPI_Text_More(VEMTRA_SPI_TEXT *text);

/* True when no byte is left to read. */
int VEMTRA_SPI_Text_Empty(VEMTRA_SPI_TEXT *text);

/* Consumes the rest of the current line and its newline; returns 1 when
 * another byte follows, else 0. */
int VEMTRA_SPI_Text_Next_Line(VEMTRA_SPI_TEXT *text);

/* VEMTRA_SPI_Read_Line_Header on the text, from its position: the same
 * fields, the same result and the same position after it. */
int VEMTRA_SPI_Read_Line_Header_Text(VEMTRA_SPI_TEXT *text, SPI_LINE_HEADER_S *record, uint32_t use_src_root);

#endif
