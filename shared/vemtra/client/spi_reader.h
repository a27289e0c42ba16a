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

#endif
