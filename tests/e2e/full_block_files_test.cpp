// Whole projects through the full road without HTML: the full block files
// and the console output, for a project with static, never-called and
// two-instance functions, infeasible regions, a function without line
// information and a missing source; a differential run; and a profile that
// records no runs. The expected outputs are the golden cases
// full_block_files_*.
#include <string>

#include <gtest/gtest.h>

#include "tests/support/banner_text.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

using testsupport::ExpectGolden;
using testsupport::Project;
using testsupport::Scenario;

namespace {

const char APP_C[] =
    "/* app.c: a small program */\n"      // 1
    "static int helper(int x)\n"          // 2
    "{\n"                                 // 3
    "    if (x > 10)\n"                   // 4
    "        return 1;\n"                 // 5
    "    return 0;\n"                     // 6
    "}\n"                                 // 7
    "\n"                                  // 8
    "int never_called(void)\n"            // 9
    "{\n"                                 // 10
    "    return 42;\n"                    // 11
    "}\n"                                 // 12
    "\n"                                  // 13
    "int main(int argc, char **argv)\n"   // 14
    "{\n"                                 // 15
    "    int r = helper(argc);\n"         // 16
    "    /* NF_BEGIN */\n"                // 17
    "    if (r < 0)\n"                    // 18
    "        abort(\"// NF_END\");\n"     // 19
    "    /* NF_END */\n"                  // 20
    "    return r;\n"                     // 21
    "}\n"                                 // 22
    "\n"                                  // 23
    "void debug_dump(void) // NF\n"       // 24
    "{\n"                                 // 25
    "    puts(\"dump\");\n"               // 26
    "}\n"                                 // 27
    "int after(void)\n"                   // 28
    "{\n"                                 // 29
    "    return 7;\n"                     // 30
    "}\n";                                // 31

const char BOX_H[] =
    "template <typename T> struct Box {\n"
    "    Box() : value() {\n"
    "        if (sizeof(T) > 8) value = T();\n"
    "    }\n"
    "    T value;\n"
    "};\n";

}  // namespace

// app.c: debug_dump starts on a marked line and is left out; main's blocks
// on lines 17-20 are infeasible (the "// NF_END" in a string does not
// count); never_called has no segment. box.h: two instances, each with its
// own record. lost.c is missing: its module opening only, and the store's
// warning on standard output between two ticks of the meter. noline.c: both
// blocks at (1, 1), the later first.
TEST(FullBlockFiles, ProjectWithMarkers)
{
    Scenario scenario;
    scenario.write("src/app.c", APP_C);
    scenario.write("src/box.h", BOX_H);
    scenario.write("src/noline.c", "int noline(int a)\n{\n    return a * 2;\n}\n");
    std::string app = scenario.path("src/app.c"), box = scenario.path("src/box.h");
    Project p;
    p.runs = 3;
    // Out of order: the tool sorts by file, display name and profile name.
    p.Add(app, "main", 14).Blocks({{3, 15, 1}, {3, 16, 13}, {0, 18, 5}, {0, 19, 9}, {3, 21, 5}});
    p.Add(app, "helper", 2, 'S').Blocks({{3, 3, 1}, {1, 5, 9}, {2, 6, 5}});
    p.Add(app, "never_called", 9).Blocks({{0, 10, 1}, {0, 11, 5}}).OnlyInSpi();
    p.Add(app, "debug_dump", 24).Blocks({{1, 25, 1}});
    p.Add(app, "after", 28).Blocks({{3, 29, 1}});
    p.Add(box, "_ZN3BoxIiEC2Ev", 2).Blocks({{0, 2, 5}, {0, 3, 9}});  // base and complete constructor
    p.Add(box, "_ZN3BoxIiEC1Ev", 2).Blocks({{2, 2, 5}, {0, 3, 9}});
    p.Add(scenario.path("src/lost.c"), "lost_fn", 1).Blocks({{1, 1, 1}});
    p.Add(scenario.path("src/noline.c"), "noline", 1).Blocks({{5, 0, 0}, {2, 0, 0}}).line_info =
        testsupport::LineInfo::None;
    scenario.writeProfiles(p);
    ExpectGolden("full_block_files_markers", scenario,
                 scenario.run({"-nohtml", "-prj", "demo<&>", "-txtbcvrgfull", "full.txt", "-xmlbcvrgfull",
                               "full.xml", "-onelinedsbl", "NF", "-beginblkdsbl", "NF_BEGIN", "-endblkdsbl", "NF_END"}));
}

// Every function with a segment is written with the counts of the current
// profile, before the differential rule; a function without one is not
// written at all.
TEST(FullBlockFiles, DifferentialRunKeepsCountsAsRead)
{
    Scenario scenario;
    scenario.write("src/calc.c", "int add(int a, int b)\n{\n    return a + b;\n}\n"
                                 "int sub(int a, int b)\n{\n    return a - b;\n}\n"
                                 "int mul(int a, int b)\n{\n    return a * b;\n}\n"
                                 "int dvd(int a, int b)\n{\n    return a / b;\n}\n");
    std::string calc = scenario.path("src/calc.c");
    Project current;
    current.Add(calc, "add", 1).Blocks({{4, 2, 1}, {4, 3, 5}});
    current.Add(calc, "sub", 5).Blocks({{2, 6, 1}, {2, 7, 5}});
    current.Add(calc, "mul", 9).Blocks({{1, 10, 1}, {0, 11, 5}});
    current.Add(calc, "dvd", 13).Blocks({{0, 14, 1}}).OnlyInSpi();
    scenario.writeProfiles(current);
    Project reference;
    reference.Add(calc, "add", 1).Blocks({{9, 2, 1}, {9, 3, 5}});
    reference.Add(calc, "sub", 5).Blocks({{0, 6, 1}, {0, 7, 5}});
    reference.Add(calc, "dvd", 13).Blocks({{0, 14, 1}});
    scenario.write("ref.dpi", testsupport::DpiBytes(reference));
    ExpectGolden("full_block_files_reference", scenario,
                 scenario.run({"-nohtml", "-nopmeter", "-ref", "ref.dpi", "-txtbcvrgfull", "diff.txt",
                               "-xmlbcvrgfull", "diff.xml"}));
}

// The check comes at the start of the module, after its heading.
TEST(FullBlockFiles, ProfileWithoutRunsIsCorrupt)
{
    Scenario scenario;
    scenario.write("a.c", "int a;\n");
    Project p;
    p.runs = 0;
    p.Add(scenario.path("a.c"), "a", 1).Blocks({{0, 1, 1}});
    scenario.writeProfiles(p);
    ExpectGolden("full_block_files_zero_runs", scenario,
                 scenario.run({"-nohtml", "-txtbcvrgfull", "z.txt"}));
}
