// Tool messages and checked I/O: exact bytes and exit statuses. (The
// reader's tests show the warnings without a tool name, a short read named
// by its file, and the end-to-end cases a failed ASSERTX.)
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "shared/vemtra/tallyfold/checked_io.h"
#include "shared/vemtra/tallyfold/tool_message.h"
#include "tests/support/capture.h"
#include "tests/support/scratch_dir.h"

using testsupport::CaptureInChild;
using testsupport::Captured;

TEST(ToolMessage, ToolNameAndStatus)
{
    Captured run = CaptureInChild([] {
        VEMTRA_Tool_Message("plain %d", 1);
        VEMTRA_Tool_Set_Name("vemcov");
        VEMTRA_Tool_Warning("w");
        VEMTRA_Tool_Error(3, "Can't read .dpi file, %s", "a.dpi");
    });
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "plain 1\nvemcov: WARNING: w\nvemcov: ERROR: Can't read .dpi file, a.dpi\n");
}

TEST(CheckedIo, FailureWithoutFileName)
{
    Captured run = CaptureInChild([] { checked_fseek(tmpfile(), -5, SEEK_SET, nullptr); });
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "Invalid argument\nFATAL ERROR: fseek on file failed\n");
}

TEST(CheckedIo, OpenModesAndMissingFile)
{
    testsupport::ScratchDir dir;
    const std::string path = dir.path("profile");
    Captured missing = CaptureInChild([&] { printf("%s", checked_fopen(path.c_str(), "rb") ? "stream" : "null"); });
    EXPECT_EQ(missing.out, "null");
    EXPECT_EQ(missing.err, "");

    FILE *writer = checked_fopen(path.c_str(), "wb");  // creates the file
    ASSERT_NE(writer, nullptr);
    EXPECT_EQ(checked_fwrite("0123456789abcdefXYZ", 1, 19, writer, path.c_str()), 19u);
    EXPECT_EQ(checked_ftell(writer, path.c_str()), 19);
    checked_fclose(writer);

    FILE *reader = checked_fopen(path.c_str(), "rb");
    ASSERT_NE(reader, nullptr);
    char buffer[4] = {0};
    checked_fseek(reader, 16, SEEK_SET, path.c_str());
    checked_fread(buffer, 1, 3, reader, path.c_str());
    EXPECT_STREQ(buffer, "XYZ");
    EXPECT_EQ(fwrite("q", 1, 1, reader), 0u) << "a read-only stream refuses writes";

    // A reader holds the shared lock: a writer in another process waits
    // until it is released.
    Captured blocked = CaptureInChild([&] { checked_fopen(path.c_str(), "r+"); }, 1);
    EXPECT_TRUE(blocked.timed_out);
    checked_fclose(reader);
    Captured updater = CaptureInChild(
        [&] {
            FILE *stream = checked_fopen(path.c_str(), "r+");
            printf("%zu", stream != nullptr ? fwrite("Q", 1, 1, stream) : 0);
        },
        5);
    EXPECT_EQ(updater.out, "1");
}
