// Console services: the progress meter's exact output, number texts, and
// display names of profile functions.
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "driver/console.h"
#include "driver/demangle.h"
#include "driver/number_format.h"
#include "driver/run_state.h"
#include "driver/settings.h"
#include "tests/support/capture.h"

using testsupport::CaptureInChild;
using testsupport::Captured;

namespace {

// Runs the meter over `components` ticks and returns what it printed,
// including the end of its line.
std::string Meter(int components, bool on = true)
{
    Captured run = CaptureInChild([=] {
        bProgressMeter = on ? 1 : 0;
        startProgressMeter(components);
        for (int i = 0; i < components; ++i)
            tickProgressMeter();
        endProgressMeter();
    });
    EXPECT_EQ(run.err, "");
    return run.out;
}

TEST(ProgressMeter, ReportsByItsQuantum)
{
    const std::string tenths = "Progress: 10% .. 20% .. 30% .. 40% .. 50% .. 60% .. 70% .. 80% .. 90% .. 100%\n";
    const std::pair<int, std::string> cases[] = {
        {100, tenths},
        {10, tenths},
        // Quantum 2: the last report is moved onto the last tick.
        {15, "Progress: 13% .. 27% .. 40% .. 53% .. 67% .. 80% .. 93% .. 100%\n"},
        // 0.7 + 0.5 rounds down to a quantum of 1: every tick reports.
        {7, "Progress: 14% .. 29% .. 43% .. 57% .. 71% .. 86% .. 100%\n"},
        // A quantum of 0: every tick reports, and no tick count is at most 0.
        {4, "25% .. 50% .. 75% .. 100%\n"},
        {1, "100%\n"},
        {0, "\n"},
    };
    for (const auto &[components, text] : cases) {
        EXPECT_EQ(Meter(components), text) << components;
        // -nopmeter: nothing at all, not even the end of the line.
        EXPECT_EQ(Meter(components, false), "") << components;
    }
}

TEST(NumberFormat, GroupsOfThree)
{
    char text[NUMBER_TEXT_MAX];
    const std::pair<uint64_t, const char *> unsigned_cases[] = {
        {0, "0"}, {7, "7"}, {999, "999"}, {1000, "1,000"}, {999999, "999,999"}, {1234567, "1,234,567"},
        {std::numeric_limits<uint64_t>::max(), "18,446,744,073,709,551,615"},
    };
    for (const auto &[value, expected] : unsigned_cases)
        EXPECT_STREQ(u64_to_ascii(text, value), expected);

    const std::pair<int64_t, const char *> signed_cases[] = {
        {0, "0"}, {-1, "-1"}, {-1000, "-1,000"}, {123456, "123,456"},
        {std::numeric_limits<int64_t>::max(), "9,223,372,036,854,775,807"},
        {std::numeric_limits<int64_t>::min(), "-9,223,372,036,854,775,808"},
    };
    for (const auto &[value, expected] : signed_cases)
        EXPECT_STREQ(i64_to_ascii(text, value), expected);

    EXPECT_STREQ(u64_to_ascii_no_sep(text, 0), "0");
    EXPECT_STREQ(u64_to_ascii_no_sep(text, 1234567), "1234567");
    EXPECT_STREQ(u64_to_ascii_no_sep(text, std::numeric_limits<uint64_t>::max()), "18446744073709551615");
}

TEST(Demangle, MangledNamesGetArgumentTypes)
{
    int length = -1;
    const char *name = demangleName("_ZN2ns5Table6insertEPKci", 0, &length);
    EXPECT_STREQ(name, "ns::Table::insert(char const*, int)");
    EXPECT_EQ(length, static_cast<int>(strlen(name)) + 1);

    // f(T, T, T, T, T, T) with a 900-character T written once and then
    // referred to by substitutions: a display form longer than the 4096-byte
    // buffer replaces it, and later calls still work. The -demang flag
    // changes nothing.
    const std::string type(900, 'q');
    std::string display = "f(" + type;
    for (int i = 0; i < 5; ++i)
        display += ", " + type;
    display += ")";
    const std::string mangled = "_Z1f900" + type + "S_S_S_S_S_";
    name = demangleName(mangled.c_str(), 1, &length);
    ASSERT_EQ(length, static_cast<int>(display.size()) + 1);
    EXPECT_TRUE(name == display) << "demangled text differs";
    EXPECT_STREQ(demangleName("_Z3sumii", 1, &length), "sum(int, int)");
    EXPECT_EQ(length, 14);
}

TEST(Demangle, OtherNamesComeBackUnchanged)
{
    const char *names[] = {"main", "c_function", "Zfoo", "_Z", "_Zgarbage!", "_ZN3fooE_trailing", "", nullptr};
    for (const char *original : names) {
        int length = -1;
        EXPECT_EQ(demangleName(original, 0, &length), original) << (original ? original : "null");
        EXPECT_EQ(length, 0);
    }
}

TEST(Demangle, NormalizeNameOnlyOnWindowsHosts)
{
    char name[] = "/src/Io/read.c";
    NormalizeName(name);
    EXPECT_STREQ(name, "/src/Io/read.c");
    isWindows = 1;
    NormalizeName(name);
    isWindows = 0;
    EXPECT_STREQ(name, "/SRC/IO/READ.C");
}

}  // namespace
