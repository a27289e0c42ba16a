// The dynamic call graph: what the dump does not show (flags, word B, the
// flag-0 result, in-lists, callees never defined), chains of definitions in several modules, and
// the build's failures. The dump's golden files prove the rest.
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "shared/vemtra/client/call_graph.h"
#include "shared/vemtra/client/dpi_file.h"
#include "tests/support/capture.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scratch_dir.h"

using namespace testsupport;

namespace {

class CallGraphTest : public ::testing::Test {
protected:
    void SetUp() override { VEMTRA_Free_Call_Graph(); }
    void TearDown() override { VEMTRA_Free_Call_Graph(); }

    // Writes the profiles as the static one and a.dpi.
    void Write(const std::string &spi, const std::string &dpi)
    {
        spi_ = dir_.write("a.spi", spi);
        dpi_ = dir_.write("a.dpi", dpi);
    }

    // Builds the graph with the dynamic profile opened here; returns the
    // flag-0 result.
    int Build() const
    {
        DPI_FILE *file = VEMTRA_Open_Dpi_File(dpi_.c_str());
        EXPECT_NE(file, nullptr);
        int flag0 = -1;
        VEMTRA_Create_Call_Graph(dpi_.c_str(), spi_.c_str(), &flag0, file);
        VEMTRA_Close_Dpi_File(file);
        return flag0;
    }

    ScratchDir dir_;
    std::string spi_, dpi_;
};

// "caller:site" for each in-link of the node, in list order.
std::vector<std::string> InEdges(const entry *node)
{
    std::vector<std::string> edges;
    for (VEMTRA_CALL_LINK *l = node->in_edges; l != nullptr; l = l->next)
        edges.push_back(std::string(l->edge->caller->name) + ":" + std::to_string(l->edge->site));
    return edges;
}

}  // namespace

TEST_F(CallGraphTest, FlagsWordBAndInLists)
{
    Project p;
    p.Add("/src/a.c", "main", 3).Blocks({{10, 3, 1}, {6, 4, 1}}).Calls({{1, 7, "helper"}, {0, 8, "ext(E)"}});
    p.Add("/src/a.c", "helper", 20, 'S').Blocks({{4, 20, 1}}).Calls({{0, 1, "ext(E)"}});
    FunctionSpec &ext = p.Add("/src/b.c", "ext", 30).Blocks({{8, 30, 1}});
    ext.attributes = 0x2;
    ext.word_b = 0x33;
    Write(SpiText(p), DpiBytes(p));
    EXPECT_EQ(Build(), 0);

    entry *main_ = VEMTRA_first_entry, *helper = main_->next, *node = helper->next;
    ASSERT_EQ(VEMTRA_entry_count, 3u);
    EXPECT_EQ(main_->flags, VEMTRA_ENTRY_DEFINED);
    EXPECT_EQ(helper->flags, VEMTRA_ENTRY_DEFINED | VEMTRA_ENTRY_STATIC);
    EXPECT_EQ(node->flags, VEMTRA_ENTRY_DEFINED | VEMTRA_ENTRY_FLAG2);
    EXPECT_EQ(node->word_b, 0x33u);
    EXPECT_EQ(InEdges(node), (std::vector<std::string>{"helper:1", "main:8"}));
    EXPECT_EQ(InEdges(helper), (std::vector<std::string>{"main:7"}));
    EXPECT_EQ(main_->out_edges->callee, node);

    // Flag 0 of any segment is reported.
    VEMTRA_Free_Call_Graph();
    p.functions[1].extra_flags = VEMTRA_SEG_FLAG0;
    Write(SpiText(p), DpiBytes(p));
    EXPECT_EQ(Build(), 1);
}

