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

#define FILE_TYPE_DPI 1 /* type code of a dynamic profile descriptor */

/* Layout of the last segment whose directory entry was built: 1 when it had
 * 64-bit counters (version 3), 0 for version 2. Segments fetched later are
 * decoded with this layout. */
extern int32_t VEMTRA_dpi_64bit_counters;

/* A dynamic profile while it is being opened. */
typedef struct VEMTRA_INPUT_FILE {
    char *file_name;          /* copy of the name */
    FILE *fp;                 /* the open stream */
    int32_t success;          /* set once the header was read */
    int32_t is_new_form;      /* 1: tagged 0xDC12 form; 0: old 0xDC0B form */
    uint64_t data_start;      /* offset of the first segment */
    double weight;            /* 1.0 */
    uint64_t properties;      /* header properties word, 0 when absent */
    uint64_t extra_word;      /* the word that properties bit 1 announces */
    int32_t type;             /* FILE_TYPE_DPI */
    DPI_FILE *dpi;            /* the record being filled */
} VEMTRA_INPUT_FILE;

/* Opens `file_name`, reads its header and builds the sorted directory; fills
 * the process-wide address tables anew. Returns the open file, or null when
 * the file cannot be opened (no message) or the directory cannot be built
 * (after a warning). A header that cannot be read ends the run. */
DPI_FILE *VEMTRA_Open_Dpi_File(const char *file_name);

/* The header step of the open: reads either header form from the open
 * stream of `input_file` into its record. Errors end the run. */
void VEMTRA_Read_Dpi_Header(VEMTRA_INPUT_FILE *input_file);

/* The directory step of the open: indexes every segment, fills the address
 * tables and sorts the directory. Returns 1, or 0 after a warning. */
int VEMTRA_Read_Dpi_Segment_List(VEMTRA_INPUT_FILE *input_file);

/* The directory key of a function: "<file>'<function>'", the file reduced
 * to its simplified base name when source directory names are ignored; in a
 * buffer that the next call reuses, so a fetch per function makes no
 * allocation of its own. */
const char *vemtra_Lookup_Key_Scratch(const char *file_name, const char *function_name);

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
