// The dynamic call graph: the node key hash, the five cases of entry_lookup,
// and graphs built from static and dynamic profiles of the test writer.
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "shared/vemtra/client/call_graph.h"
#include "shared/vemtra/client/dpi_file.h"
#include "tests/support/capture.h"
#include "tests/support/profile_writer.h"

using namespace testsupport;

namespace {

// Every test starts from an empty graph.
class CallGraphTest : public ::testing::Test {
protected:
    void SetUp() override { VEMTRA_Free_Call_Graph(); }
    void TearDown() override { VEMTRA_Free_Call_Graph(); }
};

// The two profiles of a project in /tmp, removed with the object.
class TempProfiles {
public:
    TempProfiles(const std::string &spi, const std::string &dpi)
    {
        static int serial = 0;
        std::string stem = "/tmp/vemcov-cg-" + std::to_string(getpid()) + "-" + std::to_string(serial++);
        spi_ = stem + ".spi";
        dpi_ = stem + ".dpi";
        WriteBytes(spi_, spi);
        WriteBytes(dpi_, dpi);
    }
    explicit TempProfiles(const Project &p) : TempProfiles(SpiText(p), DpiBytes(p)) {}
    ~TempProfiles()
    {
        unlink(spi_.c_str());
        unlink(dpi_.c_str());
    }
    const char *spi() const { return spi_.c_str(); }
    const char *dpi() const { return dpi_.c_str(); }

    // Opens the dynamic profile and builds the graph; returns the flag.
    int Build() const
    {
        DPI_FILE *file = VEMTRA_Open_Dpi_File(dpi());
        EXPECT_NE(file, nullptr);
        int flag0 = -1;
        VEMTRA_Create_Call_Graph(dpi(), spi(), &flag0, file);
        VEMTRA_Close_Dpi_File(file);
        return flag0;
    }

private:
    std::string spi_, dpi_;
};

std::vector<entry *> Nodes()
{
    std::vector<entry *> nodes;
    for (entry *n = VEMTRA_first_entry; n != nullptr; n = n->next)
        nodes.push_back(n);
    return nodes;
}

entry *Node(const std::string &module, const std::string &name)
{
    for (entry *n = VEMTRA_first_entry; n != nullptr; n = n->next)
        if (n->name == name && n->module != nullptr && n->module == module)
            return n;
    return nullptr;
}

// "callee:site:frequency" for each out-edge, in list order.
std::vector<std::string> OutEdges(const entry *node)
{
    std::vector<std::string> edges;
    for (VEMTRA_CALL_EDGE *e = node->out_edges; e != nullptr; e = e->next_out) {
        EXPECT_EQ(e->caller, node);
        edges.push_back(std::string(e->callee->name) + ":" + std::to_string(e->site) + ":" +
                        std::to_string(static_cast<int>(e->frequency)));
    }
    return edges;
}

// "caller:site" for each in-link, in list order.
std::vector<std::string> InEdges(const entry *node)
{
    std::vector<std::string> edges;
    for (VEMTRA_CALL_LINK *l = node->in_edges; l != nullptr; l = l->next) {
        EXPECT_EQ(l->edge->callee, node);
        edges.push_back(std::string(l->edge->caller->name) + ":" + std::to_string(l->edge->site));
    }
    return edges;
}

}  // namespace

TEST(CallGraphHash, SumXorAndLengthOfSignedCharacters)
{
    // "a": sum 97, xor 97, length 1.
    EXPECT_EQ(vemtra_Entry_Key_Hash("a"), (97u << 16) | (97u << 8) | 1u);
    EXPECT_EQ(vemtra_Entry_Key_Hash(""), 0u);
    // A byte above 127 counts as negative: sum -23 keeps its low 15 bits.
    EXPECT_EQ(vemtra_Entry_Key_Hash("\xE9"), (0x7FE9u << 16) | (0xE9u << 8) | 1u);
    EXPECT_EQ(vemtra_Entry_Key_Hash("a\xE9"), (((97u - 23u) & 0x7FFFu) << 16) | ((0x61u ^ 0xE9u) << 8) | 2u);
    // The sum wraps at 15 bits and the length at 8: 400 'z' sum to 48800.
    std::string z(400, 'z');
    EXPECT_EQ(vemtra_Entry_Key_Hash(z.c_str()), ((48800u & 0x7FFFu) << 16) | (0u << 8) | (400u & 0xFFu));
    // Anagrams collide: the hash ignores the order of the characters.
    EXPECT_EQ(vemtra_Entry_Key_Hash("/src/a.c foo_12"), vemtra_Entry_Key_Hash("/src/a.c foo_21"));
}

