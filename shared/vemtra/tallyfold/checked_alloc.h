/* checked_alloc.h -- allocations that cannot fail silently.
 *
 * Profiles are input from outside: a damaged or hostile one can announce
 * sizes that no memory holds. Every allocation of the library goes through
 * these wrappers, which either succeed or print "FATAL ERROR: Out of
 * memory." and end the process with status 2, so that such a file ends the
 * run with a message instead of a signal.
 */
#ifndef VEMTRA_TALLYFOLD_CHECKED_ALLOC_H
#define VEMTRA_TALLYFOLD_CHECKED_ALLOC_H

#include <cstddef>

/* Prints "FATAL ERROR: Out of memory.\n" on standard error and ends the
 * process with status 2. */
[[noreturn]] void VEMTRA_Out_Of_Memory(void);

/* malloc, calloc, realloc and strdup that end the run when they fail. A
 * request of 0 bytes gets a valid, distinct pointer. */
void *VEMTRA_Malloc(size_t size);
void *VEMTRA_Calloc(size_t count, size_t size);
void *VEMTRA_Realloc(void *block, size_t size);
char *VEMTRA_Strdup(const char *text);

#endif
