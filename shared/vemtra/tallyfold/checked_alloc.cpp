/* checked_alloc.cpp -- allocations that end the run when memory runs out. */
#include "shared/vemtra/tallyfold/checked_alloc.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "shared/vemtra/tallyfold/process_exit.h"

void VEMTRA_Out_Of_Memory(void)
{
    fputs("FATAL ERROR: Out of memory.\n", stderr);
    vemtra_Process_Exit(2);
}

void *VEMTRA_Malloc(size_t size)
{
    void *block = malloc(size != 0 ? size : 1);
    if (block == nullptr)
        VEMTRA_Out_Of_Memory();
    return block;
}

void *VEMTRA_Calloc(size_t count, size_t size)
{
    void *block = calloc(count != 0 ? count : 1, size != 0 ? size : 1);
    if (block == nullptr)
        VEMTRA_Out_Of_Memory();
    return block;
}

void *VEMTRA_Realloc(void *block, size_t size)
{
    void *grown = realloc(block, size != 0 ? size : 1);
    if (grown == nullptr)
        VEMTRA_Out_Of_Memory();
    return grown;
}

char *VEMTRA_Strdup(const char *text)
{
    size_t length = strlen(text);
    char *copy = static_cast<char *>(VEMTRA_Malloc(length + 1));
    memcpy(copy, text, length + 1);
    return copy;
}
