/* report_writer.h -- one output format of the full report.
 *
 * The run driver hands every writer of the run the same report model, in
 * the same order: beginRun once, module for each module in the order of the
 * analysis, endRun once with the totals. A writer prints the model's
 * numbers; it never computes coverage of its own.
 */
#ifndef VEMCOV_REPORT_REPORT_WRITER_H
#define VEMCOV_REPORT_REPORT_WRITER_H

#include "analysis/module_report.h"

class ReportWriter {
public:
    virtual ~ReportWriter() = default;

    /* Whether module() reads ModuleReport::positions and infeasibleLines
     * (collecting them costs a copy of the module's position table). */
    virtual bool readsPositions() const { return false; }

    virtual void beginRun() {}

    /* One module. `analysed` is false when the analysis gave the module no
     * numbers (its source could not be read, the store refused a block) or,
     * under -ref, found nothing newly covered in it. */
    virtual void module(const ModuleReport &module, bool analysed) = 0;

    virtual void endRun(const RunReport &run) { (void)run; }
};

#endif
