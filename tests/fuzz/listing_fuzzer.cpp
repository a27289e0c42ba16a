// listing_fuzzer.cpp -- arbitrary source bytes through the comment-marker
// scanner and the listing writer, with recorded positions on the first
// lines and counter lines on, as the full road writes a listing; then the
// modern view's page of the same source and positions (some with ends).
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "analysis/comment_parser.h"
#include "analysis/coverage_state.h"
#include "report/counter_lines.h"
#include "analysis/coverage_store.h"
#include "analysis/module_report.h"
#include "report/html5_file_page.h"
#include "report/html5_page.h"
#include "report/source_listing.h"
#include "tests/fuzz/fuzz_exit.h"
#include "tests/fuzz/fuzz_input.h"

static FuzzInputFile *source = nullptr;
static std::vector<std::string> oneLine = {"NOT_FEASIBLE"};
static std::vector<std::string> begin = {"BEGIN_DEBUG_ONLY"};
static std::vector<std::string> end = {"END_DEBUG_ONLY"};

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    source = new FuzzInputFile("vemcov-fuzz.c");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (!source->set(data, size))
        return 0;
    // Positions come from the input's first bytes: (line, column, count).
    coverage_list store;
    COMP function = {};
    function.line = 1;
    first_func_line = &function;
    FILE *page = fopen("/dev/null", "w");
    MarkerLine marker;
    markerLineCreate(&marker);
    static std::vector<char> readBuffer;  // kept across inputs, as across files
    try {
        store.bSetName(source->path());
        for (size_t i = 0; i + 2 < size && i < 48; i += 3) {
            uint32_t line = 1 + data[i] % 16, column = 1 + data[i + 1] % 64;
            store.bAddBlockCount(source->path(), line, column, data[i + 2] % 4, false, nullptr);
            // Some blocks carry ends, some of them before their starts.
            if (data[i + 2] & 4)
                store.noteBlockEnd(line, column, line + data[i + 2] % 3 - 1, 1 + data[i] % 64);
        }
        parser markers(source->path(), oneLine, begin, end);
        FILE *text = fopen(source->path(), "r");
        if (text != nullptr) {
            ListingSource file{source->path(), 50.0, 50.0, &store, &markers, &function};
            ListingOptions options{true, (size & 1) != 0, false, nullptr, nullptr};
            writeSourceListing(page, text, file, options, &marker, readBuffer);
            fclose(text);
        }
        // The modern view's page of the same source and positions.
        ModuleReport module;
        startModuleReport(&module, source->path());
        collectModuleDetails(&module, store, &markers);
        FunctionReport f{"f<&>", "f", static_cast<uint32_t>(1 + size % 20), 3, 1, 2, true};
        module.functions.push_back(f);
        std::string bytes(reinterpret_cast<const char *>(data), size);
        std::string_view source(bytes);
        Html5FilePage view{&module, "dir/file.c", "../", nullptr, (size & 2) != 0, &source};
        Html5Page out("/dev/null");
        writeHtml5FilePage(view, out);
    } catch (const FuzzExit &) {
    }
    markerLineFree(&marker);
    fclose(page);
    store.deleteCurrentFile();
    first_func_line = nullptr;
    return 0;
}
