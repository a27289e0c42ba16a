// The fast road's writers called directly: a (file, function) pair whose
// segment cannot be fetched is not passed, so the rest of the walk writes
// nothing more; and the truncation of stored counts. Each case runs in a
// child process, because the writers work on process-wide state.
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "analysis/call_graph_text.h"
#include "analysis/fast_coverage.h"
#include "driver/run_state.h"
#include "driver/settings.h"
#include "shared/vemtra/client/dpi_file.h"
#include "tests/support/capture.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scratch_dir.h"

using namespace testsupport;

namespace {

// Writes the project's profiles, opens the dynamic one as the run's profile,
// and gives directory entry `lost` a file name whose segment cannot be
// found; then runs `write` on standard output in a child.
Captured WriteWithLostPair(int lost, bool (*write)(FILE *, int), int kind)
{
    Project p;
    p.Add("/src/a.c", "f1", 1).Blocks({{3, 1, 1}}).Calls({{0, 1, "f2(E)"}});
    p.Add("/src/a.c", "f2", 5).Blocks({{4, 5, 1}});
    p.Add("/src/b.c", "g1", 1).Blocks({{5, 1, 1}});
    ScratchDir dir;
    std::string spi = dir.write("vemtra.spi", SpiText(p)), dpi = dir.write("vemtra.dpi", DpiBytes(p));
    return CaptureInChild([&] {
        g_lpszSPIFileName = strdup(spi.c_str());
        g_lpszDPIFileName = strdup(dpi.c_str());
        pgofDPIFile = VEMTRA_Open_Dpi_File(dpi.c_str());
        if (pgofDPIFile == nullptr)
            _exit(3);
        static char lostFile[] = "/src/lost.c";  // the directory's names are the file's own
        pgofDPIFile->directory[lost].file_name = lostFile;
        if (!write(stdout, kind))
            _exit(4);
    });
}

bool CallGraphWriter(FILE *out, int)
{
    return CallGraph(out);
}

}  // namespace

TEST(FastRoad, APairWithoutSegmentEndsTheCallGraphWalk)
{
    Captured run = WriteWithLostPair(1, CallGraphWriter, 0);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, ".module 0 \"/src/a.c\"\n"
                       "    .function \"f1\" 0 0 3\n"
                       "        .dcall 0 0 \"f2\" 1 3\n"
                       "    .funstats \"f1\" 0 0 3  1 3  0 0  0 0\n"
                       ".mstats \"/src/a.c\" 0 1  1 3  0 0  0 0\n"
                       ".tstats 1 1  1 3  0 0  0 0\n");

    // Lost at the first pair: the totals alone.
    run = WriteWithLostPair(0, CallGraphWriter, 0);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, ".tstats 0 0  0 0  0 0  0 0\n");
}

TEST(FastRoad, APairWithoutSegmentEndsTheCoverageWalk)
{
    // The module header of the lost pair's file is written before its
    // segment is looked for.
    Captured run = WriteWithLostPair(1, bOutputFunctionBlockFastCoverage, FAST_TXT_FUNCTIONS);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "Covered Functions in File: \"/src/a.c\"\n"
                       "\"f1\"\t3\t1\t1\t100.00\n"
                       "\nCovered Functions in File: \"/src/lost.c\"\n");
}

TEST(FastRoad, StoredCountsAreTruncated)
{
    EXPECT_EQ(truncatedCount(2.99), 2u);
    EXPECT_EQ(truncatedCount(9007199254740992.0), 9007199254740992u);
    // A profile of 0 runs divides by zero: no undefined conversion.
    EXPECT_EQ(truncatedCount(NAN), 0u);
    EXPECT_EQ(truncatedCount(-1.0), 0u);
    EXPECT_EQ(truncatedCount(INFINITY), UINT64_MAX);
    EXPECT_EQ(truncatedCount(18446744073709551616.0), UINT64_MAX);
}
