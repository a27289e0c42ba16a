// Colour table: a colour class outside 1..7 ends the run wherever it is
// used. (The listings' golden pages show the colour changes.)
#include <cstdio>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "report/colors.h"
#include "tests/support/capture.h"

using testsupport::CaptureInChild;
using testsupport::Captured;

TEST(Colors, InvalidClassEndsTheRun)
{
    for (int bad : {0, 8, -1}) {
        for (const auto &use : {std::function<void()>([=] { SetBGColor(bad, "red"); }),
                                std::function<void()>([=] { changeColor(stdout, bad, COLOR_COVERED); }),
                                std::function<void()>([=] { changeColor(stdout, COLOR_COVERED, bad); })}) {
            Captured run = CaptureInChild(use);
            EXPECT_EQ(run.status, 1);
            EXPECT_EQ(run.out, "ERROR: unknown color " + std::to_string(bad) + "\n");
            EXPECT_EQ(run.err, "");
        }
    }
}
