// dpi_file_fuzzer.cpp -- dynamic profile files: open, walk every (file,
// function) pair, fetch and release every segment, look up the addresses
// the segments name, close.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#include "shared/vemtra/client/dpi_file.h"
#include "shared/vemtra/client/dpi_segment.h"
#include "shared/vemtra/client/src_root.h"
#include "tests/fuzz/fuzz_exit.h"

/* The input lives in a memory file, opened by the reader through its
 * /proc path like any other file, so that no input touches the disk. */
static int input_fd = -1;
static std::string input_path;

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    input_fd = memfd_create("vemcov-fuzz.dpi", 0);
    input_path = "/proc/self/fd/" + std::to_string(input_fd);
    VEMTRA_Src_Root_Dir_Set("/fuzz/root", 0);
    return 0;
}

static void walk(DPI_FILE *dpi)
{
    char *file = nullptr, *function = nullptr;
    for (VEMTRA_Get_First_File_Function_Pair(dpi, &file, &function); file != nullptr;
         VEMTRA_Get_Next_File_Function_Pair(dpi, &file, &function)) {
        DPI_SEGMENT *handle = nullptr;
        try {
            handle = VEMTRA_Get_Segment(dpi, "fuzz.dpi", file, function);
        } catch (const FuzzExit &) {
            continue; /* the next segment may still decode */
        }
        if (handle == nullptr)
            continue;
        DPI_S *s = handle->segment;
        VEMTRA_Lookup_Func(s->function_address);
        VEMTRA_Lookup_Vtbl(s->vtable_address);
        for (uint32_t k = 0; k < s->value_cnt; k++) {
            uint64_t target = 0;
            for (int b = 7; b >= 0; b--)
                target = (target << 8) | s->value_tables[k][b];
            VEMTRA_Lookup_Func(target);
        }
        VEMTRA_Free_Segment(handle);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (ftruncate(input_fd, 0) != 0 || pwrite(input_fd, data, size, 0) != static_cast<ssize_t>(size))
        return 0;
    DPI_FILE *dpi = nullptr;
    try {
        dpi = VEMTRA_Open_Dpi_File(input_path.c_str());
        if (dpi != nullptr)
            walk(dpi);
    } catch (const FuzzExit &) {
    }
    if (dpi != nullptr)
        VEMTRA_Close_Dpi_File(dpi);
    return 0;
}
