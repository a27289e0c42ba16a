/* dpi_record.h -- decoding one segment record of a dynamic profile.
 *
 * Two layouts exist: version 3 (8-byte flags word, 64-bit counters) and
 * version 2 (4-byte flags word, 32-bit counters widened to 64 bits, and name
 * offsets composed from overlapping 32-bit words). Every announced array is
 * checked against the bytes left in the file before anything is allocated
 * for it; a record the file cannot hold ends the run with the checked-read
 * message.
 */
#ifndef VEMTRA_CLIENT_DPI_RECORD_H
#define VEMTRA_CLIENT_DPI_RECORD_H

#include <cstdint>

#include "shared/vemtra/client/dpi_stream.h"
#include "shared/vemtra/tallyfold/vemtra_records.h"

/* The source-root length of a decoded segment. */
#define DPI_src_root(dpi) ((dpi)->src_root)

/* What the directory needs of a record, read without decoding the rest. */
typedef struct VEMTRA_RECORD_SUMMARY {
    uint64_t flags;              /* the record's flags word */
    uint32_t word_b;             /* word B */
    uint64_t word_c;             /* attribute word */
    const char *file_name;       /* in the stream's bytes (vemtra_Dpi_String) */
    const char *function_name;   /* in the stream's bytes */
    uint64_t function_address;
    uint64_t vtable_address;
    const char *vtable_name;     /* in the stream's bytes; only when vtable_address is not 0 */
    uint64_t max_entry_count;    /* greatest counter of a block named by an entry */
} VEMTRA_RECORD_SUMMARY;

/* Decodes the record at the stream position with the version 3 layout when
 * `wide`, else version 2, into one allocation: `prefix` bytes left to the
 * caller, then the record, then every array and name it points to, so that
 * one free() releases it all. With `src_root_offset` not 0 the record's
 * source-root length is read there and applied to its file name. A record
 * the file cannot hold ends the run before anything is allocated.
 * `file_name` is for messages. Returns the allocation; `*record` is the
 * record in it. */
void *vemtra_Read_Dpi_Segment(VEMTRA_DPI_STREAM *stream, int wide, uint64_t src_root_offset, const char *file_name,
                              size_t prefix, DPI_S **record);

/* Reads what the directory needs of the record at the stream position,
 * checking that the whole record is present. */
void vemtra_Read_Dpi_Summary(VEMTRA_RECORD_SUMMARY *summary, VEMTRA_DPI_STREAM *stream, int wide);

/* Re-roots `dpi->file_name` from its source-root length `dpi->src_root`:
 * the first src_root characters are replaced by the library's source root
 * when the result fits in 4096 bytes, and src_root becomes the root's
 * length; otherwise a warning is printed and the name is kept. */
void vemtra_Apply_Dpi_Src_Root(DPI_S *dpi);

#endif
