// import_json_fuzzer.cpp -- arbitrary bytes through vemcov-import's readers:
// the first byte chooses llvm-cov's export or gcov's JSON, the rest is the
// document. What a reader accepts goes on through the folding rules and the
// profile writer, as the tool takes it.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <simdjson.h>

#include "import/gcov_json.h"
#include "import/import_model.h"
#include "import/llvm_export.h"
#include "import/profile_output.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    bool llvm = (data[0] & 1) == 0;
    simdjson::padded_string text(reinterpret_cast<const char *>(data + 1), size - 1);
    std::vector<vemcov_import::ImportedFunction> copies, orphans, functions;
    std::string error;
    bool read = llvm ? vemcov_import::readLlvmExport(text, "fuzz.json", "/base", copies, error)
                     : vemcov_import::readGcovJson(text, "fuzz.json", copies, orphans, error);
    if (!read)
        return 0;
    for (auto &group : vemcov_import::groupCopies(std::move(copies)))
        functions.push_back(llvm ? vemcov_import::keepBestCopy(group) : vemcov_import::sumLineCopies(group));
    if (!llvm) {
        vemcov_import::adoptOrphanLines(functions, orphans);
        vemcov_import::giveEachLineOneFunction(functions);
    }
    vemtra_writer::Project project = vemcov_import::describeProfiles(functions, 1, llvm);
    // Kept in a volatile so that the writer's work is not optimised away.
    volatile size_t written = vemtra_writer::SpiText(project).size() + vemtra_writer::DpiBytes(project).size();
    (void)written;
    return 0;
}
