// fuzz_exit.cpp -- replaces the library's process exit for the fuzz targets.
#include "tests/fuzz/fuzz_exit.h"

#include "shared/vemtra/tallyfold/process_exit.h"

void vemtra_Process_Exit(int status)
{
    throw FuzzExit{status};
}
