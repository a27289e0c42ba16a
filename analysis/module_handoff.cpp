/* module_handoff.cpp -- taking the current module's state over. */
#include "analysis/module_handoff.h"

#include <cstdlib>

#include "analysis/comment_parser.h"
#include "analysis/coverage_state.h"

DetachedModule::~DetachedModule()
{
    for (int i = 0; i < coveredCount; ++i)
        free(covered[i]);
    for (int i = 0; i < uncoveredCount; ++i)
        free(uncovered[i]);
    free(table);
    delete markers;
}

std::unique_ptr<DetachedModule> detachCurrentModule()
{
    auto module = std::make_unique<DetachedModule>();
    g_cl.moveCurrentFileTo(module->store);
    module->markers = pars;
    pars = nullptr;
    module->functionsByLine = first_func_line;
    module->functionPercent = functionCoverage;
    module->blockPercent = blockCoverage;
    module->table = fileFuncs;
    module->covered = fileFuncsCovered;
    module->coveredCount = numFileFuncsCovered;
    module->uncovered = fileFuncsUncovered;
    module->uncoveredCount = numFileFuncsUncovered;
    fileFuncs = fileFuncsCovered = fileFuncsUncovered = nullptr;
    numFileFuncs = numFileFuncsCovered = numFileFuncsUncovered = 0;
    return module;
}
