// The dynamic profile reader: files written by the test profile writer are
// read back field by field, in every header form and record layout; damaged
// files end with the documented messages and statuses.
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "shared/vemtra/client/dpi_file.h"
#include "shared/vemtra/client/dpi_segment.h"
#include "shared/vemtra/client/src_root.h"
#include "shared/vemtra/tallyfold/tool_message.h"
#include "tests/support/capture.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scratch_dir.h"

using namespace testsupport;

namespace {

class DpiReader : public testing::Test {
protected:
    // Writes a profile into the test's directory and returns its path.
    std::string File(const std::string &bytes) { return dir_.write("p" + std::to_string(files_++) + ".dpi", bytes); }

    ScratchDir dir_;
    int files_ = 0;
};

// Opens `path` in a child without a tool name; the child exits with 3 when
// the open succeeds.
Captured OpenInChild(const std::string &path)
{
    return CaptureInChild([&] {
        VEMTRA_Tool_Set_Name(nullptr);
        if (VEMTRA_Open_Dpi_File(path.c_str()) != nullptr)
            _exit(3);
    });
}

void PutLe(std::string &bytes, size_t at, uint64_t value, int width)
{
    for (int i = 0; i < width; i++)
        bytes[at + i] = static_cast<char>((value >> (8 * i)) & 0xFF);
}

std::vector<std::string> Pairs(DPI_FILE *dpi)
{
    std::vector<std::string> pairs;
    char *file = nullptr, *function = nullptr;
    VEMTRA_Get_First_File_Function_Pair(dpi, &file, &function);
    while (file != nullptr) {
        pairs.push_back(std::string(file) + "|" + function);
        VEMTRA_Get_Next_File_Function_Pair(dpi, &file, &function);
    }
    EXPECT_EQ(function, nullptr);
    return pairs;
}

// A project with every kind of data: two files, entries, value sites,
// other counters, addresses and a vtable.
Project RichProject()
{
    Project p;
    p.runs = 4;
    FunctionSpec &z = p.Add("/nowhere/src/b.c", "zeta", 40);
    z.Blocks({{8, 40, 1, 41, 2}, {0, 42, 5, 42, 9}, {3, 44, 7, 45, 1}});
    z.Entries({{"zeta", 0}, {"zeta_alt", 2}});
    z.address = 0x401000;
    z.vtable_address = 0x602000;
    z.vtable_name = "_ZTV4Zeta";
    z.word_a = 0x11;
    z.word_b = 0x22;
    z.attributes = 0x6;
    z.other = {5, 6};
    z.value_sites = {{2, {{0x401000, 12, 1}, {0x402000, 3, 0}}}};
    p.Add("/nowhere/src/a.c", "main", 3).Blocks({{40, 3, 1}, {0, 5, 3}}).Address(0x402000);
    p.Add("/nowhere/src/a.c", "empty", 9);  // no blocks at all
    return p;
}

}  // namespace

