/* lcov_writer.cpp -- LCOV tracefile records from the report model. */
#include "report/lcov_writer.h"

#include <cinttypes>
#include <climits>
#include <unistd.h>

#include "report/export_file.h"
#include "shared/vemtra/tallyfold/checked_io.h"

static std::string currentDirectory()
{
    char buffer[PATH_MAX];
    return getcwd(buffer, sizeof buffer) != nullptr ? std::string(buffer) : std::string();
}

LcovWriter::LcovWriter(const char *path) : path_(path), out_(createExportFile(path)) {}

void LcovWriter::module(const ModuleReport &module, bool analysed)
{
    if (analysed)
        writeLcovRecord(out_, module, currentDirectory());
}

void LcovWriter::endRun(const RunReport &)
{
    checked_close_output(out_, path_.c_str());
    out_ = nullptr;
}

/* A function the profile holds a segment for counts as called, which is how
 * the report counts covered functions; its calls are its entry blocks'
 * counts, and at least 1 so that LCOV readers count it the same way. */
static uint64_t lcovCalls(const FunctionReport &function)
{
    if (!function.called)
        return 0;
    return function.entries > 0 ? function.entries : 1;
}

static void writeFunctions(FILE *out, const ModuleReport &module)
{
    unsigned hit = 0;
    for (const FunctionReport &function : module.functions)
        fprintf(out, "FN:%" PRIu32 ",%s\n", function.line, function.procName);
    for (const FunctionReport &function : module.functions) {
        uint64_t calls = lcovCalls(function);
        fprintf(out, "FNDA:%" PRIu64 ",%s\n", calls, function.procName);
        hit += calls > 0;
    }
    fprintf(out, "FNF:%zu\nFNH:%u\n", module.functions.size(), hit);
}

static void writeLines(FILE *out, const ModuleReport &module)
{
    const std::vector<LineReport> lines = feasibleLines(module);
    /* A line with two or more blocks lists each block as a branch: taken
     * when it ran, with its count when it is alone at its position (the
     * store keeps per position how many blocks ran, not each one's count). */
    unsigned branches = 0, branchesTaken = 0;
    for (const LineReport &line : lines) {
        if (line.blocks < 2)
            continue;
        unsigned branch = 0;
        for (size_t i = line.first; i < line.last; ++i) {
            const PositionReport &position = module.positions[i];
            for (uint32_t block = 0; block < position.blocks; ++block, ++branch) {
                bool taken = block < position.executed;
                uint64_t count = taken ? (position.blocks == 1 ? position.count : 1) : 0;
                fprintf(out, "BRDA:%" PRIu32 ",0,%u,%" PRIu64 "\n", line.line, branch, count);
                ++branches;
                branchesTaken += taken;
            }
        }
    }
    fprintf(out, "BRF:%u\nBRH:%u\n", branches, branchesTaken);

    unsigned linesHit = 0;
    for (const LineReport &line : lines) {
        fprintf(out, "DA:%" PRIu32 ",%" PRIu64 "\n", line.line, line.hits);
        linesHit += line.hits > 0;
    }
    fprintf(out, "LF:%zu\nLH:%u\n", lines.size(), linesHit);
}

void writeLcovRecord(FILE *out, const ModuleReport &module, const std::string &cwd)
{
    fputs("TN:\n", out);
    if (module.path[0] == '/' || cwd.empty())
        fprintf(out, "SF:%s\n", module.path);
    else
        fprintf(out, "SF:%s/%s\n", cwd.c_str(), module.path);
    writeFunctions(out, module);
    writeLines(out, module);
    fputs("end_of_record\n", out);
}
