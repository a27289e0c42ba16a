/* module_report.cpp -- filling the report model from the analysis. */
#include "analysis/module_report.h"

#include <algorithm>

#include "analysis/comment_parser.h"
#include "analysis/coverage_state.h"
#include "analysis/coverage_store.h"

ModuleReport currentModule;

void startModuleReport(ModuleReport *module, const char *path)
{
    module->path = path;
    module->readable = false;
    module->positions.clear();
    module->infeasibleLines.clear();
    module->functions.clear();
    module->functionsTotal = module->functionsCovered = 0;
    module->blocksTotal = module->blocksCovered = 0;
    module->functionPercent = module->blockPercent = 0.0;
    module->covered = false;
}

void collectModuleDetails(ModuleReport *module, const coverage_list &store, const parser *markers)
{
    if (markers != nullptr)
        module->infeasibleLines = markers->disabled_ranges();
    const file_list_node *file = store.currentFile;
    module->readable = file != nullptr && file->lineTable != nullptr;
    if (!module->readable)
        return;
    for (uint32_t line = 0; line <= file->lineSlots; ++line) {
        for (const block_list_node *node = file->lineTable[line]; node != nullptr; node = node->next) {
            PositionReport position;
            position.line = node->line;
            position.column = node->column;
            position.neverCalled = node->count == NEVER_EXECUTED;
            position.count = position.neverCalled ? 0 : node->count;
            position.blocks = node->numBlocks;
            position.executed = node->numExecuted;
            position.newFunction = node->newFunction;
            position.infeasible = markers != nullptr && markers->is_disabled_line(node->line);
            position.endLine = node->endLine;
            position.endColumn = node->endColumn;
            module->positions.push_back(position);
        }
    }
    std::sort(module->positions.begin(), module->positions.end(),
              [](const PositionReport &a, const PositionReport &b) {
                  return a.line != b.line ? a.line < b.line : a.column < b.column;
              });
}

std::vector<LineReport> feasibleLines(const ModuleReport &module)
{
    std::vector<LineReport> lines;
    for (size_t i = 0; i < module.positions.size(); ++i) {
        const PositionReport &position = module.positions[i];
        if (position.infeasible || position.line == 0)
            continue;
        if (lines.empty() || lines.back().line != position.line)
            lines.push_back(LineReport{position.line, 0, 0, 0, i, i});
        LineReport &line = lines.back();
        line.last = i + 1;
        if (position.count > line.hits)
            line.hits = position.count;
        line.blocks += position.blocks;
        line.executed += position.executed;
    }
    return lines;
}

RunReport runReport()
{
    return RunReport{totalNumberOfFiles,  totalNumberOfFilesCovered, totalNumberOfProcs,
                     totalNumberOfProcsCovered, totalNumberOfBlocks, totalNumberOfBlocksCovered};
}
