// The page writer's number texts against the printf formats whose bytes
// they must reproduce, over every percentage a page can show and the edges
// of the integer forms; and pieces reaching the stream in order.
#include <cinttypes>
#include <cstdio>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "analysis/percent_format.h"
#include "report/page_writer.h"
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
