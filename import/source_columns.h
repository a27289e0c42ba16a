// source_columns.h -- where each line of a source file begins to hold code:
// gcov counts lines, and a line's block is placed at its first non-blank
// column, where a compiler would put the line's first statement.
#ifndef VEMCOV_IMPORT_SOURCE_COLUMNS_H
#define VEMCOV_IMPORT_SOURCE_COLUMNS_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vemcov_import {

class SourceColumns {
public:
    // The 1-based column of the first byte of `line` (1-based) of `path`
    // that is not a space, a tab or a form feed; 1 for a blank line, a line
    // past the end or a file that cannot be read. Each file is read once.
    uint32_t firstCodeColumn(const std::string &path, uint32_t line);

private:
    std::map<std::string, std::vector<uint32_t>> columns_;  // per file, per line (index line - 1)
};

}  // namespace vemcov_import

#endif