TEST_F(DpiReader, ReadsBackEveryFieldOfVersion3Records)
{
    for (LineInfo lines : {LineInfo::Unpacked, LineInfo::Packed, LineInfo::None}) {
        Project p = RichProject();
        p.line_info = lines;
        std::string path = File(DpiBytes(p));
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(path.c_str());
        ASSERT_NE(dpi, nullptr);
        EXPECT_EQ(dpi->runs, 4u);
        EXPECT_EQ(dpi->magic, 0xDC12u);
        EXPECT_STREQ(dpi->name_field, "vemcov test profile");
        // Sorted by "<file>'<function>'".
        EXPECT_EQ(Pairs(dpi), (std::vector<std::string>{"/nowhere/src/a.c|empty", "/nowhere/src/a.c|main",
                                                        "/nowhere/src/b.c|zeta"}));
        const DPI_DIRECTORY_ENTRY &entry = dpi->directory[2];
        EXPECT_STREQ(entry.lookup_key, "/nowhere/src/b.c'zeta'");
        EXPECT_EQ(entry.flags, 2u);
        EXPECT_EQ(entry.word_b, 0x22u);
        EXPECT_FLOAT_EQ(entry.frequency, 2.0f);     // max(8, 3) / 4 runs
        EXPECT_FLOAT_EQ(dpi->max_frequency, 10.0f); // main: 40 / 4

        DPI_SEGMENT *handle = VEMTRA_Get_Segment(dpi, path.c_str(), "/nowhere/src/b.c", "zeta");
        ASSERT_NE(handle, nullptr);
        EXPECT_EQ(handle->runs, 4u);
        DPI_S *s = handle->segment;
        EXPECT_EQ(VEMTRA_SEG_VERSION(s->flags), 3u);
        EXPECT_EQ(s->word_a, 0x11u);
        EXPECT_EQ(s->word_c, 0x6u);
        EXPECT_STREQ(s->file_name, "/nowhere/src/b.c");
        EXPECT_STREQ(s->vtable_name, "_ZTV4Zeta");
        EXPECT_EQ(s->vtable_address, 0x602000u);
        ASSERT_EQ(s->block_cnt, 3u);
        EXPECT_EQ(s->blocks[2].count, 3u);
        EXPECT_EQ(s->blocks[2].start_line, lines == LineInfo::None ? 0u : 44u);
        EXPECT_EQ(s->blocks[2].start_col, lines == LineInfo::None ? 0u : 7u);
        EXPECT_EQ(s->blocks[0].end_line, lines == LineInfo::Packed ? 41u : 0u);
        EXPECT_EQ(s->blocks[0].end_col, lines == LineInfo::Packed ? 2u : 0u);
        ASSERT_EQ(s->other_cnt, 2u);
        EXPECT_EQ(s->other[1], 6u);
        ASSERT_EQ(s->value_cnt, 1u);
        EXPECT_EQ(s->values[0], 2u);
        EXPECT_EQ(s->value_tables[0][24 + 8], 3); // second target's calls
        ASSERT_EQ(s->entry_cnt, 2u);
        EXPECT_STREQ(s->entries[1].name, "zeta_alt");
        EXPECT_EQ(s->entry_index[1], 2u);
        VEMTRA_Free_Segment(handle);

        // One entry (an odd count) is followed by padding before the lines.
        handle = VEMTRA_Get_Segment(dpi, nullptr, "/nowhere/src/a.c", "main");
        ASSERT_NE(handle, nullptr);
        EXPECT_EQ(handle->segment->blocks[1].start_line, lines == LineInfo::None ? 0u : 5u);
        EXPECT_EQ(handle->segment->blocks[1].start_col, lines == LineInfo::None ? 0u : 3u);
        VEMTRA_Free_Segment(handle);

        handle = VEMTRA_Get_Segment(dpi, nullptr, "/nowhere/src/a.c", "empty");
        ASSERT_NE(handle, nullptr);
        EXPECT_EQ(handle->segment->blocks, nullptr);
        VEMTRA_Free_Segment(handle);
        EXPECT_EQ(VEMTRA_Get_Segment(dpi, nullptr, "/elsewhere/src/a.c", "main"), nullptr);

        ASSERT_NE(VEMTRA_Lookup_Vtbl(0x602000), nullptr);
        EXPECT_STREQ(VEMTRA_Lookup_Vtbl(0x602000)->vtable_name, "_ZTV4Zeta");
        EXPECT_EQ(VEMTRA_Lookup_Func(0x401000)->flags, 2u);
        VEMTRA_Close_Dpi_File(dpi);
        EXPECT_EQ(VEMTRA_Lookup_Func(0x402000), nullptr);
    }
}

TEST_F(DpiReader, HeaderFormsAndVersion2Records)
{
    // Each record layout under the three header forms: with properties (bit
    // 1 adds the extra word), without them behind a longer header, and the
    // old form with its names after the records.
    for (RecordLayout layout : {RecordLayout::Version3, RecordLayout::Version2}) {
        for (DpiHeaderForm form : {DpiHeaderForm::NewWithProperties, DpiHeaderForm::NewPlain, DpiHeaderForm::Old}) {
            Project p;
            p.runs = 2;
            p.layout = layout;
            p.header_form = form;
            p.properties = form == DpiHeaderForm::NewWithProperties ? 3 : 0;
            p.header_padding = form == DpiHeaderForm::NewPlain ? 100 : 0;
            p.strings = form == DpiHeaderForm::Old ? StringPlacement::AtEnd : StringPlacement::Default;
            p.Add("/nowhere/v.c", "f", 7).Blocks({{0xFFFFFFFFu, 7, 2}, {9, 8, 4}}).Address(0x1234);
            DPI_FILE *dpi = VEMTRA_Open_Dpi_File(File(DpiBytes(p)).c_str());
            ASSERT_NE(dpi, nullptr);
            EXPECT_EQ(dpi->runs, 2u);
            EXPECT_EQ(dpi->has_flow_graph, static_cast<int32_t>(p.properties & 1));
            // Version 2 composes the file-name offset with the function-name
            // offset as its high half, which points past the end: the file
            // name reads as empty.
            std::string file = layout == RecordLayout::Version2 ? "" : "/nowhere/v.c";
            EXPECT_EQ(Pairs(dpi), std::vector<std::string>{(file.empty() ? "/" : file) + "|f"});
            DPI_SEGMENT *handle = VEMTRA_Get_Segment(dpi, nullptr, file.c_str(), "f");
            ASSERT_NE(handle, nullptr);
            DPI_S *s = handle->segment;
            EXPECT_STREQ(s->function_name, "f");
            EXPECT_STREQ(s->entries[0].name, "f");
            EXPECT_EQ(s->function_address, 0x1234u);
            ASSERT_EQ(s->block_cnt, 2u);
            EXPECT_EQ(s->blocks[0].count, 0xFFFFFFFFu);
            EXPECT_EQ(s->blocks[1].start_line, 8u);
            EXPECT_EQ(s->blocks[1].start_col, 4u);
            VEMTRA_Free_Segment(handle);
            VEMTRA_Close_Dpi_File(dpi);
        }
    }
}

