// llvm_export.h -- the reader of the JSON that `llvm-cov export
// -format=text` writes (export format 2.0.x, LLVM 14).
#ifndef VEMCOV_IMPORT_LLVM_EXPORT_H
#define VEMCOV_IMPORT_LLVM_EXPORT_H

#include <simdjson.h>

#include <string>
#include <vector>

#include "import/import_model.h"

namespace vemcov_import {

// Appends every function record of the export in `text` (read from `path`)
// to `copies`, one per record, its code regions as blocks. Relative source
// names are taken relative to `base_dir`. On malformed input returns false
// with a message naming the file and the place in `error`.
bool readLlvmExport(const simdjson::padded_string &text, const std::string &path,
                    const std::string &base_dir, std::vector<ImportedFunction> &copies, std::string &error);

// A static function's name as LLVM records it, "file:name" (or, in newer
// releases, "file;name"), made plain; returns whether a prefix was removed.
bool removeStaticPrefix(std::string &name);

}  // namespace vemcov_import

#endif
