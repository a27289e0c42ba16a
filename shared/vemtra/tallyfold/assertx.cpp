/* assertx.cpp -- failure path of ASSERTX. */
#include "shared/vemtra/tallyfold/assertx.h"

#include <cstdio>

#include "shared/vemtra/tallyfold/process_exit.h"

void vemtra_Assert_Fail(const char *dir, int line, const char *condition)
{
    fprintf(stderr, "%s:%d ASSERTX(%s)\n", dir, line, condition);
    vemtra_Process_Exit(1);
}

void vemtra_Check_Block_Index(uint64_t index, uint32_t block_cnt)
{
    if (!(index < block_cnt))
        vemtra_Assert_Fail("shared/vemtra/tallyfold", 892, "i < dpi->block_cnt");
}