TEST_F(CallGraphTest, LookupCreatesCompletesAndKeepsNodes)
{
    int dup = -1;
    // A mention of an external callee: no module, undefined, number 0.
    entry *ext = entry_lookup("/src/a.c", "ext", 0, 0.0f, 0, 0, 0, 0, &dup);
    EXPECT_EQ(dup, 0);
    EXPECT_EQ(ext->module, nullptr);
    EXPECT_STREQ(ext->name, "ext");
    EXPECT_EQ(ext->line, -1);
    EXPECT_EQ(ext->frequency, 0.0f);
    EXPECT_EQ(ext->flags, 0u);
    EXPECT_EQ(ext->number, 0u);
    // A mention of a static callee keeps its module.
    entry *st = entry_lookup("/src/a.c", "helper", 0, 0.0f, 0, 1, 0, 0, &dup);
    EXPECT_STREQ(st->module, "/src/a.c");
    EXPECT_EQ(st->flags & VEMTRA_ENTRY_DEFINED, 0u);
    EXPECT_EQ(st->number, 1u);

    // The definition completes the node in place.
    dup = -1;
    entry *def = entry_lookup("/src/b.c", "ext", 12, 2.5f, 1, 0, 1, 0x22, &dup);
    EXPECT_EQ(def, ext);
    EXPECT_EQ(dup, 0);
    EXPECT_STREQ(ext->module, "/src/b.c");
    EXPECT_EQ(ext->line, 12);
    EXPECT_EQ(ext->frequency, 2.5f);
    EXPECT_EQ(ext->flags, VEMTRA_ENTRY_DEFINED | VEMTRA_ENTRY_FLAG2);
    EXPECT_EQ(ext->word_b, 0x22u);
    EXPECT_EQ(entry_lookup("/src/a.c", "helper", 30, 1.0f, 1, 1, 0, 0, &dup), st);
    EXPECT_EQ(st->flags, VEMTRA_ENTRY_DEFINED | VEMTRA_ENTRY_STATIC);

    // A later mention returns the defined node unchanged.
    EXPECT_EQ(entry_lookup("/src/c.c", "ext", 0, 0.0f, 0, 0, 0, 0, &dup), ext);
    EXPECT_EQ(ext->line, 12);
    EXPECT_STREQ(ext->module, "/src/b.c");

    // A second definition in the same file is a duplicate and changes nothing.
    dup = 0;
    EXPECT_EQ(entry_lookup("/src/b.c", "ext", 99, 7.0f, 1, 0, 0, 0, &dup), ext);
    EXPECT_EQ(dup, 1);
    EXPECT_EQ(ext->line, 12);
    EXPECT_EQ(ext->frequency, 2.5f);

    // A static function of the same name in another file is another node.
    entry *st2 = entry_lookup("/src/b.c", "helper", 5, 0.0f, 1, 1, 0, 0, &dup);
    EXPECT_NE(st2, st);
    EXPECT_EQ(st2->next_same_key, nullptr);
    EXPECT_EQ(st->next_same_key, nullptr);
    EXPECT_EQ(VEMTRA_entry_count, 3u);
    EXPECT_EQ(Nodes(), (std::vector<entry *>{ext, st, st2}));
}

