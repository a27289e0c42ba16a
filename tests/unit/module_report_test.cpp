// The report model's line view: the positions the store holds, sorted and
// marked infeasible by the markers, the excluded lines themselves, and the
// per-line figures that the LCOV and Cobertura writers print; a crowded
// line's positions past the walked ones are found like the others.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/comment_parser.h"
#include "analysis/coverage_state.h"
#include "analysis/coverage_store.h"
#include "analysis/module_report.h"
#include "tests/support/scratch_dir.h"

TEST(ModuleReport, PositionsInfeasibleLinesAndLineFigures)
{
    testsupport::ScratchDir dir;
    const std::string path = dir.write("m.c",
                                       "int f(int a)\n"                       // 1
                                       "{\n"                                  // 2
                                       "    if (a) return 1; // NF\n"         // 3
                                       "    return a ? 2 : 3;\n"              // 4
                                       "}\n"                                  // 5
                                       "int g(void) { return 0; }\n");        // 6
    coverage_list store;
    ASSERT_TRUE(store.bSetName(path.c_str()));
    // Line 4 is crowded: twelve positions, added from right to left, one of
    // them twice; line 6 holds a never-called function's mark.
    for (uint32_t column = 12; column >= 1; --column)
        ASSERT_TRUE(store.bAddBlockCount(path.c_str(), 4, column, column % 3, false, nullptr));
    ASSERT_TRUE(store.bAddBlockCount(path.c_str(), 4, 5, 7, false, nullptr));
    ASSERT_TRUE(store.bAddBlockCount(path.c_str(), 3, 5, 9, false, nullptr));
    ASSERT_TRUE(store.bAddBlockCount(path.c_str(), 2, 1, 4, false, nullptr));
    ASSERT_TRUE(store.bAddBlockCount(path.c_str(), 6, 1, NEVER_EXECUTED, false, nullptr));

    std::vector<std::string> oneLine = {"NF"}, none;
    COMP function = {};
    function.line = 1;
    first_func_line = &function;
    parser markers(path.c_str(), oneLine, none, none);
    ModuleReport module;
    startModuleReport(&module, path.c_str());
    collectModuleDetails(&module, store, &markers);
    first_func_line = nullptr;

    ASSERT_TRUE(module.readable);
    ASSERT_EQ(15u, module.positions.size());
    for (size_t i = 1; i < module.positions.size(); ++i) {
        const PositionReport &a = module.positions[i - 1], &b = module.positions[i];
        EXPECT_TRUE(a.line < b.line || (a.line == b.line && a.column < b.column)) << i;
    }
    EXPECT_EQ((std::vector<std::pair<uint64_t, uint64_t>>{{3, 3}}), module.infeasibleLines);
    EXPECT_TRUE(module.positions[1].infeasible);   // (3, 5)
    EXPECT_FALSE(module.positions[2].infeasible);  // (4, 1)
    const PositionReport &crowded = module.positions[2 + 4];  // (4, 5): 5 % 3, then 7
    EXPECT_EQ(5u, crowded.column);
    EXPECT_EQ(9u, crowded.count);
    EXPECT_EQ(2u, crowded.blocks);
    EXPECT_EQ(2u, crowded.executed);
    EXPECT_TRUE(module.positions.back().neverCalled);
    EXPECT_EQ(0u, module.positions.back().count);

    // Line 3 is excluded; line 4: 13 blocks, 9 of them ran (counts column % 3
    // and the extra 7), the highest position count 9.
    const std::vector<LineReport> lines = feasibleLines(module);
    ASSERT_EQ(3u, lines.size());
    EXPECT_EQ(2u, lines[0].line);
    EXPECT_EQ(4u, lines[0].hits);
    EXPECT_EQ(4u, lines[1].line);
    EXPECT_EQ(9u, lines[1].hits);
    EXPECT_EQ(13u, lines[1].blocks);
    EXPECT_EQ(9u, lines[1].executed);
    EXPECT_EQ(12u, lines[1].last - lines[1].first);
    EXPECT_EQ(6u, lines[2].line);
    EXPECT_EQ(0u, lines[2].hits);
}
