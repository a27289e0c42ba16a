/* dpi_file.h -- opening, indexing, walking and closing a dynamic profile.
 *
 * The open reads the header and builds a directory of every function segment
 * sorted by lookup key ("<file>'<function>'"); segments themselves are decoded
 * on demand (dpi_segment.h). The file stays open, under a shared lock, until
 * it is closed.
 */
#ifndef VEMTRA_CLIENT_DPI_FILE_H
#define VEMTRA_CLIENT_DPI_FILE_H

#include "shared/vemtra/tallyfold/vemtra_records.h"

/* Opens `file_name`, reads its header and builds the sorted directory; fills
 * the process-wide address tables anew. Returns the open file, or null when
 * the file cannot be opened (no message) or the directory cannot be built
 * (after a warning). A header that cannot be read ends the run. */
DPI_FILE *VEMTRA_Open_Dpi_File(const char *file_name);

/* Releases the process-wide address tables, closes the stream and frees the
 * record and its directory. */
void VEMTRA_Close_Dpi_File(DPI_FILE *dpi_file);

/* Resets the pair cursor to the first directory entry and returns its file
 * and function names through the two pointers (both null when the directory
 * is empty). The strings belong to the directory. */
void VEMTRA_Get_First_File_Function_Pair(DPI_FILE *dpi_file, char **file_name, char **function_name);

/* Advances the cursor and returns the next pair (both null past the end). */
void VEMTRA_Get_Next_File_Function_Pair(DPI_FILE *dpi_file, char **file_name, char **function_name);

#endif
