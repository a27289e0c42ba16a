// import_main.cpp -- vemcov-import: clang's or gcc's coverage of a program
// written as the static and dynamic profiles that vemcov reads.
//
//   vemcov-import llvm <export.json> [-o <dir>] [-runs <n>]
//   vemcov-import gcov <file.gcov.json[.gz]>... [-o <dir>] [-runs <n>]
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "import/gcov_json.h"
#include "import/import_model.h"
#include "import/json_input.h"
#include "import/llvm_export.h"
#include "import/profile_output.h"
#include "import/source_columns.h"

namespace {

using namespace vemcov_import;

const char USAGE[] =
    "usage: vemcov-import llvm <export.json> [-o <dir>] [-runs <n>]\n"
    "       vemcov-import gcov <file.gcov.json[.gz]>... [-o <dir>] [-runs <n>]\n"
    "Writes vemtra.spi and vemtra.dpi into <dir> (default: the current directory)\n"
    "from the JSON of 'llvm-cov export -format=text' or of 'gcov --json-format'.\n"
    "  -o <dir>     where to write the two profiles (created when missing)\n"
    "  -runs <n>    the number of runs the coverage sums up (default 1)\n"
    "  --help       this text\n"
    "  --version    the version\n";

struct Request {
    std::string format;               // "llvm" or "gcov"
    std::vector<std::string> inputs;
    std::string out_dir = ".";
    uint32_t runs = 1;
};

int usageError(const std::string &message)
{
    fprintf(stderr, "vemcov-import: %s\n%s", message.c_str(), USAGE);
    return 1;
}

bool parseRuns(const char *text, uint32_t &runs)
{
    char *end = nullptr;
    errno = 0;
    unsigned long value = strtoul(text, &end, 10);
    if (errno != 0 || end == text || *end != '\0' || text[0] == '-' || value == 0 || value > UINT32_MAX)
        return false;
    runs = static_cast<uint32_t>(value);
    return true;
}

// Returns -1 when the request is complete, else the exit status to end with.
int parseCommandLine(int argc, char **argv, Request &request)
{
    if (argc < 2)
        return usageError("no input format given");
    std::string first = argv[1];
    if (first == "--help" || first == "-h") {
        fputs(USAGE, stdout);
        return 0;
    }
    if (first == "--version") {
        printf("vemcov-import %s\n", VEMCOV_VERSION_TEXT);
        return 0;
    }
    if (first != "llvm" && first != "gcov")
        return usageError("unknown input format '" + first + "' (llvm or gcov)");
    request.format = first;
    for (int i = 2; i < argc; i++) {
        std::string arg = argv[i];
        if (arg == "-o" || arg == "-runs") {
            if (i + 1 == argc)
                return usageError("option " + arg + " needs a value");
            const char *value = argv[++i];
            if (arg == "-o")
                request.out_dir = value;
            else if (!parseRuns(value, request.runs))
                return usageError(std::string("-runs needs a positive whole number, not '") + value + "'");
        } else if (arg.size() > 1 && arg[0] == '-') {
            return usageError("unknown option " + arg);
        } else {
            request.inputs.push_back(arg);
        }
    }
    if (request.inputs.empty())
        return usageError("no input file given");
    if (request.format == "llvm" && request.inputs.size() > 1)
        return usageError("llvm takes one export file");
    return -1;
}

std::string currentDirectory()
{
    std::vector<char> buffer(4096);
    while (getcwd(buffer.data(), buffer.size()) == nullptr) {
        if (errno != ERANGE)
            return ".";
        buffer.resize(buffer.size() * 2);
    }
    return buffer.data();
}

bool importLlvm(const Request &request, std::vector<ImportedFunction> &functions, std::string &error)
{
    simdjson::padded_string text;
    std::vector<ImportedFunction> copies;
    if (!loadJsonFile(request.inputs[0], text, error) ||
        !readLlvmExport(text, request.inputs[0], currentDirectory(), copies, error))
        return false;
    for (std::vector<ImportedFunction> &group : groupCopies(std::move(copies)))
        functions.push_back(keepBestCopy(group));
    return true;
}

bool importGcov(const Request &request, std::vector<ImportedFunction> &functions, size_t &left_out,
                std::string &error)
{
    std::vector<ImportedFunction> copies, orphans;
    for (const std::string &input : request.inputs) {
        simdjson::padded_string text;
        if (!loadJsonFile(input, text, error) || !readGcovJson(text, input, copies, orphans, error))
            return false;
    }
    for (std::vector<ImportedFunction> &group : groupCopies(std::move(copies)))
        functions.push_back(sumLineCopies(group));
    left_out = adoptOrphanLines(functions, orphans);
    giveEachLineOneFunction(functions);
    SourceColumns columns;
    for (ImportedFunction &function : functions)
        for (ImportedBlock &block : function.blocks)
            block.col = columns.firstCodeColumn(function.file, block.line);
    return true;
}

}  // namespace

int main(int argc, char **argv)
{
    Request request;
    int status = parseCommandLine(argc, argv, request);
    if (status >= 0)
        return status;

    std::vector<ImportedFunction> functions;
    std::string error;
    size_t left_out = 0;
    bool read = request.format == "llvm" ? importLlvm(request, functions, error)
                                         : importGcov(request, functions, left_out, error);
    if (!read) {
        fprintf(stderr, "vemcov-import: %s\n", error.c_str());
        return 1;
    }
    vemtra_writer::Project project = describeProfiles(functions, request.runs, request.format == "llvm");
    if (!writeProfiles(project, request.out_dir, error)) {
        fprintf(stderr, "vemcov-import: %s\n", error.c_str());
        return 1;
    }
    ImportTotals totals = countTotals(functions);
    printf("vemcov-import: %zu files, %zu functions (%zu entered), %llu blocks (%llu covered), %u run%s -> %s/vemtra.spi, "
           "%s/vemtra.dpi\n",
           totals.files, totals.functions, totals.functions_entered, static_cast<unsigned long long>(totals.blocks),
           static_cast<unsigned long long>(totals.blocks_covered), request.runs, request.runs == 1 ? "" : "s",
           request.out_dir.c_str(), request.out_dir.c_str());
    if (left_out > 0)
        printf("vemcov-import: %zu line%s of files without any function left out\n", left_out,
               left_out == 1 ? "" : "s");
    return 0;
}
