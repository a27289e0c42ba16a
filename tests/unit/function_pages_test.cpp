// Function lists where the end-to-end pages cannot reach: display names,
// both sorts on every key in both directions, and the orders and pages that
// are refused.
#include <cstdio>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "report/function_pages.h"
#include "tests/support/capture.h"
#include "tests/support/memory_stream.h"

using testsupport::Captured;
using testsupport::CaptureInChild;

namespace {

// Owns the records and the array a list is given.
struct Functions {
    std::vector<std::string> names;
    std::vector<func> records;
    std::vector<func *> table;

    void Add(const std::string &name, uint32_t line, uint32_t blocks, uint32_t covered)
    {
        names.push_back(name);
        records.push_back(func{nullptr, nullptr, line, blocks, covered, blocks ? 100.0 * covered / blocks : 0.0, 0, 0});
    }
    func **Table()
    {
        table.clear();
        for (size_t i = 0; i < records.size(); ++i) {
            records[i].name = records[i].procName = &names[i][0];
            table.push_back(&records[i]);
        }
        return table.data();
    }
};

TEST(FunctionPages, WritesDisplayNames)
{
    const char *cases[][2] = {
        {"_Send@12", "_Send"},   // a decorated name loses its argument size
        {"f@1@23x", "fx"},
        {"mail@host", "mail@host"},
        {"trailing@", "trailing@"},
        {"vector<pair<int, int> >::push_back(T&&)", "vector&lt;pair&lt;int, int&gt; &gt;::push_back(T&&)"},
        {"h\"><svg/onload='x'>", "h&quot;&gt;&lt;svg/onload=&#39;x&#39;&gt;"},
    };
    for (const auto &c : cases) {
        testsupport::MemoryStream page;
        writeFunctionName(page.stream(), c[0]);
        EXPECT_EQ(c[1], page.text()) << c[0];
    }
}

// A function a few lines down links to the anchor five lines above it; the
// start line is compared as the profile's unsigned 32-bit number, so one
// beyond 2^31 links five lines up too, printed as a signed number.
TEST(FunctionPages, AnchorsFiveLinesAboveAsUnsignedLines)
{
    Functions f;
    f.Add("near", 4, 1, 1);
    f.Add("far", 40, 1, 1);
    f.Add("huge", 4294967291u, 1, 1);
    testsupport::MemoryStream page;
    FunctionListOptions options{};
    writeFunctionList(page.stream(), true, 1, "a.c", "html", f.Table(), 3, options);
    const std::string text = page.text();
    EXPECT_NE(text.find("A_C_SRC.HTML#l4\" title=\"Line 4\">near<"), std::string::npos) << text;
    EXPECT_NE(text.find("A_C_SRC.HTML#l35\" title=\"Line 40\">far<"), std::string::npos) << text;
    EXPECT_NE(text.find("A_C_SRC.HTML#l-10\" title=\"Line -5\">huge<"), std::string::npos) << text;
}

// The keys of an order, as the lists document them.
std::tuple<double, uint32_t, std::string, uint32_t> Keys(const func *f, int key)
{
    if (key == 1)
        return {0.0, 0, f->name, f->line};
    if (key == 2)
        return {f->percent, f->blocks, f->name, f->line};
    return {0.0, f->blocks, f->name, f->line};
}

TEST(FunctionPages, BothSortsOrderEveryKeyBothWays)
{
    // 31 entries take the exchange sort, 32 and more the quicksort. Few
    // distinct block counts and coverages, so later keys decide often; names
    // shared by several lines, some beginning with a byte above 0x7F (which
    // sorts after ASCII).
    for (int count : {31, 32, 200}) {
        Functions f;
        for (int i = 0; i < count; ++i) {
            int scrambled = (i * 37 + 11) % count;
            std::string name = (scrambled % 5 == 0 ? "\xc3\xa9" : "fn") + std::to_string(scrambled % (count / 2));
            f.Add(name, 100 + scrambled, 1 + scrambled % 4, scrambled % 3 == 0 ? 1 : 0);
        }
        for (SortType order : {1, -1, 2, -2, 3, -3}) {
            for (func &record : f.records)
                record.nameRank = 0;
            func **table = f.Table();
            sortFunctions(table, count, order);
            int key = order < 0 ? -order : order;
            for (int i = 0; i + 1 < count; ++i) {
                auto a = Keys(table[i], key), b = Keys(table[i + 1], key);
                EXPECT_TRUE(order > 0 ? a < b : a > b) << "count " << count << " order " << order << " at " << i;
            }
            // With the names ranked first (as a module's pages do), the same
            // records in the same places.
            std::vector<func *> byStrings(table, table + count);
            table = f.Table();
            rankFunctionNames(table, count);
            sortFunctions(table, count, order);
            EXPECT_EQ(byStrings, std::vector<func *>(table, table + count)) << "count " << count << " order " << order;
        }
    }
}

// The ranks do not depend on the table's order: a table already in name
// order (as the covered list comes) or in reverse (the uncovered one) is
// ranked as a scrambled one is, equal names sharing one rank.
TEST(FunctionPages, NameRanksTheSameInAnyOrder)
{
    Functions f;
    for (const char *name : {"m", "b", "z", "b", "a", "m", "q"})
        f.Add(name, 1, 1, 1);
    auto ranksOf = [&](std::vector<int> order) {
        func **table = f.Table();
        std::vector<func *> arranged;
        for (int i : order)
            arranged.push_back(table[i]);
        for (func &record : f.records)
            record.nameRank = 0;
        rankFunctionNames(arranged.data(), static_cast<int>(arranged.size()));
        std::vector<int> ranks;
        for (const func &record : f.records)
            ranks.push_back(record.nameRank);
        return ranks;
    };
    const std::vector<int> expected = {3, 2, 5, 2, 1, 3, 4};
    EXPECT_EQ(ranksOf({0, 1, 2, 3, 4, 5, 6}), expected);  // scrambled
    EXPECT_EQ(ranksOf({4, 1, 3, 0, 5, 6, 2}), expected);  // ascending
    EXPECT_EQ(ranksOf({2, 6, 5, 0, 3, 1, 4}), expected);  // descending
}

TEST(FunctionPages, RefusesOrdersItCannotSortOrWrite)
{
    Functions f;
    f.Add("a", 1, 1, 1);
    Captured c = CaptureInChild([&] { sortFunctions(f.Table(), 1, 0); });
    EXPECT_EQ(1, c.status);
    EXPECT_EQ("Internal error: invalid sort oder: 0\n", c.err);

    c = CaptureInChild([&] { bOutputFunctionCoverageFor(true, 4, "a.c", "html", f.Table(), 1); });
    EXPECT_EQ(1, c.status);
    EXPECT_EQ("Invalid sorting option 4\n", c.err);

    c = testsupport::CaptureInDir("/", [&] {
        return bOutputFunctionCoverageFor(true, -1, "/no/such/dir/a.c", "html", f.Table(), 1);
    });
    EXPECT_EQ(7, c.status);
    EXPECT_EQ("Cannot open CodeCoverage/_NO_SUCH_DIR_A_C_CVRDFNCS_2.HTML for output!\n", c.err);
}

}  // namespace