TEST_F(CallGraphTest, DefinitionsInOtherModulesChainBehindTheFirst)
{
    int dup = 0;
    entry *first = entry_lookup("/src/a.c", "inl", 3, 1.0f, 1, 0, 0, 0, &dup);
    entry *again = entry_lookup("/src/b.c", "inl", 4, 2.0f, 1, 0, 0, 0, &dup);
    EXPECT_EQ(again, first);  // the chain's first node is returned
    EXPECT_EQ(dup, 0);
    ASSERT_NE(first->next_same_key, nullptr);
    entry *second = first->next_same_key;
    EXPECT_STREQ(second->module, "/src/b.c");
    EXPECT_EQ(second->line, 4);
    EXPECT_EQ(second->number, 1u);
    EXPECT_EQ(vemtra_Entry_Chain_Last(first), second);
    // The duplicate test compares with the chain's first node only.
    EXPECT_EQ(entry_lookup("/src/a.c", "inl", 5, 0.0f, 1, 0, 0, 0, &dup), first);
    EXPECT_EQ(dup, 1);
    entry_lookup("/src/c.c", "inl", 6, 0.0f, 1, 0, 0, 0, &dup);
    EXPECT_EQ(dup, 0);
    EXPECT_STREQ(vemtra_Entry_Chain_Last(first)->module, "/src/c.c");
    EXPECT_EQ(VEMTRA_entry_count, 3u);
    EXPECT_EQ(Nodes().back(), vemtra_Entry_Chain_Last(first));
}

TEST_F(CallGraphTest, BuildsNodesAndEdgesFromBothProfiles)
{
    Project p;
    p.runs = 2;
    // main calls helper (static, twice), ext (external, defined later) and
    // an indirect site; blocks 0..2 ran 10, 6 and 0 times.
    p.Add("/src/a.c", "main", 3)
        .Blocks({{10, 3, 1}, {6, 4, 1}, {0, 5, 1}})
        .Calls({{1, 7, "helper"}, {2, 8, "ext(E)"}, {1, 9, "(indirect)"}, {0, 11, "helper"}});
    p.Add("/src/a.c", "helper", 20, 'S').Blocks({{4, 20, 1}}).Calls({{0, 1, "ext(E)"}});
    // A static helper of the same name in b.c, and ext's definition there.
    p.Add("/src/b.c", "helper", 8, 'S').Blocks({{0, 8, 1}});
    p.Add("/src/b.c", "ext", 30).Blocks({{8, 30, 1}}).Calls({{0, 2, "helper"}});
    // A function without a segment is still a node.
    p.Add("/src/b.c", "cold", 40).OnlyInSpi().Calls({{0, 1, "ext(E)"}});
    p.functions[3].extra_flags = VEMTRA_SEG_FLAG0;
    p.functions[3].attributes = 0x2;
    p.functions[3].word_b = 0x33;
    TempProfiles files(p);
    EXPECT_EQ(files.Build(), 1);

    std::vector<entry *> nodes = Nodes();
    ASSERT_EQ(nodes.size(), 5u);
    entry *main_ = nodes[0], *helperA = nodes[1], *ext = nodes[2], *helperB = nodes[3], *cold = nodes[4];
    EXPECT_EQ(main_, Node("/src/a.c", "main"));
    EXPECT_EQ(helperA, Node("/src/a.c", "helper"));  // created as main's callee
    EXPECT_EQ(ext, Node("/src/b.c", "ext"));         // created as main's callee, defined in b.c
    EXPECT_EQ(helperB, Node("/src/b.c", "helper"));
    EXPECT_EQ(cold, Node("/src/b.c", "cold"));
    // What the dump does not show: flags, in-lists, the callee of each edge.
    for (entry *n : nodes)
        EXPECT_TRUE(n->flags & VEMTRA_ENTRY_DEFINED) << n->name;
    EXPECT_EQ(helperA->flags & VEMTRA_ENTRY_STATIC, VEMTRA_ENTRY_STATIC);
    EXPECT_EQ(ext->flags, VEMTRA_ENTRY_DEFINED | VEMTRA_ENTRY_FLAG2);
    EXPECT_EQ(ext->word_b, 0x33u);
    EXPECT_EQ(cold->line, 40);
    EXPECT_EQ(cold->frequency, 0.0f);
    EXPECT_EQ(ext->out_edges->callee, helperB);
    EXPECT_EQ(OutEdges(cold), (std::vector<std::string>{"ext:1:0"}));  // no segment: frequency 0
    EXPECT_EQ(InEdges(helperA), (std::vector<std::string>{"main:11", "main:7"}));
    EXPECT_EQ(InEdges(ext), (std::vector<std::string>{"cold:1", "helper:1", "main:8"}));
    EXPECT_EQ(InEdges(helperB), (std::vector<std::string>{"ext:2"}));
    EXPECT_TRUE(InEdges(main_).empty());
}