TEST_F(DpiReader, ExtensionBlocksAreRecordedSkippedOrRefused)
{
    Project p;
    FunctionSpec &f = p.Add("/nowhere/x.c", "f", 1).Blocks({{1, 1, 1}});
    f.extensions = {{0xFEEF, "graph"}, {0xD1F0, "abc"}, {0xDC6A, "de"}, {0xD123, "skipped"}};
    p.Add("/nowhere/x.c", "g", 2).Blocks({{2, 2, 1}});
    p.properties = 7;
    std::string path = File(DpiBytes(p));
    Captured run = CaptureInChild([&] {
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(path.c_str());
        if (dpi == nullptr || dpi->segment_count != 2)
            _exit(3);
        const DPI_DIRECTORY_ENTRY &e = dpi->directory[0];
        if (e.flow_graph_length != 5 || e.ext_d1f0_length != 3 || e.ext_dc6a_length != 2 ||
            e.ext_dc6a_offset != e.ext_d1f0_offset + 3 + 16 || dpi->directory[1].flow_graph_offset != 0)
            _exit(4);
        DPI_SEGMENT *g = VEMTRA_Get_Segment(dpi, nullptr, "/nowhere/x.c", "g");
        if (g == nullptr || g->segment->blocks[0].count != 2)
            _exit(5);
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "WARNING: " + path +
                           " contains unrecognized properties value, 0x7, in header. Data may be ignored\n"
                           "WARNING: Unrecognized extension segment id, 0xd123. Attempting to skip.\n");

    p.functions[0].extensions = {{0x1234, "x"}};
    p.properties = 0;
    std::string refused = File(DpiBytes(p));
    run = OpenInChild(refused);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "WARNING: cannot process .dpi file, '" + refused + "'\n");
}

TEST_F(DpiReader, SourceRootExtensionReRootsTheFileName)
{
    Project p;
    FunctionSpec &f = p.Add("/build/tree/src/a.c", "f", 1).Blocks({{1, 1, 1}});
    f.src_root_length = 12;  // "/build/tree/"
    std::string path = File(DpiBytes(p));
    Captured run = CaptureInChild([&] {
        VEMTRA_Src_Root_Dir_Set("/nowhere/else", 0);
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(path.c_str());
        if (dpi == nullptr || strcmp(dpi->directory[0].file_name, "/nowhere/else/src/a.c") != 0)
            _exit(3);
        DPI_SEGMENT *handle = VEMTRA_Get_Segment(dpi, nullptr, "/nowhere/else/src/a.c", "f");
        if (handle == nullptr || strcmp(handle->segment->file_name, "/nowhere/else/src/a.c") != 0 ||
            handle->segment->src_root != strlen("/nowhere/else/"))
            _exit(4);
        // A root that would make the name too long is not used.
        VEMTRA_Close_Dpi_File(dpi);
        std::string deep = "/" + std::string(4090, 'd');
        VEMTRA_Src_Root_Dir_Set(deep.c_str(), 0);
        dpi = VEMTRA_Open_Dpi_File(path.c_str());
        if (dpi == nullptr || strcmp(dpi->directory[0].file_name, "/build/tree/src/a.c") != 0)
            _exit(5);
    });
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "WARNING: new name for /build/tree/src/a.c is too long; src_root not used\n");
}

