// The end of the progress line: the final "\n" on standard output whenever
// the meter is on, on the fast road too (which prints nothing else there).
#include <string>

#include <gtest/gtest.h>

#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

using testsupport::RunResult;
using testsupport::Scenario;

TEST(ProgressLine, EndsWhenTheMeterIsOn)
{
    Scenario scenario;
    testsupport::Project project;
    project.Add(scenario.path("a.c"), "main", 1).Blocks({{1, 2, 5}});
    scenario.write("a.c", "int main()\n{\n    return 0;\n}\n");
    scenario.write("vemtra.spi", testsupport::SpiText(project));
    scenario.write("vemtra.dpi", testsupport::DpiBytes(project));

    RunResult on = scenario.run({"-txtfcvrg", "functions.txt"});
    EXPECT_EQ(on.out, "\n") << on.err;
    RunResult off = scenario.run({"-nopmeter", "-txtfcvrg", "functions.txt"});
    EXPECT_EQ(off.out, "") << off.err;
}
