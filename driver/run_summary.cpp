/* run_summary.cpp -- the closing totals and the coverage gates. */
#include "driver/run_summary.h"

#include <cinttypes>

#include "analysis/percent_format.h"

static const char MSG_BELOW_GATE[] = "ERROR: %s coverage %.2f%% is below the required %.2f%%\n";

static void printTotal(FILE *out, const char *label, uint64_t covered, uint64_t total)
{
    fprintf(out, "%-10s %" PRIu64 " of %" PRIu64 " covered (%.2f%%)\n", label, covered, total,
            roundHalfUp2(coveragePercent(covered, total)));
}

void printRunSummary(FILE *out, const RunReport &run)
{
    printTotal(out, "Files:", run.filesCovered, run.files);
    printTotal(out, "Functions:", run.functionsCovered, run.functions);
    printTotal(out, "Blocks:", run.blocksCovered, run.blocks);
}

/* Whether the shown coverage `covered` / `total` misses `threshold`. */
static bool belowGate(const char *kind, uint64_t covered, uint64_t total, double threshold)
{
    if (threshold < 0.0)
        return false;
    double shown = roundHalfUp2(coveragePercent(covered, total));
    if (shown >= threshold)
        return false;
    fprintf(stderr, MSG_BELOW_GATE, kind, shown, threshold);
    return true;
}

int coverageGateStatus(const RunReport &run, double minBlock, double minFunc)
{
    bool failed = belowGate("block", run.blocksCovered, run.blocks, minBlock);
    failed = belowGate("function", run.functionsCovered, run.functions, minFunc) || failed;
    return failed ? 3 : 0;
}
