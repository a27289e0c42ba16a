// gcov_json.cpp -- reading gcov's JSON with simdjson's on-demand parser.
#include "import/gcov_json.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <tuple>
#include <unordered_map>

#include "import/json_input.h"

namespace vemcov_import {
namespace {

using simdjson::ondemand::document;
using simdjson::ondemand::object;



struct GcovFunction {
    ImportedFunction copy;
    uint32_t end_line = 0;
};

struct GcovLine {
    uint32_t line = 0;
    uint64_t count = 0;
    std::string_view function_name;
};

struct GcovFile {
    std::string_view name;
    std::vector<GcovFunction> functions;
    std::vector<GcovLine> lines;
};

GcovFunction readFunction(object record)
{
    GcovFunction function;
    bool has_name = false, has_line = false;
    for (auto field : record) {
        std::string_view key = field.unescaped_key();
        if (key == "name") {
            function.copy.name = std::string(std::string_view(field.value().get_string()));
            has_name = true;
        } else if (key == "start_line") {
            function.copy.line = narrow(field.value().get_uint64());
            has_line = true;
        } else if (key == "start_column") {
            function.copy.col = narrow(field.value().get_uint64());
        } else if (key == "end_line") {
            function.end_line = narrow(field.value().get_uint64());
        } else if (key == "execution_count") {
            function.copy.executions = field.value().get_uint64();
        }
    }
    if (!has_name || !has_line)
        throw JsonFormatError("a function lacks its name or its start line");
    return function;
}

GcovLine readLine(object record)
{
    GcovLine line;
    bool has_number = false, has_count = false;
    for (auto field : record) {
        std::string_view key = field.unescaped_key();
        if (key == "line_number") {
            line.line = narrow(field.value().get_uint64());
            has_number = true;
        } else if (key == "count") {
            line.count = field.value().get_uint64();
            has_count = true;
        } else if (key == "function_name") {
            line.function_name = field.value().get_string();
        }
    }
    if (!has_number || !has_count)
        throw JsonFormatError("a line lacks its number or its count");
    return line;
}

GcovFile readFile(object record)
{
    GcovFile file;
    bool has_name = false;
    for (auto field : record) {
        std::string_view key = field.unescaped_key();
        if (key == "file") {
            file.name = field.value().get_string();
            has_name = true;
        } else if (key == "functions") {
            for (auto function : field.value().get_array())
                file.functions.push_back(readFunction(function.get_object()));
        } else if (key == "lines") {
            for (auto line : field.value().get_array())
                file.lines.push_back(readLine(line.get_object()));
        }
    }
    if (!has_name)
        throw JsonFormatError("a file record lacks its name");
    return file;
}


// The function a line belongs to: the one gcov names, else the last one
// whose lines span it; -1 when none does.
long ownerOf(const GcovLine &line, const std::vector<GcovFunction> &functions,
             const std::unordered_map<std::string_view, size_t> &by_name)
{
    if (!line.function_name.empty()) {
        auto found = by_name.find(line.function_name);
        if (found != by_name.end())
            return static_cast<long>(found->second);
    }
    long owner = -1;
    for (size_t i = 0; i < functions.size(); i++) {
        const GcovFunction &f = functions[i];
        if (f.copy.line <= line.line && line.line <= f.end_line &&
            (owner < 0 || functions[owner].copy.line <= f.copy.line))
            owner = static_cast<long>(i);
    }
    return owner;
}

void addCopies(GcovFile &file, std::string_view working_dir, std::vector<ImportedFunction> &copies,
               std::vector<ImportedFunction> &orphans)
{
    ImportedFunction orphan_lines;
    std::string path = absolutePath(file.name, working_dir);
    std::unordered_map<std::string_view, size_t> by_name;
    for (size_t i = 0; i < file.functions.size(); i++)
        by_name.emplace(file.functions[i].copy.name, i);
    for (const GcovLine &line : file.lines) {
        long owner = ownerOf(line, file.functions, by_name);
        ImportedBlock block;
        block.count = line.count;
        block.line = line.line;
        if (owner < 0)
            orphan_lines.blocks.push_back(block);
        else
            file.functions[owner].copy.blocks.push_back(block);
    }
    if (!orphan_lines.blocks.empty()) {
        orphan_lines.file = path;
        orphans.push_back(std::move(orphan_lines));
    }
    for (GcovFunction &function : file.functions) {
        function.copy.file = path;
        // C++ functions of internal linkage are the ones gcc mangles as
        // "_ZL..."; a C function's linkage is not in gcov's output.
        function.copy.is_static = function.copy.name.compare(0, 3, "_ZL") == 0;
        copies.push_back(std::move(function.copy));
    }
}


}  // namespace

bool readGcovJson(const simdjson::padded_string &text, const std::string &path,
                  std::vector<ImportedFunction> &copies, std::vector<ImportedFunction> &orphans,
                  std::string &error)
{
    return walkJsonDocument(
        text, path,
        [&](document &doc) {
            std::string_view working_dir, format_version;
            bool has_files = false;
            // The working directory may come after the files: the files are
            // kept (their names point into the parser's buffer) until the end.
            std::vector<GcovFile> files;
            for (auto field : doc.get_object()) {
                std::string_view key = field.unescaped_key();
                if (key == "files") {
                    has_files = true;
                    for (auto file : field.value().get_array())
                        files.push_back(readFile(file.get_object()));
                } else if (key == "current_working_directory") {
                    working_dir = field.value().get_string();
                } else if (key == "format_version") {
                    format_version = field.value().get_string();
                }
            }
            if (!has_files || format_version.empty())
                throw JsonFormatError("not gcov's JSON (no \"format_version\" or no \"files\")");
            if (format_version != "1")
                throw JsonFormatError("gcov JSON format version " + std::string(format_version) + " is not 1");
            for (GcovFile &file : files)
                addCopies(file, working_dir, copies, orphans);
        },
        error);
}

size_t adoptOrphanLines(std::vector<ImportedFunction> &functions, const std::vector<ImportedFunction> &orphans)
{
    std::unordered_map<std::string_view, std::vector<size_t>> of_file;
    for (size_t i = 0; i < functions.size(); i++)
        of_file[functions[i].file].push_back(i);
    size_t left_out = 0;
    for (const ImportedFunction &orphan : orphans) {
        auto found = of_file.find(orphan.file);
        if (found == of_file.end()) {
            left_out += orphan.blocks.size();
            continue;
        }
        for (const ImportedBlock &block : orphan.blocks) {
            size_t host = found->second[0];
            for (size_t i : found->second) {
                const ImportedFunction &f = functions[i];
                bool starts_before = f.line <= block.line;
                bool host_before = functions[host].line <= block.line;
                if ((starts_before && (!host_before || f.line > functions[host].line)) ||
                    (!starts_before && !host_before && f.line < functions[host].line))
                    host = i;
            }
            std::vector<ImportedBlock> &blocks = functions[host].blocks;
            auto same_line = std::find_if(blocks.begin(), blocks.end(),
                                          [&](const ImportedBlock &b) { return b.line == block.line; });
            if (same_line != blocks.end())
                same_line->count += block.count;
            else
                blocks.insert(std::upper_bound(blocks.begin() + (blocks.empty() ? 0 : 1), blocks.end(), block,
                                               [](const ImportedBlock &a, const ImportedBlock &b) {
                                                   return a.line < b.line;
                                               }),
                              block);
        }
    }
    return left_out;
}

void giveEachLineOneFunction(std::vector<ImportedFunction> &functions)
{
    // Of two functions listing a line, the better keeper is one that starts
    // at or before the line, and of those the one that starts last.
    auto keepsBetter = [&](size_t a, size_t b, uint32_t line) {
        bool a_before = functions[a].line <= line;
        bool b_before = functions[b].line <= line;
        if (a_before != b_before)
            return a_before;
        return a_before && std::tie(functions[a].line, functions[a].col) > std::tie(functions[b].line, functions[b].col);
    };
    // (file, line) -> the function that keeps it.
    std::map<std::pair<std::string_view, uint32_t>, size_t> owner;
    for (size_t i = 0; i < functions.size(); i++) {
        for (const ImportedBlock &block : functions[i].blocks) {
            auto inserted = owner.emplace(std::make_pair(std::string_view(functions[i].file), block.line), i);
            size_t &keeper = inserted.first->second;
            if (!inserted.second && keepsBetter(i, keeper, block.line))
                keeper = i;
        }
    }
    for (size_t i = 0; i < functions.size(); i++) {
        std::vector<ImportedBlock> kept;
        for (const ImportedBlock &block : functions[i].blocks) {
            if (owner[std::make_pair(std::string_view(functions[i].file), block.line)] == i)
                kept.push_back(block);
        }
        functions[i].blocks.swap(kept);
    }
}

}  // namespace vemcov_import