TEST_F(CallGraphTest, DuplicatesChainsAndSkippedCallees)
{
    Project p;
    p.spi_form = SpiForm::V4;
    // "inl" is defined in a.c, then again in a.c (its call sites are left
    // out), then in b.c: the edges move to b.c's node.
    p.Add("/src/a.c", "inl", 1).Blocks({{6, 1, 1}}).Calls({{0, 1, "f(E)"}, {0, 2, "(G)g"}});
    p.Add("/src/a.c", "inl", 1).OnlyInSpi().Calls({{0, 3, "f(E)"}});
    p.Add("/src/a.c", "user", 9).Blocks({{2, 9, 1}}).Calls({{0, 4, "inl(E)"}, {0, 5, "(indirect)(E)"}});
    p.Add("/src/b.c", "inl", 1).Blocks({{3, 1, 1}}).Calls({{0, 6, "f(E)"}});
    // A callee name far longer than any buffer of the reader.
    std::string long_name(10000, 'q');
    p.Add("/src/b.c", "caller", 20).Blocks({{1, 20, 1}}).Calls({{0, 7, long_name + "(E)"}});
    TempProfiles files(p);
    files.Build();

    entry *inlA = Node("/src/a.c", "inl");
    entry *inlB = Node("/src/b.c", "inl");
    ASSERT_NE(inlA, nullptr);
    ASSERT_NE(inlB, nullptr);
    EXPECT_EQ(inlA->next_same_key, inlB);
    EXPECT_EQ(inlA->out_edges, nullptr);
    EXPECT_EQ(inlA->in_edges, nullptr);
    EXPECT_EQ(OutEdges(inlB), (std::vector<std::string>{"f:6:3", "f:1:6"}));
    EXPECT_EQ(InEdges(inlB), (std::vector<std::string>{"user:4"}));
    std::vector<entry *> nodes = Nodes();
    ASSERT_EQ(nodes.size(), 6u);  // inl, f, user, inl (b.c), caller, q...
    EXPECT_EQ(nodes[5]->module, nullptr);
    EXPECT_EQ(std::string(nodes[5]->name), long_name);
    for (entry *n : nodes)
        EXPECT_STRNE(n->name, "g");
}

TEST_F(CallGraphTest, CorruptLinesEndTheRun)
{
    Project p;
    p.Add("/src/a.c", "main", 3).Blocks({{1, 3, 1}});
    std::string good = SpiText(p);
    struct Case {
        std::string spi;
        std::string message;
    } cases[] = {
        {good + "V3 0 6\n", "header on line 2"},
        {good + good.substr(0, good.size() - 1) + " 1 x foo\n", "line 2"},
        {good.substr(0, good.size() - 1) + " 1 2\n" + good, "line 1"},
        {good.substr(0, good.size() - 1) + " 1\n", "line 1"},
    };
    for (const Case &c : cases) {
        TempProfiles files(c.spi, DpiBytes(p));
        Captured run = CaptureInChild([&] { files.Build(); });
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, "ERROR: corrupt spi file '" + std::string(files.spi()) + "', " + c.message + "\n");
    }
}

TEST_F(CallGraphTest, MissingStaticProfile)
{
    Project p;
    p.Add("/src/a.c", "main", 3).Blocks({{1, 3, 1}});
    TempProfiles files(SpiText(p), DpiBytes(p));
    std::string spi = files.spi();
    unlink(spi.c_str());
    // With the open dynamic profile given, the graph stays empty.
    files.Build();
    EXPECT_EQ(VEMTRA_first_entry, nullptr);
    // Opening the dynamic profile itself, the routine ends the run.
    Captured run = CaptureInChild([&] {
        int flag0 = 0;
        VEMTRA_Create_Call_Graph(files.dpi(), spi.c_str(), &flag0, nullptr);
    });
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "ERROR: couldn't open spi file '" + spi + "'\n");
    run = CaptureInChild([&] {
        int flag0 = 0;
        VEMTRA_Create_Call_Graph("/nonexistent/x.dpi", spi.c_str(), &flag0, nullptr);
    });
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "ERROR: couldn't open dpi file '/nonexistent/x.dpi'\n");
}
