/* module_report.h -- the report model: what the analysis found for one
 * module (one source file) and for the whole run, in plain records that
 * every output writer reads. A writer prints these numbers; it never counts
 * anything again, so all outputs agree by construction.
 */
#ifndef VEMCOV_ANALYSIS_MODULE_REPORT_H
#define VEMCOV_ANALYSIS_MODULE_REPORT_H

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

class coverage_list;
class parser;

/* One recorded source position: what the blocks starting there add up to. */
struct PositionReport {
    uint32_t line;
    uint32_t column;
    uint64_t count;        /* summed execution count; 0 also for a never-called function */
    uint32_t blocks;       /* blocks that start here */
    uint32_t executed;     /* of them with a count above 0 */
    bool neverCalled;      /* the mark of a function without a segment */
    bool newFunction;      /* -ref: inside a function new to the reference */
    bool infeasible;       /* on a line that markers exclude */
    uint32_t endLine;      /* where its blocks' source range ends, when the */
    uint32_t endColumn;    /* profile gives ends (packed ranges); else 0 */
};

/* One function the module's totals count (functions left out by markers or
 * by their generated names are not here). */
struct FunctionReport {
    const char *name;      /* display name */
    const char *procName;  /* name as the profiles record it */
    uint32_t line;         /* first line */
    uint32_t blocks;       /* feasible blocks */
    uint32_t covered;      /* feasible blocks with a count above 0 */
    uint64_t entries;      /* calls: the entry blocks' counts summed as floats, truncated */
    bool called;           /* the dynamic profile holds a segment for it; this is what
                              makes it count as a covered function */
};

/* One module. Percentages are 100 x covered / total, 0.0 for a total of 0,
 * unrounded (writers round when they print). */
struct ModuleReport {
    const char *path;                       /* the source path as the profiles resolve it */
    bool readable;                          /* the source could be read (else no positions) */
    std::vector<PositionReport> positions;  /* ascending by line, then column */
    /* The lines that markers exclude, as sorted ranges [first, last]. */
    std::vector<std::pair<uint64_t, uint64_t>> infeasibleLines;
    std::vector<FunctionReport> functions;  /* in the order the analysis met them */
    uint32_t functionsTotal;
    uint32_t functionsCovered;              /* -ref: newly covered functions */
    uint64_t blocksTotal;
    uint64_t blocksCovered;
    double functionPercent;
    double blockPercent;
    bool covered;                           /* counts among the covered files */
};

/* The run's totals, as the summary page shows them. */
struct RunReport {
    uint64_t files;
    uint64_t filesCovered;
    uint64_t functions;
    uint64_t functionsCovered;
    uint64_t blocks;
    uint64_t blocksCovered;
};

/* One source line that holds feasible recorded positions: what the line-
 * oriented formats (LCOV, Cobertura) show of it. */
struct LineReport {
    uint32_t line;
    uint64_t hits;       /* the highest count among the line's positions */
    uint32_t blocks;     /* blocks that start on the line */
    uint32_t executed;   /* of them with a count above 0 */
    size_t first, last;  /* its positions: ModuleReport::positions[first, last) */
};

/* The lines of `module` that hold feasible positions, ascending. */
std::vector<LineReport> feasibleLines(const ModuleReport &module);

/* The module being analysed: markBlocks fills its functions and numbers. */
extern ModuleReport currentModule;

/* Starts the record of the module `path`: empty, numbers 0. */
void startModuleReport(ModuleReport *module, const char *path);

/* Copies into the record what the writers that show lines need: the
 * positions of the store's current file, sorted, each marked infeasible
 * when `markers` excludes its line, and the excluded lines themselves. */
void collectModuleDetails(ModuleReport *module, const coverage_list &store, const parser *markers);

/* The run's totals so far. */
RunReport runReport();

#endif
