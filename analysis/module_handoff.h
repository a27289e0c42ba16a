/* module_handoff.h -- the analysis state of the module just analysed, taken
 * over as a whole so that its pages can be written on another thread while
 * the run goes on with the next module: the store's position table, the
 * comment parser, the function tables and the percentages. */
#ifndef VEMCOV_ANALYSIS_MODULE_HANDOFF_H
#define VEMCOV_ANALYSIS_MODULE_HANDOFF_H

#include <memory>

#include "analysis/coverage_store.h"

class parser;
struct COMP;
struct func;

struct DetachedModule {
    coverage_list store;        /* its current file is the module's */
    parser *markers = nullptr;  /* owned */
    COMP *functionsByLine = nullptr;
    double functionPercent = 0.0;
    double blockPercent = 0.0;
    func **table = nullptr;     /* owned, with the records in its two parts */
    func **covered = nullptr;
    int coveredCount = 0;
    func **uncovered = nullptr;
    int uncoveredCount = 0;

    DetachedModule() = default;
    DetachedModule(const DetachedModule &) = delete;
    DetachedModule &operator=(const DetachedModule &) = delete;
    ~DetachedModule();
};

/* Takes over the current module's state (g_cl's current file, pars, the
 * function tables): the globals are left empty, as releasing them would
 * leave them. */
std::unique_ptr<DetachedModule> detachCurrentModule();

#endif
