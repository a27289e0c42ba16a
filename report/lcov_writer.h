/* lcov_writer.h -- the coverage as an LCOV tracefile (-lcov), the format
 * that genhtml and most CI services read. Its records, per module:
 *   SF:<absolute path>
 *   FN:<line>,<profile name> and FNDA:<calls>,<profile name> per function
 *   FNF:<functions>  FNH:<functions that ran>
 *   DA:<line>,<count> per line that holds a feasible recorded position
 *   BRDA:<line>,0,<block>,<taken> per block of a line that holds two or more
 *   BRF:<blocks so listed>  BRH:<of them taken>
 *   LF:<lines>  LH:<lines with a count above 0>
 *   end_of_record
 * docs/formats.md says how each number follows from the report model.
 */
#ifndef VEMCOV_REPORT_LCOV_WRITER_H
#define VEMCOV_REPORT_LCOV_WRITER_H

#include <cstdio>
#include <string>

#include "report/report_writer.h"

class LcovWriter : public ReportWriter {
public:
    /* Creates `path`; a file that cannot be created ends the run ("Couldn't
     * open file %s for output!\n", status 1). */
    explicit LcovWriter(const char *path);
    bool readsPositions() const override { return true; }
    void module(const ModuleReport &module, bool analysed) override;
    /* Closes the file; a failed write ends the run. */
    void endRun(const RunReport &run) override;

private:
    std::string path_;
    FILE *out_;
};

/* Writes one module's record to `out`; `cwd` makes a relative source path
 * absolute. */
void writeLcovRecord(FILE *out, const ModuleReport &module, const std::string &cwd);

#endif
