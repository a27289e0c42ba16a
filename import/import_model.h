// import_model.h -- the coverage read from a compiler's export, before it
// becomes the two profile files: functions with their blocks, and the rules
// that fold several copies of one source function into one.
#ifndef VEMCOV_IMPORT_IMPORT_MODEL_H
#define VEMCOV_IMPORT_IMPORT_MODEL_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vemcov_import {

struct ImportedBlock {
    uint64_t count = 0;
    uint32_t line = 0;      // start position, in the function's file
    uint32_t col = 0;
    uint32_t end_line = 0;  // end position; 0 when the export gives none
    uint32_t end_col = 0;
};

// One copy of a function as the export lists it: a template instantiation,
// or a static function of a header compiled into one translation unit.
struct ImportedFunction {
    std::string file;          // absolute path of the function's source file
    std::string name;          // mangled name, without a static function's "file:" prefix
    bool is_static = false;
    uint32_t line = 0;         // where the function starts: copies of one
    uint32_t col = 0;          // source function share file, line and column
    uint64_t executions = 0;   // times the function was entered
    std::vector<ImportedBlock> blocks;  // blocks[0] is the function's entry
};

// A 64-bit number from an export held at the 32-bit maximum.
uint32_t narrow(uint64_t value);

// `name` made absolute: a name that is not is taken relative to `base_dir`.
std::string absolutePath(std::string_view name, std::string_view base_dir);

// Copies of one function grouped by (file, line, column), in the order in
// which each group's first copy was listed.
std::vector<std::vector<ImportedFunction>> groupCopies(std::vector<ImportedFunction> copies);

// llvm-cov's rule: of the copies, the one with the most covered blocks (the
// first of equals) stands for the function; it counts as entered when any
// copy was.
ImportedFunction keepBestCopy(std::vector<ImportedFunction> &copies);

// gcov's rule, where blocks are lines: the function's lines are the union of
// the copies' lines, each with the copies' counts summed, sorted by line.
ImportedFunction sumLineCopies(std::vector<ImportedFunction> &copies);

}  // namespace vemcov_import

#endif
