// component_file_fuzzer.cpp -- component list files (-comp): read as the
// run driver reads them, then the marker clash check and a module match.
#include <cstddef>
#include <cstdint>

#include "driver/component_file.h"
#include "driver/settings.h"
#include "tests/fuzz/fuzz_exit.h"
#include "tests/fuzz/fuzz_input.h"

static FuzzInputFile *input = nullptr;

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    input = new FuzzInputFile("vemcov-fuzz.comp");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (!input->set(data, size))
        return 0;
    moduleName.clear();
    one_line_disable.assign(1, "NOT_FEASIBLE");
    start_disable_block.clear();
    end_disable_block.clear();
    Infeasible_markers_specified = 0;
    try {
        getModuleNames(input->path());
        check_NFmarkers_intersect();
        isInComponents("/src/module/a.c");
    } catch (const FuzzExit &) {
    }
    return 0;
}
