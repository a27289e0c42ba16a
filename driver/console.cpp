/* console.cpp -- process exit and the progress meter. */
#include "driver/console.h"

#include "shared/vemtra/tallyfold/process_exit.h"

void tvx_Exit(int status)
{
    vemtra_Process_Exit(status);
}
