// import_model.cpp -- folding the copies of a function.
#include "import/import_model.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace vemcov_import {
namespace {

size_t coveredBlocks(const ImportedFunction &function)
{
    return static_cast<size_t>(std::count_if(function.blocks.begin(), function.blocks.end(),
                                             [](const ImportedBlock &b) { return b.count > 0; }));
}

uint64_t totalExecutions(const std::vector<ImportedFunction> &copies)
{
    uint64_t total = 0;
    for (const ImportedFunction &copy : copies)
        total += copy.executions;
    return total;
}

}  // namespace

uint32_t narrow(uint64_t value)
{
    return value > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(value);
}

std::string absolutePath(std::string_view name, std::string_view base_dir)
{
    if (!name.empty() && name[0] == '/')
        return std::string(name);
    std::string path(base_dir);
    if (!path.empty() && path.back() != '/')
        path += '/';
    path += name;
    return path;
}

std::vector<std::vector<ImportedFunction>> groupCopies(std::vector<ImportedFunction> copies)
{
    using Key = std::tuple<std::string, uint32_t, uint32_t>;
    std::map<Key, size_t> group_of;
    std::vector<std::vector<ImportedFunction>> groups;
    for (ImportedFunction &copy : copies) {
        Key key(copy.file, copy.line, copy.col);
        auto found = group_of.find(key);
        if (found == group_of.end()) {
            group_of.emplace(std::move(key), groups.size());
            groups.emplace_back();
            groups.back().push_back(std::move(copy));
        } else {
            groups[found->second].push_back(std::move(copy));
        }
    }
    return groups;
}

ImportedFunction keepBestCopy(std::vector<ImportedFunction> &copies)
{
    size_t best = 0;
    size_t best_covered = coveredBlocks(copies[0]);
    for (size_t i = 1; i < copies.size(); i++) {
        size_t covered = coveredBlocks(copies[i]);
        if (covered > best_covered) {
            best = i;
            best_covered = covered;
        }
    }
    uint64_t executions = totalExecutions(copies);
    ImportedFunction chosen = std::move(copies[best]);
    chosen.executions = executions;
    return chosen;
}

ImportedFunction sumLineCopies(std::vector<ImportedFunction> &copies)
{
    std::map<uint32_t, ImportedBlock> by_line;
    for (const ImportedFunction &copy : copies) {
        for (const ImportedBlock &block : copy.blocks) {
            auto inserted = by_line.emplace(block.line, block);
            if (!inserted.second)
                inserted.first->second.count += block.count;
        }
    }
    uint64_t executions = totalExecutions(copies);
    ImportedFunction merged = std::move(copies[0]);
    merged.executions = executions;
    merged.blocks.clear();
    for (const auto &line : by_line)
        merged.blocks.push_back(line.second);
    return merged;
}

}  // namespace vemcov_import
