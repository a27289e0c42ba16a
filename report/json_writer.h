/* json_writer.h -- the report's numbers as one JSON document (-json):
 *   {"format":"vemcov","version":1,"project":...,
 *    "totals":{"files","files_covered","functions","functions_covered",
 *              "blocks","blocks_covered","function_percent","block_percent"},
 *    "files":[{"path","functions","functions_covered","blocks",
 *              "blocks_covered","function_percent","block_percent",
 *              "function_list":[{"name","profile_name","line","blocks",
 *                                "blocks_covered","calls"}]}]}
 * Percentages are numbers with two decimals, rounded half-up as the pages
 * round them. docs/formats.md has the details.
 */
#ifndef VEMCOV_REPORT_JSON_WRITER_H
#define VEMCOV_REPORT_JSON_WRITER_H

#include <cstdio>
#include <string>
#include <vector>

#include "report/report_writer.h"

class JsonWriter : public ReportWriter {
public:
    /* Creates `path` (failure: "Couldn't open file %s for output!\n",
     * status 1); `project` is the -prj name or null. */
    JsonWriter(const char *path, const char *project);
    void module(const ModuleReport &module, bool analysed) override;
    /* Writes the document and closes the file; a failed write ends the run. */
    void endRun(const RunReport &run) override;

private:
    /* What a file's entry needs of its module, kept until the totals are
     * known (they come first in the document). */
    struct FileEntry {
        const char *path;
        uint32_t functions, functionsCovered;
        uint64_t blocks, blocksCovered;
        double functionPercent, blockPercent;
        std::vector<FunctionReport> functionList;
    };
    std::string path_;
    const char *project_;
    FILE *out_;
    std::vector<FileEntry> files_;
};

/* Writes `text` as a JSON string (quotes included): '"', '\' and control
 * characters escaped; other bytes as they are. A null text writes null. */
void writeJsonString(FILE *out, const char *text);

#endif
