// source_columns.cpp -- one pass over each source file.
#include "import/source_columns.h"

#include <cstdio>

namespace vemcov_import {
namespace {

std::vector<uint32_t> scanColumns(const std::string &path)
{
    std::vector<uint32_t> columns;
    FILE *file = fopen(path.c_str(), "rb");
    if (file == nullptr)
        return columns;
    uint32_t column = 1;
    bool found = false;
    int c;
    while ((c = getc_unlocked(file)) != EOF) {
        if (c == '\n') {
            columns.push_back(found ? column : 1);
            column = 1;
            found = false;
        } else if (!found) {
            if (c == ' ' || c == '\t' || c == '\f' || c == '\r' || c == '\v')
                column++;
            else
                found = true;
        }
    }
    if (column > 1 || found)
        columns.push_back(found ? column : 1);
    fclose(file);
    return columns;
}

}  // namespace

uint32_t SourceColumns::firstCodeColumn(const std::string &path, uint32_t line)
{
    auto found = columns_.find(path);
    if (found == columns_.end())
        found = columns_.emplace(path, scanColumns(path)).first;
    const std::vector<uint32_t> &columns = found->second;
    if (line == 0 || line > columns.size())
        return 1;
    return columns[line - 1];
}

}  // namespace vemcov_import
