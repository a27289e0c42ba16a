// profile_output.cpp -- from imported functions to the two profile files.
#include "import/profile_output.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>

namespace vemcov_import {
namespace {

const uint32_t PACKED_MAX_COL = 0x3FF;
const uint32_t PACKED_MAX_LINE = 0x3FFFFF;

vemtra_writer::BlockSpec blockSpec(const ImportedBlock &block, bool ranges)
{
    vemtra_writer::BlockSpec written;
    written.count = block.count;
    written.line = block.line;
    written.col = block.col;
    if (ranges) {
        written.line = std::min(block.line, PACKED_MAX_LINE);
        written.col = std::min(block.col, PACKED_MAX_COL);
        written.end_line = std::min(block.end_line, PACKED_MAX_LINE);
        written.end_col = std::min(block.end_col, PACKED_MAX_COL);
    }
    return written;
}

// mkdir -p
bool makeDirectories(const std::string &dir, std::string &error)
{
    std::string path;
    size_t from = 0;
    while (from <= dir.size()) {
        size_t slash = dir.find('/', from);
        if (slash == std::string::npos)
            slash = dir.size();
        path = dir.substr(0, slash);
        from = slash + 1;
        if (path.empty())
            continue;
        if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) {
            error = "cannot create " + path + ": " + strerror(errno);
            return false;
        }
    }
    struct stat status;
    if (stat(dir.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        error = "cannot write into " + dir + ": not a directory";
        return false;
    }
    return true;
}

// Writes `bytes` to a fresh temporary file beside `final_path`; returns its
// name, or "" with `error` set.
std::string writeTemporary(const std::string &final_path, const std::string &bytes, std::string &error)
{
    std::string name = final_path + ".XXXXXX";
    int fd = mkstemp(&name[0]);
    if (fd < 0) {
        error = "cannot write " + final_path + ": " + strerror(errno);
        return "";
    }
    fchmod(fd, 0644);
    size_t done = 0;
    while (done < bytes.size()) {
        ssize_t wrote = write(fd, bytes.data() + done, bytes.size() - done);
        if (wrote < 0 && errno == EINTR)
            continue;
        if (wrote <= 0) {
            error = "cannot write " + final_path + ": " + strerror(wrote < 0 ? errno : ENOSPC);
            close(fd);
            unlink(name.c_str());
            return "";
        }
        done += static_cast<size_t>(wrote);
    }
    if (close(fd) != 0) {
        error = "cannot write " + final_path + ": " + strerror(errno);
        unlink(name.c_str());
        return "";
    }
    return name;
}

}  // namespace

vemtra_writer::Project describeProfiles(const std::vector<ImportedFunction> &functions, uint32_t runs, bool ranges)
{
    vemtra_writer::Project project;
    project.runs = runs;
    project.line_info = ranges ? vemtra_writer::LineInfo::Packed : vemtra_writer::LineInfo::Unpacked;
    project.functions.reserve(functions.size());
    for (const ImportedFunction &function : functions) {
        vemtra_writer::FunctionSpec &written =
            project.Add(function.file, function.name, function.line, function.is_static ? 's' : 'E');
        written.in_dpi = function.executions > 0;
        written.block_count = static_cast<int>(std::min<size_t>(function.blocks.size(), INT32_MAX));
        if (written.in_dpi) {
            written.blocks.reserve(function.blocks.size());
            for (const ImportedBlock &block : function.blocks)
                written.blocks.push_back(blockSpec(block, ranges));
            if (function.blocks.empty())
                written.entries = std::vector<vemtra_writer::EntrySpec>{};
        }
    }
    return project;
}

ImportTotals countTotals(const std::vector<ImportedFunction> &functions)
{
    ImportTotals totals;
    std::set<std::string> files;
    for (const ImportedFunction &function : functions) {
        files.insert(function.file);
        totals.functions++;
        totals.blocks += function.blocks.size();
        if (function.executions == 0)
            continue;
        totals.functions_entered++;
        for (const ImportedBlock &block : function.blocks)
            totals.blocks_covered += block.count > 0 ? 1 : 0;
    }
    totals.files = files.size();
    return totals;
}

bool writeProfiles(const vemtra_writer::Project &project, const std::string &dir, std::string &error)
{
    if (!makeDirectories(dir, error))
        return false;
    std::string prefix = dir.empty() || dir.back() == '/' ? dir : dir + "/";
    std::string spi_path = prefix + "vemtra.spi";
    std::string dpi_path = prefix + "vemtra.dpi";
    std::string spi_temp = writeTemporary(spi_path, vemtra_writer::SpiText(project), error);
    if (spi_temp.empty())
        return false;
    std::string dpi_temp = writeTemporary(dpi_path, vemtra_writer::DpiBytes(project), error);
    if (dpi_temp.empty()) {
        unlink(spi_temp.c_str());
        return false;
    }
    if (rename(dpi_temp.c_str(), dpi_path.c_str()) != 0 || rename(spi_temp.c_str(), spi_path.c_str()) != 0) {
        error = "cannot write " + prefix + "vemtra.*: " + strerror(errno);
        unlink(dpi_temp.c_str());
        unlink(spi_temp.c_str());
        return false;
    }
    return true;
}

}  // namespace vemcov_import
