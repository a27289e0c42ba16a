// Tool messages, checked I/O and ASSERTX: exact bytes and exit statuses.
#include <cstdio>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "shared/vemtra/tallyfold/assertx.h"
#include "shared/vemtra/tallyfold/checked_io.h"
#include "shared/vemtra/tallyfold/tool_message.h"
#include "tests/support/capture.h"
#include "tests/support/scratch_dir.h"

using testsupport::CaptureInChild;
using testsupport::Captured;

TEST(ToolMessage, LinesWithoutToolName)
{
    Captured run = CaptureInChild([] {
        VEMTRA_Tool_Set_Name(nullptr);
        VEMTRA_Tool_Message("plain %d", 1);
        VEMTRA_Tool_Warning("careful %s", "there");
        VEMTRA_Tool_Warning("Unrecognized dpi header in %s\n", "x.dpi");
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "plain 1\nWARNING: careful there\nWARNING: Unrecognized dpi header in x.dpi\n\n");
}

TEST(ToolMessage, ErrorCarriesToolNameAndEndsWithStatus)
{
    Captured run = CaptureInChild([] {
        VEMTRA_Tool_Set_Name("vemcov");
        VEMTRA_Tool_Warning("w");
        VEMTRA_Tool_Error(3, "Can't read .dpi file, %s", "a.dpi");
    });
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err, "vemcov: WARNING: w\nvemcov: ERROR: Can't read .dpi file, a.dpi\n");
}

TEST(CheckedIo, FailuresEndTheRunWithOrWithoutFileName)
{
    Captured named = CaptureInChild([] {
        FILE *stream = tmpfile();
        fputs("abc", stream);
        rewind(stream);
        char buffer[8];
        checked_fread(buffer, 1, 8, stream, "short.dpi");
    });
    EXPECT_EQ(named.status, 1);
    EXPECT_EQ(named.err, "short.dpi: Success\nFATAL ERROR: fread on file short.dpi failed\n");

    Captured read_run = CaptureInChild([] {
        char byte;
        checked_fread(&byte, 1, 1, tmpfile(), nullptr);
    });
    EXPECT_EQ(read_run.status, 1);
    EXPECT_EQ(read_run.err, "Success\nFATAL ERROR: fread on file failed\n");

    Captured seek_run = CaptureInChild([] { checked_fseek(tmpfile(), -5, SEEK_SET, nullptr); });
    EXPECT_EQ(seek_run.status, 1);
    EXPECT_EQ(seek_run.err, "Invalid argument\nFATAL ERROR: fseek on file failed\n");
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

TEST(Assertx, PrintsDirectoryLineAndCondition)
{
    Captured run = CaptureInChild([] { vemtra_Assert_Fail("shared/vemtra/tallyfold", 892, "i < dpi->block_cnt"); });
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "shared/vemtra/tallyfold:892 ASSERTX(i < dpi->block_cnt)\n");
}
