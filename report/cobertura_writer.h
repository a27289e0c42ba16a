/* cobertura_writer.h -- the coverage as Cobertura XML (-cobertura), valid
 * against coverage-04.dtd: one package per source directory, one class per
 * source file, one method per function, and the lines that hold feasible
 * recorded positions, with branch and condition-coverage where a line holds
 * several blocks.
 *
 * vemcov's unit is the block: the root's line-rate, lines-valid and
 * lines-covered, and the line-rate of each package and class, carry the
 * block figures of the summary page, so a CI badge shows vemcov's own
 * percentage. docs/formats.md has the details.
 */
#ifndef VEMCOV_REPORT_COBERTURA_WRITER_H
#define VEMCOV_REPORT_COBERTURA_WRITER_H

#include <cstdio>
#include <string>
#include <vector>

#include "report/report_writer.h"

class CoberturaWriter : public ReportWriter {
public:
    /* Creates `path` (failure: "Couldn't open file %s for output!\n",
     * status 1). */
    explicit CoberturaWriter(const char *path);
    bool readsPositions() const override { return true; }
    void module(const ModuleReport &module, bool analysed) override;
    /* Writes the document, package by package, and closes the file; a
     * failed write ends the run. */
    void endRun(const RunReport &run) override;

private:
    /* What a class needs of its module, kept until the root's numbers are
     * known (they are the root element's attributes). */
    struct ClassEntry {
        std::string directory;
        std::string file;  /* the path relative to the current directory when below it */
        uint64_t blocks, blocksCovered;
        std::vector<FunctionReport> functions;
        std::vector<LineReport> lines;
    };
    std::string path_;
    std::string cwd_;
    FILE *out_;
    std::vector<ClassEntry> classes_;
};

#endif
