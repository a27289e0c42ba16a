/* console.cpp -- process exit, the out-of-memory end, and the progress
 * meter. */
#include "driver/console.h"

#include <cstdio>

#include "shared/vemtra/tallyfold/process_exit.h"

void tvx_Exit(int status)
{
    vemtra_Process_Exit(status);
}

void vemcov_Out_Of_Memory()
{
    fputs("FATAL ERROR: Out of memory.\n", stderr);
    tvx_Exit(2);
}