// Equal keys also keep their file order: enough of them among other keys
// that an unstable sort would mix them up.
TEST_F(DpiReader, DuplicateKeysWarnOncePerGroupAndStay)
{
    Project p;
    for (int i = 0; i < 40; i++) {
        p.Add("/nowhere/d.c", "twice", 1).Blocks({{uint64_t(i), 1, 1}});
        p.Add("/nowhere/d.c", "f" + std::to_string(i % 7), 1);
    }
    p.Add("/nowhere/d.c", "once", 1);
    std::string path = File(DpiBytes(p));
    Captured run = CaptureInChild([&] {
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(path.c_str());
        if (dpi == nullptr || Pairs(dpi).size() != 81)
            _exit(3);
        for (uint32_t i = 1; i < dpi->segment_count; i++)
            if (strcmp(dpi->directory[i].lookup_key, dpi->directory[i - 1].lookup_key) == 0 &&
                dpi->directory[i].segment_offset < dpi->directory[i - 1].segment_offset)
                _exit(4);
    });
    EXPECT_EQ(run.status, 0);
    std::string warning = "WARNING: Multiple profile entries in " + path + " match lookup key, /nowhere/d.c'";
    EXPECT_EQ(run.err, warning + "f0'\n" + warning + "f1'\n" + warning + "f2'\n" + warning + "f3'\n" + warning +
                           "f4'\n" + warning + "f5'\n" + warning + "f6'\n" + warning + "twice'\n");
}

TEST_F(DpiReader, AddressTablesInsertionAndAmbiguity)
{
    Project p;
    p.Add("/nowhere/t.c", "one", 1).Address(5);
    p.Add("/nowhere/u.c", "one", 1).Address(5);         // same address and name: kept once
    p.Add("/nowhere/t.c", "two", 2).Address(7);
    p.Add("/nowhere/t.c", "three", 3).Address(7);       // right after "two": ambiguous
    p.Add("/nowhere/t.c", "four", 4).Address(9);
    p.Add("/nowhere/t.c", "between", 5).Address(9 + 991);
    p.Add("/nowhere/t.c", "five", 6).Address(9);        // same as "four", not adjacent
    DPI_FILE *dpi = VEMTRA_Open_Dpi_File(File(DpiBytes(p)).c_str());
    ASSERT_NE(dpi, nullptr);
    ASSERT_NE(VEMTRA_Lookup_Func(5), nullptr);
    EXPECT_STREQ(VEMTRA_Lookup_Func(5)->function_name, "one");
    EXPECT_EQ(VEMTRA_Lookup_Func(7), nullptr);
    ASSERT_NE(VEMTRA_Lookup_Func(9), nullptr);
    EXPECT_STREQ(VEMTRA_Lookup_Func(9)->function_name, "four");
    VEMTRA_Close_Dpi_File(dpi);
}

TEST_F(DpiReader, DamagedFilesEndTheRunOrFailTheOpen)
{
    Project p;
    p.Add("/nowhere/a.c", "f", 1).Blocks({{1, 1, 1}});
    p.Add("/nowhere/a.c", "g", 2).Blocks({{1, 2, 1}});
    const std::string good = DpiBytes(p);
    Project wrong_magic = p, fewer = p, version = p;
    wrong_magic.magic = 0xABCD;
    fewer.announced_segments = 3;
    version.functions[1].record_version = 4;
    // A block count the file cannot hold is refused before any allocation.
    std::string huge = good;
    PutLe(huge, SegmentOffsets(p)[0] + 16, 0xFFFFFFFFu, 4);

    const std::string short_read = "%s: Success\nFATAL ERROR: fread on file %s failed\n";
    const std::string cannot_read = "ERROR: Can't read .dpi file, %s\n";
    const struct {
        std::string bytes;
        int status;  // 3: the open succeeded
        std::string message;  // every %s is the file's path
    } cases[] = {
        {good.substr(0, 3), 1, short_read},
        {DpiBytes(wrong_magic), 1, "WARNING: Unrecognized dpi header in %s\n\n" + cannot_read},
        {good.substr(0, 7), 1, cannot_read},
        {good.substr(0, 20), 1, cannot_read},
        {good.substr(0, 300), 1, cannot_read},
        {good.substr(0, 550), 1, cannot_read},
        {DpiBytes(fewer), 0, "WARNING: unexpected end of file '%s',Expected 3 records. Read 2\n"},
        {DpiBytes(version), 1,
         "ERROR: %s has old or incompatible file format\n\tDelete file and redo instrumentation "
         "compilation/execution.\n"},
        {huge, 1, short_read},
    };
    for (const auto &c : cases) {
        std::string path = File(c.bytes), expected = c.message;
        for (size_t at; (at = expected.find("%s")) != std::string::npos;)
            expected.replace(at, 2, path);
        Captured run = OpenInChild(path);
        EXPECT_EQ(run.status, c.status) << expected;
        EXPECT_EQ(run.err, expected);
    }
    // A missing file is the caller's to report.
    Captured missing = OpenInChild("/nowhere/missing.dpi");
    EXPECT_EQ(missing.status, 0);
    EXPECT_EQ(missing.err, "");
}

