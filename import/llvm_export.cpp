// llvm_export.cpp -- reading llvm-cov's export with simdjson's on-demand
// parser: the document is walked once, in the order it is written, and
// only the functions' names, counts, file names and regions are looked at
// (the per-file segments, which make up most of an export, are skipped).
#include "import/llvm_export.h"

#include "import/json_input.h"

#include <cstdint>
#include <string_view>

namespace vemcov_import {
namespace {

using simdjson::ondemand::array;
using simdjson::ondemand::document;
using simdjson::ondemand::object;
using simdjson::ondemand::value;

// Region kinds of the coverage mapping.
const uint64_t CODE_REGION = 0;
const uint64_t EXPANSION_REGION = 1;


struct Region {
    uint64_t line = 0, col = 0, end_line = 0, end_col = 0;
    uint64_t count = 0;
    uint64_t file_id = 0, expanded_file_id = 0, kind = 0;
};

Region readRegion(value element)
{
    uint64_t fields[8];
    size_t n = 0;
    for (auto number : element.get_array()) {
        if (n == 8)
            throw JsonFormatError("a region has more than 8 numbers");
        fields[n++] = number.get_uint64();
    }
    if (n < 8)
        throw JsonFormatError("a region has fewer than 8 numbers");
    Region r;
    r.line = fields[0];
    r.col = fields[1];
    r.end_line = fields[2];
    r.end_col = fields[3];
    r.count = fields[4];
    r.file_id = fields[5];
    r.expanded_file_id = fields[6];
    r.kind = fields[7];
    return r;
}

// The place in the function's own file (file id 0) that stands for a region
// of a macro expansion: the call site of the outermost expansion. Without
// such a site (a region in a file the function merely includes) the
// function's start is used.
const Region *placeInFunctionFile(const std::vector<Region> &regions, const Region &region,
                                  const Region &function_start)
{
    const Region *place = &region;
    // Each step moves one expansion outward; more steps than regions means
    // the expansions form a loop.
    for (size_t steps = 0; place->file_id != 0; steps++) {
        const Region *site = nullptr;
        if (steps <= regions.size()) {
            for (const Region &candidate : regions) {
                if (candidate.kind == EXPANSION_REGION && candidate.expanded_file_id == place->file_id) {
                    site = &candidate;
                    break;
                }
            }
        }
        if (site == nullptr)
            return &function_start;
        place = site;
    }
    return place;
}

ImportedFunction makeFunction(std::string_view name, uint64_t count, const std::vector<std::string_view> &filenames,
                              const std::vector<Region> &regions, const std::string &base_dir)
{
    if (filenames.empty())
        throw JsonFormatError("a function has no file names");
    const Region *start = nullptr;
    for (const Region &region : regions) {
        if (region.file_id == 0) {
            start = &region;
            break;
        }
    }
    if (start == nullptr)
        throw JsonFormatError("a function has no region in its own file");

    ImportedFunction function;
    function.file = absolutePath(filenames[0], base_dir);
    function.name = std::string(name);
    function.is_static = removeStaticPrefix(function.name);
    function.line = narrow(start->line);
    function.col = narrow(start->col);
    function.executions = count;
    for (const Region &region : regions) {
        if (region.kind != CODE_REGION)
            continue;
        const Region *place = placeInFunctionFile(regions, region, *start);
        ImportedBlock block;
        block.count = region.count;
        block.line = narrow(place->line);
        block.col = narrow(place->col);
        block.end_line = narrow(place->end_line);
        block.end_col = narrow(place->end_col);
        function.blocks.push_back(block);
    }
    return function;
}

// Reads one function record; returns false for a record without regions,
// which has no place to be reported at.
bool readFunction(object record, const std::string &base_dir, ImportedFunction &function)
{
    std::string_view name;
    uint64_t count = 0;
    bool has_name = false, has_count = false;
    std::vector<std::string_view> filenames;
    std::vector<Region> regions;
    for (auto field : record) {
        std::string_view key = field.unescaped_key();
        if (key == "name") {
            name = field.value().get_string();
            has_name = true;
        } else if (key == "count") {
            count = field.value().get_uint64();
            has_count = true;
        } else if (key == "regions") {
            for (auto element : field.value().get_array())
                regions.push_back(readRegion(element.value()));
        } else if (key == "filenames") {
            for (auto element : field.value().get_array())
                filenames.push_back(element.get_string());
        }
    }
    if (!has_name || !has_count)
        throw JsonFormatError("a function record lacks its name or its count");
    if (regions.empty())
        return false;
    function = makeFunction(name, count, filenames, regions, base_dir);
    return true;
}

void readDataItem(object item, const std::string &base_dir, std::vector<ImportedFunction> &copies)
{
    for (auto field : item) {
        std::string_view key = field.unescaped_key();
        if (key != "functions")
            continue;
        for (auto record : field.value().get_array()) {
            ImportedFunction function;
            if (readFunction(record.get_object(), base_dir, function))
                copies.push_back(std::move(function));
        }
    }
}


}  // namespace

bool removeStaticPrefix(std::string &name)
{
    // Objective-C method names hold ':' of their own.
    if (name.size() > 1 && (name[0] == '-' || name[0] == '+') && name[1] == '[')
        return false;
    size_t cut = name.find_last_of(":;");
    if (cut == std::string::npos || cut == 0 || cut + 1 == name.size())
        return false;
    name.erase(0, cut + 1);
    return true;
}

bool readLlvmExport(const simdjson::padded_string &text, const std::string &path, const std::string &base_dir,
                    std::vector<ImportedFunction> &copies, std::string &error)
{
    return walkJsonDocument(
        text, path,
        [&](document &doc) {
            std::string_view type, version;
            bool has_data = false;
            for (auto field : doc.get_object()) {
                std::string_view key = field.unescaped_key();
                if (key == "data") {
                    has_data = true;
                    for (auto item : field.value().get_array())
                        readDataItem(item.get_object(), base_dir, copies);
                } else if (key == "type") {
                    type = field.value().get_string();
                } else if (key == "version") {
                    version = field.value().get_string();
                }
            }
            if (type != "llvm.coverage.json.export" || !has_data)
                throw JsonFormatError("not an llvm-cov export (its \"type\" is not \"llvm.coverage.json.export\")");
            if (version.substr(0, 2) != "2.")
                throw JsonFormatError("export format version " + std::string(version) + " is not 2.x");
        },
        error);
}

}  // namespace vemcov_import
