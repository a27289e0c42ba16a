/* cobertura_writer.cpp -- Cobertura XML from the report model. */
#include "report/cobertura_writer.h"

#include <algorithm>
#include <cinttypes>
#include <climits>
#include <unistd.h>

#include "analysis/xml_escape.h"
#include "driver/usage.h"
#include "report/export_file.h"
#include "shared/vemtra/tallyfold/checked_io.h"

static const char DOCUMENT_START[] =
    "<?xml version=\"1.0\" ?>\n"
    "<!DOCTYPE coverage SYSTEM \"http://cobertura.sourceforge.net/xml/coverage-04.dtd\">\n";

CoberturaWriter::CoberturaWriter(const char *path) : path_(path), out_(createExportFile(path))
{
    char buffer[PATH_MAX];
    if (getcwd(buffer, sizeof buffer) != nullptr)
        cwd_ = buffer;
}

/* A name or path as XML text: escaped as the other XML files escape it,
 * and a control character, which XML 1.0 does not allow in a document, as
 * "?" (the documented XML files keep such bytes; this file is read by
 * strict parsers in CI). */
static void writeXmlValue(FILE *out, const char *text)
{
    std::string value = text;
    for (char &c : value)
        if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r')
            c = '?';
    escapeXML(out, value.c_str());
}

/* `covered` / `total` as Cobertura's rates are written: 0 to 1, four
 * decimals; 1 for nothing to cover, as the format's other writers do. */
static void writeRate(FILE *out, const char *attribute, uint64_t covered, uint64_t total)
{
    fprintf(out, " %s=\"%.4f\"", attribute, total == 0 ? 1.0 : static_cast<double>(covered) / total);
}

void CoberturaWriter::module(const ModuleReport &module, bool analysed)
{
    if (!analysed)
        return;
    std::string file = module.path;
    if (!cwd_.empty() && file.compare(0, cwd_.size(), cwd_) == 0 && file.size() > cwd_.size() &&
        file[cwd_.size()] == '/')
        file.erase(0, cwd_.size() + 1);
    size_t slash = file.rfind('/');
    std::string directory = slash == std::string::npos ? "." : file.substr(0, slash);
    classes_.push_back(ClassEntry{directory, file, module.blocksTotal, module.blocksCovered, module.functions,
                                  feasibleLines(module)});
}

/* Branches of a line: its blocks, when it holds two or more. */
static void countBranches(const std::vector<LineReport> &lines, uint64_t *valid, uint64_t *covered)
{
    for (const LineReport &line : lines) {
        if (line.blocks >= 2) {
            *valid += line.blocks;
            *covered += line.executed;
        }
    }
}

static void writeLine(FILE *out, const LineReport &line)
{
    fprintf(out, "<line number=\"%" PRIu32 "\" hits=\"%" PRIu64 "\"", line.line, line.hits);
    if (line.blocks >= 2)
        fprintf(out, " branch=\"true\" condition-coverage=\"%" PRIu64 "%% (%" PRIu32 "/%" PRIu32 ")\"",
                static_cast<uint64_t>(100.0 * line.executed / line.blocks), line.executed, line.blocks);
    fputs("/>\n", out);
}

static void writeMethod(FILE *out, const FunctionReport &function)
{
    fputs("<method name=\"", out);
    writeXmlValue(out, function.procName);
    fputs("\" signature=\"\"", out);
    writeRate(out, "line-rate", function.covered, function.blocks);
    fputs(" branch-rate=\"1.0000\" complexity=\"0\">\n<lines>\n", out);
    fprintf(out, "<line number=\"%" PRIu32 "\" hits=\"%" PRIu64 "\"/>\n", function.line,
            function.called ? std::max<uint64_t>(function.entries, 1) : 0);
    fputs("</lines>\n</method>\n", out);
}

void CoberturaWriter::endRun(const RunReport &run)
{
    uint64_t branches = 0, branchesCovered = 0;
    for (const ClassEntry &entry : classes_)
        countBranches(entry.lines, &branches, &branchesCovered);
    fputs(DOCUMENT_START, out_);
    fputs("<coverage", out_);
    writeRate(out_, "line-rate", run.blocksCovered, run.blocks);
    writeRate(out_, "branch-rate", branchesCovered, branches);
    fprintf(out_,
            " lines-covered=\"%" PRIu64 "\" lines-valid=\"%" PRIu64 "\" branches-covered=\"%" PRIu64
            "\" branches-valid=\"%" PRIu64 "\" complexity=\"0\" version=\"vemcov %s\" timestamp=\"0\">\n",
            run.blocksCovered, run.blocks, branchesCovered, branches, VEMCOV_VERSION);
    fputs("<sources>\n<source>", out_);
    writeXmlValue(out_, cwd_.c_str());
    fputs("</source>\n</sources>\n<packages>\n", out_);

    /* Packages in name order; classes of one package in the run's order. */
    std::stable_sort(classes_.begin(), classes_.end(),
                     [](const ClassEntry &a, const ClassEntry &b) { return a.directory < b.directory; });
    for (size_t first = 0; first < classes_.size();) {
        size_t last = first;
        uint64_t blocks = 0, blocksCovered = 0, packageBranches = 0, packageBranchesCovered = 0;
        for (; last < classes_.size() && classes_[last].directory == classes_[first].directory; ++last) {
            blocks += classes_[last].blocks;
            blocksCovered += classes_[last].blocksCovered;
            countBranches(classes_[last].lines, &packageBranches, &packageBranchesCovered);
        }
        fputs("<package name=\"", out_);
        writeXmlValue(out_, classes_[first].directory.c_str());
        fputc('"', out_);
        writeRate(out_, "line-rate", blocksCovered, blocks);
        writeRate(out_, "branch-rate", packageBranchesCovered, packageBranches);
        fputs(" complexity=\"0\">\n<classes>\n", out_);
        for (size_t i = first; i < last; ++i) {
            const ClassEntry &entry = classes_[i];
            uint64_t classBranches = 0, classBranchesCovered = 0;
            countBranches(entry.lines, &classBranches, &classBranchesCovered);
            const std::string name = entry.file.substr(entry.file.rfind('/') + 1);
            fputs("<class name=\"", out_);
            writeXmlValue(out_, name.c_str());
            fputs("\" filename=\"", out_);
            writeXmlValue(out_, entry.file.c_str());
            fputc('"', out_);
            writeRate(out_, "line-rate", entry.blocksCovered, entry.blocks);
            writeRate(out_, "branch-rate", classBranchesCovered, classBranches);
            fputs(" complexity=\"0\">\n<methods>\n", out_);
            for (const FunctionReport &function : entry.functions)
                writeMethod(out_, function);
            fputs("</methods>\n<lines>\n", out_);
            for (const LineReport &line : entry.lines)
                writeLine(out_, line);
            fputs("</lines>\n</class>\n", out_);
        }
        fputs("</classes>\n</package>\n", out_);
        first = last;
    }
    fputs("</packages>\n</coverage>\n", out_);
    checked_close_output(out_, path_.c_str());
    out_ = nullptr;
}
