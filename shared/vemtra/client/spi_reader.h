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

/* A whole static profile held in memory, and the read position in it: the
 * file is read with one system call per 64 KiB instead of a position query
 * per line. */
struct VEMTRA_SPI_TEXT {
    char *bytes;       /* the file's bytes and a NUL */
    size_t size;
    size_t position;
};

/* Reads the rest of `stream` into `text`. A non-empty file read from a
 * stream without a position (a pipe) ends the run with the checked-tell
 * message, as the first header read from the stream would. */
void VEMTRA_SPI_Read_Text(FILE *stream, const char *spi_file_name, VEMTRA_SPI_TEXT *text);
void VEMTRA_SPI_Free_Text(VEMTRA_SPI_TEXT *text);

/* VEMTRA_SPI_Read_Line_Header on the text in memory, from its position:
 * the same fields, the same result and the same position after it. */
int VEMTRA_SPI_Read_Line_Header_Text(VEMTRA_SPI_TEXT *text, SPI_LINE_HEADER_S *record, uint32_t use_src_root);

#endif
