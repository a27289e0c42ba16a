// profile_output.h -- imported functions written as vemtra.spi and
// vemtra.dpi, both complete or neither.
#ifndef VEMCOV_IMPORT_PROFILE_OUTPUT_H
#define VEMCOV_IMPORT_PROFILE_OUTPUT_H

#include <cstdint>
#include <string>
#include <vector>

#include "import/import_model.h"
#include "import/profile_writer.h"

namespace vemcov_import {

struct ImportTotals {
    size_t files = 0;
    size_t functions = 0;
    size_t functions_entered = 0;
    uint64_t blocks = 0;
    uint64_t blocks_covered = 0;
};

// The two profiles' description: every function gets a static-profile line;
// those that were entered also get a segment, with one entry at block 0.
// With `ranges`, blocks carry their end positions (the packed form, whose
// columns stop at 1023 and lines at 4,194,303: larger ones are held at
// those); otherwise start positions only.
vemtra_writer::Project describeProfiles(const std::vector<ImportedFunction> &functions, uint32_t runs, bool ranges);

ImportTotals countTotals(const std::vector<ImportedFunction> &functions);

// Writes vemtra.spi and vemtra.dpi into `dir` (created when missing). Each is
// written under a temporary name and renamed into place only when both are
// complete, so a failure leaves no half-written profile behind. On failure
// returns false with a message in `error`.
bool writeProfiles(const vemtra_writer::Project &project, const std::string &dir, std::string &error);

}  // namespace vemcov_import

#endif
