// The static profile reader: every line form, path resolution with and
// without re-rooting, unmasking, buffer growth and rejected lines.
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "shared/vemtra/client/spi_reader.h"
#include "shared/vemtra/client/src_root.h"
#include "tests/support/profile_writer.h"

using namespace testsupport;

namespace {

std::string Describe(const SPI_LINE_HEADER_S &r)
{
    return std::to_string(r.version) + " [" + r.file_base_dir + "][" + r.file_name + "][" + r.full_path_name +
           "][" + r.module_base_dir + "][" + r.module_name + "][" + r.full_path_module + "][" + r.routine_name +
           "] " + std::to_string(r.line) + " " + std::to_string(r.block_count) + " " +
           std::to_string(r.excluded_block_count) + " " + r.linkage;
}

// Reads one header from `text` and returns its description and what follows
// it. The stream reader and the in-memory reader (which reads plain lines
// in place) both read it and must agree on both.
std::pair<std::string, std::string> ReadOne(const std::string &text, uint32_t use_src_root = 1)
{
    FILE *stream = tmpfile();
    fwrite(text.data(), 1, text.size(), stream);
    rewind(stream);
    SPI_LINE_HEADER_S record;
    int ok = VEMTRA_SPI_Read_Line_Header(stream, "t.spi", &record, use_src_root);
    std::string described = ok ? Describe(record) : "FAIL";
    std::string rest;
    for (int c; (c = getc(stream)) != EOF;)
        rest.push_back(static_cast<char>(c));

    rewind(stream);
    VEMTRA_SPI_TEXT window;
    VEMTRA_SPI_Text_Open(stream, "t.spi", &window);
    int windowOk = VEMTRA_SPI_Read_Line_Header_Text(&window, &record, use_src_root);
    EXPECT_EQ(windowOk ? Describe(record) : "FAIL", described) << text.substr(0, 200);
    std::string windowRest;
    while (window.position < window.size || VEMTRA_SPI_Text_More(&window))
        windowRest.push_back(window.bytes[window.position++]);
    if (ok) {  // after a failed line the two stop at different places; the run ends there
        EXPECT_EQ(windowRest, rest) << text.substr(0, 200);
    }
    VEMTRA_SPI_Text_Close(&window);
    fclose(stream);
    return {described, rest};
}

class SpiReader : public testing::Test {
protected:
    void SetUp() override { VEMTRA_Src_Root_Dir_Set(nullptr, 0); }
    void TearDown() override { VEMTRA_Src_Root_Dir_Set(nullptr, 0); }
};

}  // namespace

TEST_F(SpiReader, Version3WithoutAndWithBaseDirectories)
{
    auto plain = ReadOne("V3 0 6 0 6 5 a.cpp a.o main 12 7 2 E 0 1 foo(E)\nnext\n");
    EXPECT_EQ(plain.first, "3 [][a.cpp][a.cpp][][a.o][a.o][main] 12 7 2 E");
    EXPECT_EQ(plain.second, " 0 1 foo(E)\nnext\n");  // stops right after the linkage

    std::string line = "V3 4 6 4 6 5 /src a.cpp /obj a.o main 12 7 2 E\n";
    EXPECT_EQ(ReadOne(line, 0).first, "3 [/src][a.cpp][/src/a.cpp][/obj][a.o][/obj/a.o][main] 12 7 2 E");
    VEMTRA_Src_Root_Dir_Set("/home/x", 0);
    EXPECT_EQ(ReadOne(line, 1).first, "3 [/src][a.cpp][/home/x/a.cpp][/obj][a.o][/home/x/a.o][main] 12 7 2 E");
    EXPECT_EQ(ReadOne(line, 0).first, "3 [/src][a.cpp][/src/a.cpp][/obj][a.o][/obj/a.o][main] 12 7 2 E");
    // Each path re-roots on its own base directory; an absolute name is
    // still appended to the root.
    EXPECT_EQ(ReadOne("V4 4 8 0 6 5 /src /abs.cpp a.o main 1 1 0 S\n").first,
              "4 [/src][/abs.cpp][/home/x//abs.cpp][][a.o][a.o][main] 1 1 0 S");
}

TEST_F(SpiReader, SlashIsAddedOnlyWhenNeitherSideHasOne)
{
    EXPECT_EQ(ReadOne("V3 5 6 0 4 2 /src/ a.cpp a.o f 1 1 0 E\n").first,
              "3 [/src/][a.cpp][/src/a.cpp][][a.o][a.o][f] 1 1 0 E");
    EXPECT_EQ(ReadOne("V3 4 7 0 4 2 /src /a.cpp a.o f 1 1 0 E\n").first,
              "3 [/src][/a.cpp][/src/a.cpp][][a.o][a.o][f] 1 1 0 E");
}

TEST_F(SpiReader, MaskedSpacesComeBackExceptInTheRoutineName)
{
    Project p;
    p.Add("my file.c", "a|b", 1).spi_base_dir = "/my src";
    EXPECT_EQ(ReadOne(SpiText(p), 0).first,
              "3 [/my src][my file.c][/my src/my file.c][][my file.c.o][my file.c.o][a|b] 1 0 0 E");
}

