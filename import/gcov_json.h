// gcov_json.h -- the reader of what `gcov --json-format` writes (format
// version 1, gcc 12): one document per object file, plain or gzipped.
#ifndef VEMCOV_IMPORT_GCOV_JSON_H
#define VEMCOV_IMPORT_GCOV_JSON_H

#include <simdjson.h>

#include <string>
#include <vector>

#include "import/import_model.h"

namespace vemcov_import {

// Appends one copy per function of every source file of the document in
// `text` (read from `path`): its instrumented lines as blocks, each with the
// line's count, at column 0 (the caller places them). Relative source names
// are taken relative to the working directory the document records. On
// malformed input returns false with a message naming the file and the
// place in `error`.
// Lines that gcov lists outside every function of their file in that
// document (code inlined from a function that has no copy of its own there)
// are appended to `orphans` instead, one block-less function per file
// holding them as blocks.
bool readGcovJson(const simdjson::padded_string &text, const std::string &path,
                  std::vector<ImportedFunction> &copies, std::vector<ImportedFunction> &orphans,
                  std::string &error);

// Gives each orphan line to a function of its file (from any document): the
// one that starts last at or before it, else the file's first. Lines of a
// file without any function are left out; returns how many lines were.
size_t adoptOrphanLines(std::vector<ImportedFunction> &functions, const std::vector<ImportedFunction> &orphans);

// Gives every line of a source file to one function only, the one that
// starts last at or before it among those listing it (a lambda's line
// belongs to the lambda, not also to the function around it), as gcov counts
// each line of a file once.
void giveEachLineOneFunction(std::vector<ImportedFunction> &functions);

}  // namespace vemcov_import

#endif
