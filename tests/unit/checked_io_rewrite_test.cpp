// Files written over in place (checked_open_rewritable): whichever way the
// file is left -- closed, given up on, or open when the run ends early -- it
// holds exactly what was written, as a file emptied on opening would, and
// files that cannot be cut (devices) close without a failure.
#include <cerrno>
#include <cstdio>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "shared/vemtra/tallyfold/checked_io.h"
#include "shared/vemtra/tallyfold/process_exit.h"
#include "tests/support/capture.h"
#include "tests/support/scratch_dir.h"

using testsupport::CaptureInChild;
using testsupport::Captured;
using testsupport::ScratchDir;

namespace {

const std::string OLD_TEXT = std::string(64, 'o');

// Writes "new" through the stream and, past the stream, a second piece
// through its file, as the page writer does.
void WriteBothWays(FILE *stream)
{
    fputs("new", stream);
    fflush(stream);
    ASSERT_EQ(5, write(fileno(stream), " page", 5));
    fputs(" end", stream);
}

TEST(RewrittenFiles, HoldWhatWasWrittenHoweverTheyAreLeft)
{
    ScratchDir dir;
    const std::string path = dir.write("closed", OLD_TEXT);
    FILE *stream = checked_open_rewritable(path.c_str());
    ASSERT_NE(nullptr, stream);
    WriteBothWays(stream);
    checked_close_rewritten(stream, "closed");
    EXPECT_EQ("new page end", dir.read("closed"));

    const std::string unfinished = dir.write("unfinished", OLD_TEXT);
    stream = checked_open_rewritable(unfinished.c_str());
    ASSERT_NE(nullptr, stream);
    fputs("half", stream);
    checked_close_unfinished(stream);
    EXPECT_EQ("half", dir.read("unfinished"));

    // Open when the run ends: cut by the exit, also with a buffered rest.
    const std::string open = dir.write("open", OLD_TEXT);
    Captured ended = CaptureInChild([&] {
        FILE *page = checked_open_rewritable(open.c_str());
        WriteBothWays(page);
        vemtra_Process_Exit(1);
    });
    EXPECT_EQ(1, ended.status) << ended.err;
    EXPECT_EQ("new page end", dir.read("open"));

    // A file that is longer afterwards is simply written on.
    stream = checked_open_rewritable(path.c_str());
    ASSERT_NE(nullptr, stream);
    fputs(OLD_TEXT.c_str(), stream);
    checked_close_rewritten(stream, "closed");
    EXPECT_EQ(OLD_TEXT, dir.read("closed"));
}

TEST(RewrittenFiles, DevicesCloseWithoutFailureAndMissingPlacesFail)
{
    Captured device = CaptureInChild([] {
        FILE *sink = checked_open_rewritable("/dev/null");
        if (sink == nullptr)
            vemtra_Process_Exit(2);
        fputs("gone", sink);
        checked_close_rewritten(sink, "/dev/null");
    });
    EXPECT_EQ(0, device.status) << device.err;
    EXPECT_EQ("", device.err);

    ScratchDir dir;
    errno = 0;
    EXPECT_EQ(nullptr, checked_open_rewritable(dir.path("no/such/dir/page").c_str()));
    EXPECT_EQ(ENOENT, errno);
}

}  // namespace
