/* json_writer.cpp -- the JSON summary of a run. */
#include "report/json_writer.h"

#include <cinttypes>

#include "analysis/percent_format.h"
#include "report/export_file.h"
#include "shared/vemtra/tallyfold/checked_io.h"

JsonWriter::JsonWriter(const char *path, const char *project)
    : path_(path), project_(project), out_(createExportFile(path))
{
}

void writeJsonString(FILE *out, const char *text)
{
    if (text == nullptr) {
        fputs("null", out);
        return;
    }
    fputc('"', out);
    for (const unsigned char *p = reinterpret_cast<const unsigned char *>(text); *p != '\0'; ++p) {
        switch (*p) {
        case '"': fputs("\\\"", out); break;
        case '\\': fputs("\\\\", out); break;
        case '\n': fputs("\\n", out); break;
        case '\t': fputs("\\t", out); break;
        case '\r': fputs("\\r", out); break;
        default:
            if (*p < 0x20)
                fprintf(out, "\\u%04x", *p);
            else
                fputc(*p, out);
        }
    }
    fputc('"', out);
}

void JsonWriter::module(const ModuleReport &module, bool analysed)
{
    if (!analysed)
        return;
    files_.push_back(FileEntry{module.path, module.functionsTotal, module.functionsCovered, module.blocksTotal,
                               module.blocksCovered, module.functionPercent, module.blockPercent,
                               module.functions});
}

/* The numbers both the totals and a file entry carry. */
static void writeNumbers(FILE *out, uint64_t functions, uint64_t functionsCovered, uint64_t blocks,
                         uint64_t blocksCovered, double functionPercent, double blockPercent)
{
    fprintf(out,
            "\"functions\":%" PRIu64 ",\"functions_covered\":%" PRIu64 ",\"blocks\":%" PRIu64
            ",\"blocks_covered\":%" PRIu64 ",\"function_percent\":%.2f,\"block_percent\":%.2f",
            functions, functionsCovered, blocks, blocksCovered, roundHalfUp2(functionPercent),
            roundHalfUp2(blockPercent));
}

void JsonWriter::endRun(const RunReport &run)
{
    fputs("{\"format\":\"vemcov\",\"version\":1,\"project\":", out_);
    writeJsonString(out_, project_);
    fprintf(out_, ",\n\"totals\":{\"files\":%" PRIu64 ",\"files_covered\":%" PRIu64 ",", run.files,
            run.filesCovered);
    writeNumbers(out_, run.functions, run.functionsCovered, run.blocks, run.blocksCovered,
                 coveragePercent(run.functionsCovered, run.functions), coveragePercent(run.blocksCovered, run.blocks));
    fputs("},\n\"files\":[", out_);
    for (size_t i = 0; i < files_.size(); ++i) {
        const FileEntry &file = files_[i];
        fputs(i == 0 ? "\n{\"path\":" : ",\n{\"path\":", out_);
        writeJsonString(out_, file.path);
        fputc(',', out_);
        writeNumbers(out_, file.functions, file.functionsCovered, file.blocks, file.blocksCovered,
                     file.functionPercent, file.blockPercent);
        fputs(",\"function_list\":[", out_);
        for (size_t k = 0; k < file.functionList.size(); ++k) {
            const FunctionReport &function = file.functionList[k];
            fputs(k == 0 ? "{\"name\":" : ",{\"name\":", out_);
            writeJsonString(out_, function.name);
            fputs(",\"profile_name\":", out_);
            writeJsonString(out_, function.procName);
            fprintf(out_, ",\"line\":%" PRIu32 ",\"blocks\":%" PRIu32 ",\"blocks_covered\":%" PRIu32
                          ",\"calls\":%" PRIu64 "}",
                    function.line, function.blocks, function.covered, function.entries);
        }
        fputs("]}", out_);
    }
    fputs("\n]}\n", out_);
    checked_close_output(out_, path_.c_str());
    out_ = nullptr;
}