// Callees named but never defined: a static one belongs to its caller's
// module, an external one to none; only version 4 lines leave "(G)" names
// out.
TEST_F(CallGraphTest, MentionedCallees)
{
    Project p;
    p.Add("/src/a.c", "main", 3).Blocks({{1, 3, 1}}).Calls({{0, 1, "near"}, {0, 2, "far(E)"}, {0, 3, "(G)kept"}});
    Write(SpiText(p), DpiBytes(p));
    Build();
    ASSERT_EQ(VEMTRA_entry_count, 4u);
    entry *near = VEMTRA_first_entry->next, *far = near->next, *kept = far->next;
    EXPECT_STREQ(near->name, "near");
    EXPECT_STREQ(near->module, "/src/a.c");
    EXPECT_EQ(near->flags, 0u);  // a mention records no definition fields
    EXPECT_EQ(near->line, -1);
    EXPECT_STREQ(far->name, "far");
    EXPECT_EQ(far->module, nullptr);
    EXPECT_EQ(far->flags, 0u);
    EXPECT_STREQ(kept->name, "(G)kept");

    VEMTRA_Free_Call_Graph();
    p.spi_form = SpiForm::V4;
    Write(SpiText(p), DpiBytes(p));
    Build();
    EXPECT_EQ(VEMTRA_entry_count, 3u);
}

TEST_F(CallGraphTest, DefinitionsInOtherModulesChainBehindTheFirst)
{
    int dup = 0;
    entry *first = entry_lookup("/src/a.c", "inl", 3, 1.0f, 1, 0, 0, 0, &dup);
    EXPECT_EQ(entry_lookup("/src/b.c", "inl", 4, 2.0f, 1, 0, 0, 0, &dup), first);
    EXPECT_EQ(dup, 0);
    entry *second = first->next_same_key;
    ASSERT_NE(second, nullptr);
    EXPECT_STREQ(second->module, "/src/b.c");
    EXPECT_EQ(second->line, 4);
    // The duplicate test compares with the chain's first node only: b.c
    // again makes a third node, a.c again is a duplicate.
    EXPECT_EQ(entry_lookup("/src/b.c", "inl", 5, 0.0f, 1, 0, 0, 0, &dup), first);
    EXPECT_EQ(dup, 0);
    EXPECT_EQ(entry_lookup("/src/a.c", "inl", 6, 0.0f, 1, 0, 0, 0, &dup), first);
    EXPECT_EQ(dup, 1);
    EXPECT_EQ(vemtra_Entry_Chain_Last(first), second->next_same_key);
    EXPECT_EQ(vemtra_Entry_Chain_Last(first)->line, 5);
    EXPECT_EQ(VEMTRA_entry_count, 3u);
}

TEST_F(CallGraphTest, CorruptLinesEndTheRun)
{
    Project p;
    p.Add("/src/a.c", "main", 3).Blocks({{1, 3, 1}});
    std::string good = SpiText(p);
    std::string line = good.substr(0, good.size() - 1);
    struct Case {
        std::string spi;
        std::string message;
    } cases[] = {
        {good + "V3 0 6\n", "header on line 2"},
        {good + line + " 1 x foo\n", "line 2"},
        {line + " 1 2\n" + good, "line 1"},  // the name is not on the line
        {line + " 1\n", "line 1"},
    };
    for (const Case &c : cases) {
        Write(c.spi, DpiBytes(p));
        Captured run = CaptureInChild([&] { Build(); });
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, "ERROR: corrupt spi file '" + spi_ + "', " + c.message + "\n");
    }
}

TEST_F(CallGraphTest, MissingProfiles)
{
    Project p;
    p.Add("/src/a.c", "main", 3).Blocks({{1, 3, 1}});
    Write(SpiText(p), DpiBytes(p));
    unlink(spi_.c_str());
    // With the open dynamic profile given, the graph stays empty.
    Build();
    EXPECT_EQ(VEMTRA_first_entry, nullptr);
    // Opening the dynamic profile itself, the routine ends the run.
    int flag0 = 0;
    Captured run = CaptureInChild([&] { VEMTRA_Create_Call_Graph(dpi_.c_str(), spi_.c_str(), &flag0, nullptr); });
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "ERROR: couldn't open spi file '" + spi_ + "'\n");
    run = CaptureInChild([&] { VEMTRA_Create_Call_Graph("/nonexistent/x.dpi", spi_.c_str(), &flag0, nullptr); });
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "ERROR: couldn't open dpi file '/nonexistent/x.dpi'\n");
}
