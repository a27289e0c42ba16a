// The test profile writer: the byte layout of the dynamic-profile header
// forms, which the reader's tests take on trust.
#include <string>

#include <gtest/gtest.h>

#include "tests/support/profile_writer.h"

using namespace testsupport;

namespace {

uint64_t Le(const std::string &bytes, size_t at, int width)
{
    uint64_t value = 0;
    for (int i = width - 1; i >= 0; i--)
        value = (value << 8) | static_cast<unsigned char>(bytes.at(at + i));
    return value;
}

}  // namespace

TEST(ProfileWriter, DpiHeaderForms)
{
    Project p;
    p.runs = 3;
    p.Add("/s/a.c", "f", 1).Blocks({{5, 1, 1}});

    std::string with_props = DpiBytes(p);
    EXPECT_EQ(Le(with_props, 0, 8), 0xDC12u);
    EXPECT_EQ(Le(with_props, 16, 4), 0xDC0Cu);
    EXPECT_EQ(Le(with_props, 20, 4), 3u);
    EXPECT_EQ(Le(with_props, 24, 4), 1u);
    uint64_t data = 16 + Le(with_props, 8, 8);
    EXPECT_EQ(DpiLayout(p).data_start, data);
    EXPECT_EQ(Le(with_props, data, 8), 0xDEEFu);

    p.properties = 2;
    p.extra_word = 0x1122334455667788u;
    std::string extra = DpiBytes(p);
    EXPECT_EQ(Le(extra, 544, 8), 2u);
    EXPECT_EQ(Le(extra, 552, 8), 0x1122334455667788u);

    p.header_form = DpiHeaderForm::Old;
    std::string old = DpiBytes(p);
    EXPECT_EQ(Le(old, 0, 4), 0xDC0Bu);
    EXPECT_EQ(Le(old, 4, 4), 3u);
    EXPECT_EQ(DpiLayout(p).segment_offsets.at(0), 528u);
    // The old form's record length is word A, right after the 8-byte flags.
    EXPECT_EQ(Le(old, 528 + 8, 4), old.size() - 528);
}
