/* assertx.cpp -- failure path of ASSERTX. */
#include "shared/vemtra/tallyfold/assertx.h"

#include <cstdio>

#include "shared/vemtra/tallyfold/process_exit.h"

void vemtra_Assert_Fail(const char *dir, int line, const char *condition)
{
    fprintf(stderr, "%s:%d ASSERTX(%s)\n", dir, line, condition);
    vemtra_Process_Exit(1);
}
