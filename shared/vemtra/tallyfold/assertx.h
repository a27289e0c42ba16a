/* assertx.h -- the library's always-active internal consistency check.
 *
 * A failed check prints "<dir>:<line> ASSERTX(<condition>)" to standard error
 * and ends the process with status 1. <dir> names the half of the library the
 * check lives in ("shared/vemtra/client" or "shared/vemtra/tallyfold"); the
 * build defines VEMTRA_ASSERT_DIR for each half.
 */
#ifndef VEMTRA_TALLYFOLD_ASSERTX_H
#define VEMTRA_TALLYFOLD_ASSERTX_H

/* Prints "%s:%d ASSERTX(%s)\n" with dir, line and condition text to standard
 * error and ends the process with status 1. Also used directly by callers
 * outside the library that report a library check under its own name. */
[[noreturn]] void vemtra_Assert_Fail(const char *dir, int line, const char *condition);

#ifdef VEMTRA_ASSERT_DIR
#define ASSERTX(condition) \
    ((condition) ? (void)0 : vemtra_Assert_Fail(VEMTRA_ASSERT_DIR, __LINE__, #condition))
#endif

#endif