TEST_F(SpiReader, OlderAndUnversionedForms)
{
    EXPECT_EQ(ReadOne("V1 6 4 5 a.cpp a.o main 12 7 E\n").first, "1 [][a.cpp][a.cpp][][a.o][a.o][main] 12 7 0 E");
    EXPECT_EQ(ReadOne("V2 6 4 5 my|a.cpp a.o main 12 7 3 S\n").first,
              "2 [][my a.cpp][my a.cpp][][a.o][a.o][main] 12 7 3 S");
    EXPECT_EQ(ReadOne("a.cpp a.o main 12 7 E\n").first, "1 [][a.cpp][a.cpp][][a.o][a.o][main] 12 7 0 E");
    // "V" with another number is an unversioned line whose file name is
    // the V token; the number read is kept.
    EXPECT_EQ(ReadOne("V7 a.o main 12 7 E\n").first, "7 [][V7][V7][][a.o][a.o][main] 12 7 0 E");
}

TEST_F(SpiReader, LinesThatDoNotMatchTheirForm)
{
    EXPECT_EQ(ReadOne("V3 0 6 0 6\n").first, "FAIL");                    // four lengths
    EXPECT_EQ(ReadOne("V2 6 4\n").first, "FAIL");                        // two sizes
    EXPECT_EQ(ReadOne("V3 0 6 0 6 5 a.cpp a.o main 12 7").first, "FAIL"); // truncated last line
    EXPECT_EQ(ReadOne("V2 6 4 5 a.cpp a.o main 12 7 E\n").first, "FAIL"); // V2 without excluded count: 'E' is no number
    EXPECT_EQ(ReadOne("a.cpp a.o main x 7 E\n").first, "FAIL");
    EXPECT_EQ(ReadOne("").first, "FAIL");
}

TEST_F(SpiReader, LongTokensGrowBuffersWhenAnnouncedAndAreRejectedOtherwise)
{
    Project p;
    std::string file = std::string(5000, 'n') + ".c";
    p.Add(file, "f", 1);
    EXPECT_EQ(ReadOne(SpiText(p)).first, "3 [][" + file + "][" + file + "][][" + file + ".o][" + file + ".o][f] 1 0 0 E");

    // The same token announced as short cannot overrun its buffer.
    std::string lying = "V3 0 6 0 4 2 " + std::string(9000, 'x') + " m.o f 1 0 0 E\n";
    EXPECT_TRUE(ReadOne(lying).first == "FAIL");
    // (Buffers only grow, so the token is longer than any earlier test's.)
    std::string unversioned = std::string(20000, 'y') + " m.o f 1 0 E\n";
    EXPECT_TRUE(ReadOne(unversioned).first == "FAIL");
    // Exactly the capacity less the terminator still fits.
    std::string fits = std::string(4095, 'z') + " m.o f 1 0 E\n";
    EXPECT_NE(ReadOne(fits).first, "FAIL");

    // The base directories' lengths leave the terminator out: directories
    // as long as the first buffers are read whole.
    std::string base(4096, 'b');
    EXPECT_EQ(ReadOne("V3 4096 4 4096 4 2 " + base + " a.c " + base + " a.o f 1 0 0 E\n").first,
              "3 [" + base + "][a.c][" + base + "/a.c][" + base + "][a.o][" + base + "/a.o][f] 1 0 0 E");

    // An announced length far beyond the file grows nothing absurd.
    EXPECT_EQ(ReadOne("V3 0 2000000000 0 4 2 a.c m.o f 1 0 0 E\n").first,
              "3 [][a.c][a.c][][m.o][m.o][f] 1 0 0 E");
}

// Lines at the edges of the plain form the in-memory reader reads in place:
// each is read by both readers (ReadOne compares them), so a difference in
// any field or in where the next line starts fails here.
TEST_F(SpiReader, PlainLinesAndTheirNearMissesReadAlikeByBothReaders)
{
    const std::string nul("a\0b.c", 5);
    const std::string lines[] = {
        "V3 0 6 0 4 2 a.c m.o f 12 3 1 E rest of line\nnext\n",
        "V4 3 6 0 4 2 dir a.c m.o f 12 3 1 S\n",
        "V 3 0 6 0 4 2 a.c m.o f 12 3 1 E\n",             // blank after V
        "V3\t0 6 0 4 2\ta.c\vm.o\ff\r12 3 1 E\n",          // every blank byte
        "V3 0 6 0 4 2 a.c m.o f 123456789 3 1 E\n",       // nine digits
        "V3 0 6 0 4 2 a.c m.o f 1234567890 3 1 E\n",      // ten digits
        "V3 0 6 0 4 2 a.c m.o f 99999999999999999999 3 1 E\n",
        "V3 0 6 0 4 2 a.c m.o f -12 3 1 E\n",             // signs
        "V3 0 +6 0 4 2 a.c m.o f 12 -3 1 E\n",
        "V3 0 6 0 4 2 a.c m.o f 12 3 1\nE\n",             // linkage on the next line
        "V3 0 6 0 4\n2 a.c m.o f 12 3 1 E\n",             // lengths across lines
        "V3 0 6 0 4 2 a.c\nm.o f 12 3 1 E\n",             // tokens across lines
        "V3 0 6 0 4 2 " + nul + " m.o f 12 3 1 E\n",     // a NUL inside a token
        "V3 0 6 0 4 2 a.c m.o f 12 3 1 " + std::string(1, '\0') + "\n",
        "V3 0 6 0 4 2 " + std::string(4095, 'q') + " m.o f 1 2 3 E\n",  // the buffer exactly
        "V3 0 6 0 4 2 " + std::string(4096, 'q') + " m.o f 1 2 3 E\n",  // one byte more
        "V5 0 6 0 4 2 a.c m.o f 12 3 1 E\n",              // no such version
        "V3 0 6 0 4 2 a.c m.o f 12x 3 1 E\n",
        "V3 0 6 0 4 2 a.c m.o f 12 3 1 E",                // no line feed at the end
    };
    for (const std::string &line : lines)
        ReadOne(line);
}
