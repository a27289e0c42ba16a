// The dynamic profile reader: files written by the test profile writer are
// read back field by field, in every header form and record layout; damaged
// files end with the documented messages and statuses.
#include <cstring>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "shared/vemtra/client/dpi_file.h"
#include "shared/vemtra/client/dpi_segment.h"
#include "shared/vemtra/client/src_root.h"
#include "shared/vemtra/tallyfold/tool_message.h"
#include "tests/support/capture.h"
#include "tests/support/profile_writer.h"

using namespace testsupport;

namespace {

// A profile file in /tmp that is removed with the object.
class TempDpi {
public:
    explicit TempDpi(const std::string &bytes)
    {
        static int serial = 0;
        path_ = "/tmp/vemcov-dpi-" + std::to_string(getpid()) + "-" + std::to_string(serial++) + ".dpi";
        WriteBytes(path_, bytes);
    }
    ~TempDpi() { unlink(path_.c_str()); }
    const char *path() const { return path_.c_str(); }

private:
    std::string path_;
};

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

TEST(DpiReader, ReadsBackEveryFieldOfVersion3Records)
{
    for (LineInfo lines : {LineInfo::Unpacked, LineInfo::Packed, LineInfo::None}) {
        Project p = RichProject();
        p.line_info = lines;
        TempDpi file(DpiBytes(p));
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(file.path());
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

        DPI_SEGMENT *handle = VEMTRA_Get_Segment(dpi, file.path(), "/nowhere/src/b.c", "zeta");
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

TEST(DpiReader, Version2RecordsWidenCountersAndComposeOffsets)
{
    Project p;
    p.layout = RecordLayout::Version2;
    p.Add("/nowhere/v2.c", "f", 7).Blocks({{0xFFFFFFFFu, 7, 2}, {9, 8, 4}}).Address(0x1234);
    for (DpiHeaderForm form : {DpiHeaderForm::NewWithProperties, DpiHeaderForm::Old}) {
        p.header_form = form;
        TempDpi file(DpiBytes(p));
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(file.path());
        ASSERT_NE(dpi, nullptr);
        // The file-name offset takes the function-name offset as its high
        // half, which points past the end: the file name reads as empty.
        EXPECT_EQ(Pairs(dpi), (std::vector<std::string>{"/|f"}));
        DPI_SEGMENT *handle = VEMTRA_Get_Segment(dpi, nullptr, "", "f");
        ASSERT_NE(handle, nullptr);
        DPI_S *s = handle->segment;
        EXPECT_STREQ(s->function_name, "f");
        EXPECT_EQ(s->function_address, 0x1234u);
        ASSERT_EQ(s->block_cnt, 2u);
        EXPECT_EQ(s->blocks[0].count, 0xFFFFFFFFu);
        EXPECT_EQ(s->blocks[1].start_line, 8u);
        EXPECT_EQ(s->blocks[1].start_col, 4u);
        EXPECT_STREQ(s->entries[0].name, "f");
        VEMTRA_Free_Segment(handle);
        VEMTRA_Close_Dpi_File(dpi);
    }
}

TEST(DpiReader, HeaderForms)
{
    Project p;
    p.runs = 2;
    p.header_version = 0xDC0D;
    p.Add("/nowhere/h.c", "g", 1).Blocks({{6, 1, 1}});
    // With properties (bit 1 adds the extra word), without them behind a
    // longer header, and the old form with its names after the records.
    for (DpiHeaderForm form : {DpiHeaderForm::NewWithProperties, DpiHeaderForm::NewPlain, DpiHeaderForm::Old}) {
        p.header_form = form;
        p.properties = form == DpiHeaderForm::NewWithProperties ? 3 : 0;
        p.header_padding = form == DpiHeaderForm::NewPlain ? 100 : 0;
        p.strings = form == DpiHeaderForm::Old ? StringPlacement::AtEnd : StringPlacement::Default;
        TempDpi file(DpiBytes(p));
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(file.path());
        ASSERT_NE(dpi, nullptr);
        EXPECT_EQ(dpi->runs, 2u);
        EXPECT_EQ(dpi->has_flow_graph, static_cast<int32_t>(p.properties & 1));
        DPI_SEGMENT *handle = VEMTRA_Get_Segment(dpi, nullptr, "/nowhere/h.c", "g");
        ASSERT_NE(handle, nullptr);
        EXPECT_EQ(handle->segment->blocks[0].count, 6u);
        VEMTRA_Free_Segment(handle);
        VEMTRA_Close_Dpi_File(dpi);
    }
}

TEST(DpiReader, ExtensionBlocksAreRecordedSkippedOrRefused)
{
    Project p;
    FunctionSpec &f = p.Add("/nowhere/x.c", "f", 1).Blocks({{1, 1, 1}});
    f.extensions = {{0xFEEF, "graph"}, {0xD1F0, "abc"}, {0xDC6A, "de"}, {0xD123, "skipped"}};
    p.Add("/nowhere/x.c", "g", 2).Blocks({{2, 2, 1}});
    p.properties = 7;
    TempDpi file(DpiBytes(p));
    Captured run = CaptureInChild([&] {
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(file.path());
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
    std::string name = file.path();
    EXPECT_EQ(run.err, "WARNING: " + name +
                           " contains unrecognized properties value, 0x7, in header. Data may be ignored\n"
                           "WARNING: Unrecognized extension segment id, 0xd123. Attempting to skip.\n");

    p.functions[0].extensions = {{0x1234, "x"}};
    p.properties = 0;
    TempDpi refused(DpiBytes(p));
    run = CaptureInChild([&] {
        VEMTRA_Tool_Set_Name("vemcov");
        if (VEMTRA_Open_Dpi_File(refused.path()) != nullptr)
            _exit(3);
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, std::string("vemcov: WARNING: cannot process .dpi file, '") + refused.path() + "'\n");
}

TEST(DpiReader, SourceRootExtensionReRootsTheFileName)
{
    Project p;
    FunctionSpec &f = p.Add("/build/tree/src/a.c", "f", 1).Blocks({{1, 1, 1}});
    f.src_root_length = 12;  // "/build/tree/"
    TempDpi file(DpiBytes(p));
    Captured run = CaptureInChild([&] {
        VEMTRA_Src_Root_Dir_Set("/nowhere/else", 0);
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(file.path());
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
        dpi = VEMTRA_Open_Dpi_File(file.path());
        if (dpi == nullptr || strcmp(dpi->directory[0].file_name, "/build/tree/src/a.c") != 0)
            _exit(5);
    });
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "WARNING: new name for /build/tree/src/a.c is too long; src_root not used\n");
}

TEST(DpiReader, DuplicateKeysWarnOncePerGroupAndStay)
{
    Project p;
    for (int i = 0; i < 3; i++)
        p.Add("/nowhere/d.c", "twice", 1).Blocks({{uint64_t(i), 1, 1}});
    p.Add("/nowhere/d.c", "once", 1);
    TempDpi file(DpiBytes(p));
    Captured run = CaptureInChild([&] {
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(file.path());
        if (dpi == nullptr || Pairs(dpi).size() != 4)
            _exit(3);
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, std::string("WARNING: Multiple profile entries in ") + file.path() +
                           " match lookup key, /nowhere/d.c'twice'\n");
}

TEST(DpiReader, AddressTablesInsertionAndAmbiguity)
{
    Project p;
    p.Add("/nowhere/t.c", "one", 1).Address(5);
    p.Add("/nowhere/t.c", "one", 1).Address(5);         // same address and name: kept once
    p.Add("/nowhere/t.c", "two", 2).Address(7);
    p.Add("/nowhere/t.c", "three", 3).Address(7);       // right after "two": ambiguous
    p.Add("/nowhere/t.c", "four", 4).Address(9);
    p.Add("/nowhere/t.c", "between", 5).Address(9 + 991);
    p.Add("/nowhere/t.c", "five", 6).Address(9);        // same as "four", not adjacent
    TempDpi file(DpiBytes(p));
    Captured run = CaptureInChild([&] {
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(file.path());
        if (dpi == nullptr)
            _exit(3);
        DPI_FUNC_INFO *one = VEMTRA_Lookup_Func(5);
        if (one == nullptr || strcmp(one->function_name, "one") != 0)
            _exit(4);
        if (VEMTRA_Lookup_Func(7) != nullptr)
            _exit(5);
        DPI_FUNC_INFO *four = VEMTRA_Lookup_Func(9);
        if (four == nullptr || strcmp(four->function_name, "four") != 0)
            _exit(6);
    });
    EXPECT_EQ(run.status, 0);
}

TEST(DpiReader, DamagedHeadersEndTheRun)
{
    Project p;
    p.Add("/nowhere/a.c", "f", 1).Blocks({{1, 1, 1}});
    std::string good = DpiBytes(p);

    Captured run = CaptureInChild([] {
        if (VEMTRA_Open_Dpi_File("/nowhere/missing.dpi") != nullptr)
            _exit(3);
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");  // the caller reports a missing file

    TempDpi tiny(good.substr(0, 3));
    run = CaptureInChild([&] { VEMTRA_Open_Dpi_File(tiny.path()); });
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, tiny.path() + std::string(": Success\nFATAL ERROR: fread on file ") + tiny.path() +
                           " failed\n");

    p.magic = 0xABCD;
    TempDpi wrong(DpiBytes(p));
    run = CaptureInChild([&] { VEMTRA_Open_Dpi_File(wrong.path()); });
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, std::string("WARNING: Unrecognized dpi header in ") + wrong.path() +
                           "\n\nERROR: Can't read .dpi file, " + wrong.path() + "\n");

    for (size_t cut : {size_t(7), size_t(20), size_t(300), size_t(550)}) {
        TempDpi short_header(good.substr(0, cut));
        run = CaptureInChild([&] {
            VEMTRA_Tool_Set_Name("vemcov");
            VEMTRA_Open_Dpi_File(short_header.path());
        });
        EXPECT_EQ(run.status, 1) << cut;
        EXPECT_EQ(run.err, std::string("vemcov: ERROR: Can't read .dpi file, ") + short_header.path() + "\n") << cut;
    }
}

TEST(DpiReader, DamagedSegmentsEndTheRunOrFailTheOpen)
{
    Project p;
    p.Add("/nowhere/a.c", "f", 1).Blocks({{1, 1, 1}});
    p.Add("/nowhere/a.c", "g", 2).Blocks({{1, 2, 1}});
    p.announced_segments = 3;
    TempDpi fewer(DpiBytes(p));
    Captured run = CaptureInChild([&] {
        if (VEMTRA_Open_Dpi_File(fewer.path()) != nullptr)
            _exit(3);
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, std::string("WARNING: unexpected end of file '") + fewer.path() +
                           "',Expected 3 records. Read 2\n");

    p.announced_segments.reset();
    p.functions[1].record_version = 4;
    TempDpi version(DpiBytes(p));
    run = CaptureInChild([&] { VEMTRA_Open_Dpi_File(version.path()); });
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, std::string("ERROR: ") + version.path() +
                           " has old or incompatible file format\n\tDelete file and redo instrumentation "
                           "compilation/execution.\n");

    // A block count the file cannot hold is refused before any allocation.
    p.functions[1].record_version.reset();
    std::string huge = DpiBytes(p);
    PutLe(huge, DpiLayout(p).segment_offsets[0] + 16, 0xFFFFFFFFu, 4);
    TempDpi counted(huge);
    run = CaptureInChild([&] { VEMTRA_Open_Dpi_File(counted.path()); });
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, counted.path() + std::string(": Success\nFATAL ERROR: fread on file ") + counted.path() +
                           " failed\n");
}

TEST(DpiReader, EveryTruncationEndsCleanly)
{
    Project p = RichProject();
    p.functions[0].extensions = {{0xD1F0, "xyz"}};
    std::string good = DpiBytes(p);
    for (size_t cut = 0; cut < good.size(); cut += 7) {
        TempDpi file(good.substr(0, cut));
        Captured run = CaptureInChild([&] {
            DPI_FILE *dpi = VEMTRA_Open_Dpi_File(file.path());
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
