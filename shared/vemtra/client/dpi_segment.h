/* dpi_segment.h -- fetching one function's segment, and looking functions
 * up by code address.
 */
#ifndef VEMTRA_CLIENT_DPI_SEGMENT_H
#define VEMTRA_CLIENT_DPI_SEGMENT_H

#include <cstdint>

#include "shared/vemtra/tallyfold/vemtra_records.h"

/* Finds the segment of `function_name` in `file_name` (the file name is
 * mapped to its physical directory first, as the directory keys were) and
 * decodes it. Returns a new handle, or null when the file has no profile for
 * the function. `dpi_file_name` is used only in messages. */
DPI_SEGMENT *VEMTRA_Get_Segment(DPI_FILE *dpi_file, const char *dpi_file_name,
                                const char *file_name, const char *function_name);

/* Releases the handle, the decoded segment and everything it owns. */
void VEMTRA_Free_Segment(DPI_SEGMENT *handle);

/* The function-info record of a code address in the most recently opened
 * file, or null when the address is unknown, ambiguous, or no table exists. */
DPI_FUNC_INFO *VEMTRA_Lookup_Func(uint64_t address);

/* The same for virtual-table addresses. */
DPI_VTBL_INFO *VEMTRA_Lookup_Vtbl(uint64_t address);

#endif
