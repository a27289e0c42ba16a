// The page writer's number texts against the printf formats whose bytes
// they must reproduce, over every percentage a page can show and the edges
// of the integer forms; and pieces reaching the stream in order.
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <random>
#include <sys/mman.h>
#include <unistd.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/percent_format.h"
#include "report/page_writer.h"
#include "tests/support/listing_text.h"
#include "tests/support/memory_stream.h"

namespace {

std::string Written(void (*write)(PageWriter &, double), double value)
{
    testsupport::MemoryStream out;
    {
        PageWriter page(out.stream());
        write(page, value);
    }
    return out.text();
}

std::string Printed(const char *format, double value)
{
    char text[64];
    snprintf(text, sizeof text, format, value);
    return text;
}

}  // namespace

TEST(PageWriter, PercentsAsPrintfWritesThem)
{
    auto percent = [](PageWriter &page, double value) { page.putPercent6(value); };
    for (int hundredths = 0; hundredths <= 10000; ++hundredths) {
        double value = roundHalfUp2(hundredths / 100.0);
        ASSERT_EQ(Printed("%6.2f", value), Written(percent, value)) << hundredths;
    }
    std::mt19937_64 random(3);
    for (int i = 0; i < 100000; ++i) {
        double value = roundHalfUp2(100.0 * static_cast<double>(random() % 1000003) / 1000003.0);
        ASSERT_EQ(Printed("%6.2f", value), Written(percent, value)) << value;
    }
}

TEST(PageWriter, IntegersAndPiecesInOrder)
{
    testsupport::MemoryStream out;
    {
        PageWriter page(out.stream());
        for (int64_t value : {int64_t(0), int64_t(7), int64_t(-5), int64_t(2147483647), int64_t(-2147483648)}) {
            page.putInt(value);
            page.put(' ');
        }
        page.putUnsigned(UINT64_MAX);
        page.put(std::string(300000, 'x'));  // past one flush
        page.put("end");
    }
    std::string expected = "0 7 -5 2147483647 -2147483648 18446744073709551615" + std::string(300000, 'x') + "end";
    EXPECT_EQ(expected, out.text());
}

// The escaper checks sixteen bytes at a time: escapes at every offset of a
// chunk, runs of them, lengths around the chunk size, pieces longer than
// the buffer's room and bytes above 0x7F all give what a byte-by-byte
// replacement gives.
TEST(PageWriter, EscapedTextEqualsByteByByteReplacement)
{
    const EscapeSet escapes{{'"', "&quot;"}, {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'\n', "</a>\n"}};
    const char alphabet[] = "ab<>&\"\n \t\xff\x80z";
    std::mt19937 random(11);
    std::vector<std::string> inputs;
    for (size_t length : {0, 1, 15, 16, 17, 31, 32, 33, 100})
        for (int round = 0; round < 200; ++round) {
            std::string text;
            for (size_t i = 0; i < length; ++i)
                text += alphabet[random() % (sizeof alphabet - 1)];
            inputs.push_back(text);
        }
    inputs.push_back(std::string(40000, '<'));  // eight times the room's worth of output
    inputs.push_back(std::string(70000, 'x') + "&");
    for (const std::string &text : inputs) {
        testsupport::MemoryStream out;
        {
            PageWriter page(out.stream());
            page.put("head ");
            page.putEscaped(text.data(), text.size(), escapes);
            page.put(" tail");
        }
        ASSERT_EQ("head " + testsupport::ListingText(text) + " tail", out.text()) << text.size();
    }
}

// Short ends of a text are loaded sixteen bytes at a time only within a
// memory page: texts that end exactly where a page ends, with an
// inaccessible page behind it, are escaped without touching that page.
TEST(PageWriter, EscapingTextThatEndsAtAnInaccessiblePage)
{
    const long pageSize = sysconf(_SC_PAGESIZE);
    char *pages = static_cast<char *>(
        mmap(nullptr, 2 * pageSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(MAP_FAILED, pages);
    ASSERT_EQ(0, mprotect(pages + pageSize, pageSize, PROT_NONE));
    const EscapeSet escapes{{'<', "&lt;"}};
    for (size_t length = 1; length <= 40; ++length) {
        char *text = pages + pageSize - length;
        memset(text, 'a', length);
        text[0] = '<';
        testsupport::MemoryStream out;
        {
            PageWriter page(out.stream());
            page.putEscaped(text, length, escapes);
        }
        EXPECT_EQ("&lt;" + std::string(length - 1, 'a'), out.text());
    }
    munmap(pages, 2 * pageSize);
}

// A page writer hands its bytes to the file itself: what was written to
// the stream before a flush comes first, what is written after it follows,
// and a write the file refuses leaves the stream in error with the cause,
// for the check when it is closed.
TEST(PageWriter, FileBytesInOrderWithTheStreamAndFailuresKept)
{
    FILE *file = tmpfile();
    ASSERT_NE(nullptr, file);
    fputs("stream-before ", file);
    {
        PageWriter page(file);
        page.putFormatted("%s %6.2f %d|", "formatted", 12.5, -3);
        page.putFormatted("%s", std::string(PageWriter::ROOM_MOST + 10, 'w').c_str());  // longer than the room
        page.flush();
        fputs(" stream-between ", file);
        page.put(std::string(300000, 'x'));  // longer than the buffer
        page.put(" writer-after");
    }
    fputs(" stream-last", file);
    ASSERT_EQ(0, fflush(file));
    rewind(file);
    std::string read;
    for (int c; (c = fgetc(file)) != EOF;)
        read += static_cast<char>(c);
    fclose(file);
    EXPECT_EQ("stream-before formatted  12.50 -3|" + std::string(PageWriter::ROOM_MOST + 10, 'w') +
                  " stream-between " + std::string(300000, 'x') + " writer-after stream-last",
              read);

    if (access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "no /dev/full";
    FILE *full = fopen("/dev/full", "w");
    ASSERT_NE(nullptr, full);
    {
        PageWriter page(full);
        page.put("refused");
    }
    errno = 0;
    EXPECT_NE(0, fflush(full));  // as the check at the close does
    EXPECT_EQ(ENOSPC, errno);
    EXPECT_TRUE(ferror(full));
    fclose(full);
}