// Old-form records follow each other by their length word, however short:
// a record of length 0 is met again as the next one, so both entries of
// this file are the first function.
TEST_F(DpiReader, OldFormRecordsShorterThanTheirHeadAreWalkedByTheirLength)
{
    Project p;
    p.header_form = DpiHeaderForm::Old;
    p.strings = StringPlacement::AtEnd;
    p.Add("/nowhere/a.c", "f", 1).Blocks({{1, 1, 1}});
    p.Add("/nowhere/a.c", "g", 2).Blocks({{1, 2, 1}});
    std::string bytes = DpiBytes(p);
    PutLe(bytes, SegmentOffsets(p)[0] + 8, 0, 4);  // the length word after the 8-byte flags
    std::string path = File(bytes);
    Captured run = CaptureInChild([&] {
        VEMTRA_Tool_Set_Name(nullptr);
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(path.c_str());
        if (dpi == nullptr)
            _exit(3);
        if (dpi->segment_count != 2 || strcmp(dpi->directory[0].function_name, "f") != 0 ||
            strcmp(dpi->directory[1].function_name, "f") != 0)
            _exit(4);
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "WARNING: Multiple profile entries in " + path + " match lookup key, /nowhere/a.c'f'\n");
}

TEST_F(DpiReader, EveryTruncationEndsCleanly)
{
    Project p = RichProject();
    p.functions[0].extensions = {{0xD1F0, "xyz"}};
    std::string good = DpiBytes(p);
    for (size_t cut = 0; cut < good.size(); cut += 7) {
        std::string path = File(good.substr(0, cut));
        Captured run = CaptureInChild([&] {
            DPI_FILE *dpi = VEMTRA_Open_Dpi_File(path.c_str());
            if (dpi == nullptr)
                _exit(7);
            char *name = nullptr, *function = nullptr;
            for (VEMTRA_Get_First_File_Function_Pair(dpi, &name, &function); name != nullptr;
                 VEMTRA_Get_Next_File_Function_Pair(dpi, &name, &function))
                VEMTRA_Free_Segment(VEMTRA_Get_Segment(dpi, nullptr, name, function));
            VEMTRA_Close_Dpi_File(dpi);
        });
        EXPECT_EQ(run.signal, 0) << "cut at " << cut;
        EXPECT_TRUE(run.status == 1 || run.status == 7) << "cut at " << cut << ": " << run.err;
    }
}

// The profile is mapped, not copied: when another process cuts it short
// after the open, the fetch that reaches past the new end ends the run as
// a failed read of that file, never with a bus error.
TEST_F(DpiReader, AProfileCutShortAfterTheOpenEndsAsAFailedRead)
{
    Project p;
    for (int i = 0; i < 400; ++i)
        p.Add("/nowhere/a.c", "f" + std::to_string(i), i + 1).Blocks({{1, static_cast<uint32_t>(i + 1), 1}});
    const std::string bytes = DpiBytes(p);
    ASSERT_GT(bytes.size(), 3u * 4096);
    std::string path = File(bytes);
    Captured run = CaptureInChild([&] {
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(path.c_str());
        if (dpi == nullptr)
            _exit(7);
        /* The names lead the file; half of the records are cut off. */
        if (truncate(path.c_str(), static_cast<off_t>(bytes.size() / 2 / 4096 * 4096)) != 0)
            _exit(8);
        char *name = nullptr, *function = nullptr;
        for (VEMTRA_Get_First_File_Function_Pair(dpi, &name, &function); name != nullptr;
             VEMTRA_Get_Next_File_Function_Pair(dpi, &name, &function))
            VEMTRA_Free_Segment(VEMTRA_Get_Segment(dpi, path.c_str(), name, function));
        _exit(9);
    });
    EXPECT_EQ(run.signal, 0);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, path + ": the file was cut short while it was read\nFATAL ERROR: fread on file " + path + " failed\n");
}
