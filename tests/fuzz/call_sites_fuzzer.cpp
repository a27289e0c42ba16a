// call_sites_fuzzer.cpp -- static profiles as the call-graph builder reads
// them, call-site lists included, against a small fixed dynamic profile
// whose functions the lines may name.
#include <cstddef>
#include <cstdint>

#include "shared/vemtra/client/call_graph.h"
#include "shared/vemtra/client/dpi_file.h"
#include "shared/vemtra/client/src_root.h"
#include "tests/fuzz/fuzz_exit.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/profile_writer.h"

static FuzzInputFile *spi = nullptr;
static DPI_FILE *dpi = nullptr;

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    VEMTRA_Src_Root_Dir_Set("/fuzz/root", 0);
    testsupport::Project p;
    p.Add("/src/a.c", "main", 1).Blocks({{1, 1, 1}, {2, 2, 1}}).Address(0x1000);
    p.Add("/src/a.c", "helper", 9).Blocks({{3, 9, 1}}).Address(0x2000);
    p.Add("/src/b.c", "_Z3addii", 4).Blocks({{0, 4, 1}});
    static FuzzInputFile profile("vemcov-fuzz.dpi");
    const std::string bytes = testsupport::DpiBytes(p);
    profile.set(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    dpi = VEMTRA_Open_Dpi_File(profile.path());
    spi = new FuzzInputFile("vemcov-fuzz.spi");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (dpi == nullptr || !spi->set(data, size))
        return 0;
    int anyFlag0 = 0;
    try {
        VEMTRA_Create_Call_Graph("fuzz.dpi", spi->path(), &anyFlag0, dpi);
    } catch (const FuzzExit &) {
    }
    VEMTRA_Free_Call_Graph();
    return 0;
}
