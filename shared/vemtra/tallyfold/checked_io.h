/* checked_io.h -- file access of the profile library.
 *
 * checked_fopen opens a file under a POSIX record lock (shared for reading,
 * exclusive for writing) so that two tools of the suite never see each
 * other's half-written profile. The other wrappers either succeed or print
 * the system error and a fixed "FATAL ERROR: ..." line and end the process
 * with status 1, so readers need no end-of-file checks of their own.
 * `file_name` is used only in messages and may be null.
 */
#ifndef VEMTRA_TALLYFOLD_CHECKED_IO_H
#define VEMTRA_TALLYFOLD_CHECKED_IO_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

/* Opens `path` with the fopen-style `mode`. The mode's '+', 'a' or 'w' asks
 * for an exclusive lock, anything else for a shared one; the lock covers the
 * file from byte 16 to its end and the request waits until it is granted.
 * Returns the stream, or null (no message when the open itself fails). */
FILE *checked_fopen(const char *path, const char *mode);

/* Opens `path` for reading ("r") when it is a regular file; anything else
 * (a FIFO, a device, a directory) gives null with errno ENOENT, as a
 * missing file would. A FIFO is never waited on: the open does not block.
 * No lock is taken. */
FILE *VEMTRA_Open_Regular_File(const char *path);

/* Closes an output file that the run has written. When a write into it
 * failed, or its last data cannot be written or the close fails (a full
 * disk), prints "ERROR: cannot write <file_name>: <system error text>" and
 * ends the process with status 1: no output is lost without a word. */
void checked_close_output(FILE *stream, const char *file_name);

/* Opens `path` for writing, created when missing but not emptied: an
 * existing file is opened for update ("r+") and written over from its
 * start, which takes no new disk blocks and no new cache pages; one that
 * cannot be opened so is opened with "w". Close it with checked_close_rewritten,
 * which cuts off the old file's rest; a run that ends before that
 * (vemtra_Process_Exit) cuts it too, so the file holds what was written, as
 * a file emptied on opening would. Null, with errno set, when it cannot be
 * opened. */
FILE *checked_open_rewritable(const char *path);

/* checked_close_output for a file of checked_open_rewritable: what lies
 * past the end just written is cut off first (a failure to cut it is
 * reported as a failed write). A file that is not a regular one (a FIFO, a
 * device) is closed as it is. */
void checked_close_rewritten(FILE *stream, const char *file_name);

/* Closes a file of checked_open_rewritable that the run gives up on, cut
 * at the end of what was written to it; failures are not reported. */
void checked_close_unfinished(FILE *stream);

/* Cuts every file of checked_open_rewritable not yet closed at the end of
 * what has been written to it; called when the run ends early. */
void vemtra_Cut_Rewritten_Files(void);

/* Closes the stream (and its lock); returns what fclose returns. */
int checked_fclose(FILE *stream);

/* Reads `count` items or ends the process. Returns `count`. */
size_t checked_fread(void *buffer, size_t size, size_t count, FILE *stream, const char *file_name);

/* Writes `count` items or ends the process. Returns `count`. */
size_t checked_fwrite(const void *buffer, size_t size, size_t count, FILE *stream, const char *file_name);

/* Seeks or ends the process. Returns 0. */
int checked_fseek(FILE *stream, int64_t offset, int whence, const char *file_name);

/* Returns the stream position or ends the process. */
int64_t checked_ftell(FILE *stream, const char *file_name);

#endif
