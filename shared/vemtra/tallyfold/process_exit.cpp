/* process_exit.cpp -- ends the process through exit(), flushing stdio. */
#include "shared/vemtra/tallyfold/process_exit.h"

#include <cstdlib>

void vemtra_Process_Exit(int status)
{
    std::exit(status);
}
