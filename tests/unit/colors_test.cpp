// Colour table: a colour class outside 1..7 ends the run wherever it is
// used; a colour change writes one anchor with the new class's colour.
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "report/colors.h"
#include "tests/support/capture.h"

using testsupport::CaptureInChild;
using testsupport::Captured;

TEST(Colors, InvalidClassEndsTheRun)
{
    for (int bad : {0, 8, -1}) {
        Captured set = CaptureInChild([&] { SetBGColor(bad, "red"); });
        EXPECT_EQ(set.status, 1);
        EXPECT_EQ(set.out, "ERROR: unknown color " + std::to_string(bad) + "\n");
        EXPECT_EQ(set.err, "");

        Captured change_new = CaptureInChild([&] { changeColor(stdout, bad, COLOR_COVERED); });
        EXPECT_EQ(change_new.status, 1);
        EXPECT_EQ(change_new.out, "ERROR: unknown color " + std::to_string(bad) + "\n");

        Captured change_old = CaptureInChild([&] { changeColor(stdout, COLOR_COVERED, bad); });
        EXPECT_EQ(change_old.status, 1);
        EXPECT_EQ(change_old.out, "ERROR: unknown color " + std::to_string(bad) + "\n");
    }
}

TEST(Colors, ChangeWritesTheNewClassColour)
{
    Captured run = CaptureInChild([] {
        SetBGColor(COLOR_PARTIAL, "tan");
        changeColor(stdout, COLOR_PARTIAL, COLOR_INFO);
        changeColor(stdout, COLOR_UNCOVERED_FUNCTION, COLOR_PARTIAL);
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "</a><a style=\"background-color: tan\">"
                       "</a><a style=\"background-color: #ffcccc\">");
}
