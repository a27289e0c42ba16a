/* assertx.h -- the library's always-active internal consistency check.
 *
 * A failed check prints "<dir>:<line> ASSERTX(<condition>)" to standard error
 * and ends the process with status 1. <dir> names the half of the library the
 * check lives in ("shared/vemtra/client" or "shared/vemtra/tallyfold"); the
 * build defines VEMTRA_ASSERT_DIR for each half.
 */
#ifndef VEMTRA_TALLYFOLD_ASSERTX_H
#define VEMTRA_TALLYFOLD_ASSERTX_H

#include <cstdint>

/* Prints "%s:%d ASSERTX(%s)\n" with dir, line and condition text to standard
 * error and ends the process with status 1. Also used directly by callers
 * outside the library that report a library check under its own name. */
[[noreturn]] void vemtra_Assert_Fail(const char *dir, int line, const char *condition);

/* The block-index check of the walks over a segment's blocks: unless
 * `index` is below `block_cnt`, ends the process as the library's failed
 * check "i < dpi->block_cnt" does (shared/vemtra/tallyfold, line 892). */
void vemtra_Check_Block_Index(uint64_t index, uint32_t block_cnt);

#ifdef VEMTRA_ASSERT_DIR
#define ASSERTX(condition) \
    ((condition) ? (void)0 : vemtra_Assert_Fail(VEMTRA_ASSERT_DIR, __LINE__, #condition))
#endif

#endif
