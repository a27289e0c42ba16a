// The test profile writer: the byte layout of the dynamic-profile header
// forms, which the reader's tests take on trust.
#include <string>

#include <gtest/gtest.h>

#include "tests/support/profile_writer.h"

using namespace testsupport;

static uint64_t Le(const std::string &bytes, size_t at, int width)
{
    uint64_t value = 0;
    for (int i = width - 1; i >= 0; i--)
        value = (value << 8) | static_cast<unsigned char>(bytes.at(at + i));
    return value;
}

TEST(ProfileWriter, DpiHeaderForms)
{
    Project p;
    p.runs = 3;
    p.Add("/s/a.c", "f", 1).Blocks({{5, 1, 1}});
    p.properties = 2;
    p.extra_word = 0x1122334455667788u;
    std::string bytes = DpiBytes(p);
    EXPECT_EQ(Le(bytes, 0, 8), 0xDC12u);
    EXPECT_EQ(Le(bytes, 16, 4), 0xDC0Cu);
    EXPECT_EQ(Le(bytes, 20, 4), 3u);
    EXPECT_EQ(Le(bytes, 24, 4), 1u);
    EXPECT_EQ(Le(bytes, 544, 8), 2u);
    EXPECT_EQ(Le(bytes, 552, 8), 0x1122334455667788u);
    EXPECT_EQ(Le(bytes, 16 + Le(bytes, 8, 8), 8), 0xDEEFu);

    p.header_form = DpiHeaderForm::Old;
    bytes = DpiBytes(p);
    EXPECT_EQ(Le(bytes, 0, 4), 0xDC0Bu);
    EXPECT_EQ(Le(bytes, 4, 4), 3u);
    EXPECT_EQ(SegmentOffsets(p).at(0), 528u);
    // The old form's record length is word A, right after the 8-byte flags.
    EXPECT_EQ(Le(bytes, 528 + 8, 4), bytes.size() - 528);
}
