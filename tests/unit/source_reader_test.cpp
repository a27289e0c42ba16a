// The listing's line reader: lines that cross the reading buffer, a line
// longer than it, the stop at a 0xFF byte beyond the first buffer, and a
// last line without a line feed.
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "report/source_reader.h"

namespace {

std::vector<std::string> ReadLines(const std::string &bytes)
{
    FILE *stream = fmemopen(const_cast<char *>(bytes.data()), bytes.size(), "r");
    std::vector<char> buffer;
    SourceLineReader reader(stream, buffer);
    std::vector<std::string> lines;
    const char *text;
    size_t length;
    while (reader.nextLine(&text, &length))
        lines.emplace_back(text, length);
    fclose(stream);
    return lines;
}

TEST(SourceReader, LinesCrossTheBufferAndMayOutgrowIt)
{
    std::string bytes;
    std::vector<std::string> expected;
    // Lines of varying length past three buffers' worth, then one line
    // longer than two buffers, then a short last line without a line feed.
    for (int i = 0; bytes.size() < 3 * SOURCE_READ_CHUNK; ++i) {
        std::string line = std::string(1 + (i * 7919) % 300, static_cast<char>('a' + i % 26)) + "\n";
        expected.push_back(line);
        bytes += line;
    }
    std::string longLine = std::string(2 * SOURCE_READ_CHUNK + 17, 'L') + "\n";
    expected.push_back(longLine);
    bytes += longLine;
    expected.push_back("end");
    bytes += "end";
    EXPECT_EQ(expected, ReadLines(bytes));
}

TEST(SourceReader, StopsAtTheFirstByte0xFF)
{
    std::string bytes = std::string(SOURCE_READ_CHUNK + 5, 'x') + "\nab\xff" "cd\nef\n";
    std::vector<std::string> expected{std::string(SOURCE_READ_CHUNK + 5, 'x') + "\n", "ab"};
    EXPECT_EQ(expected, ReadLines(bytes));
    EXPECT_EQ(std::vector<std::string>{}, ReadLines("\xff\n"));
    EXPECT_EQ(std::vector<std::string>{}, ReadLines(""));
    // Carriage returns and NUL bytes are ordinary characters.
    EXPECT_EQ((std::vector<std::string>{"\n", "\r\n", std::string("\0\n", 2)}),
              ReadLines(std::string("\n\r\n\0\n", 5)));
}

}  // namespace
