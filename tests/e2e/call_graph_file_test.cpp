// The call-graph file (-txtdcg) through the real binary, against golden
// files: modules, functions with and without call-graph data, direct calls,
// indirect and virtual targets, and the statistics of functions, modules and
// the program.
#include <string>

#include <gtest/gtest.h>

#include "tests/support/banner_text.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

using namespace testsupport;

TEST(CallGraphFile, DirectIndirectAndVirtualCalls)
{
    Scenario s;
    Project p;
    p.runs = 2;
    // main: four direct call sites (one of them "(indirect)"), and four
    // value-profile sites with two, no, five (four are kept) and one target.
    FunctionSpec &main_ = p.Add("/src/a.c", "main", 3)
                              .Blocks({{2, 3, 1}, {6, 4, 1}, {4, 5, 1}, {0, 6, 1}})
                              .Address(0x1000)
                              .Calls({{1, 1, "helper"}, {2, 2, "shared(E)"}, {1, 3, "(indirect)"},
                                      {3, 4, "_Z3fooi(E)"}});
    main_.value_sites = {
        {1, {{0x2000, 6, 0}, {0x3000, 2, 1}}},
        {2, {}},
        {3, {{0x2000, 4, 0}, {0x9999, 2, 0}, {0x3000, 8, 1}, {0x4000, 1, 0}, {0x2000, 50, 0}}},
        {0, {{0x4000, 3, 0}, {0x2000, 0, 0}, {0x3000, 9, 0}}},
    };
    p.Add("/src/a.c", "helper", 20, 'S').Blocks({{8, 20, 1}}).Address(0x2000);
    // shared is called from a.c and b.c: one node. foo(int) is called
    // before its own line; it calls b.c's static helper before that one's
    // line, which is another function than a.c's helper.
    p.Add("/src/b.c", "shared", 7).Blocks({{10, 7, 1}, {3, 8, 1}}).Address(0x3000).Calls({{1, 5, "_Z3fooi(E)"}});
    p.Add("/src/b.c", "_Z3fooi", 12).Blocks({{0, 12, 1}}).Address(0x4000).Calls({{0, 6, "helper"}});
    p.Add("/src/b.c", "helper", 40, 'S').Blocks({{2, 40, 1}});
    // In the dynamic profile only: no call-graph node.
    FunctionSpec &nospi = p.Add("/src/b.c", "nospi", 30).Blocks({{0, 30, 1}}).OnlyInDpi();
    nospi.value_sites = {{0, {{0x1000, 4, 0}}}};
    s.writeProfiles(p);

    ExpectGolden("call_graph_calls", s, s.run({"-txtdcg", "cg.txt"}));
}

TEST(CallGraphFile, DuplicateDefinitionsAndFunctionsDefinedInTwoFiles)
{
    Scenario s;
    Project p;
    p.spi_form = SpiForm::V4;
    // inl is defined in a.c, once more in a.c (that line's call sites are
    // ignored), then in b.c: both of its pairs list the calls of the last
    // definition, which took over the first one's.
    p.Add("/src/a.c", "inl", 1).Blocks({{4, 1, 1}, {6, 2, 1}}).Calls({{1, 1, "work(E)"}});
    p.Add("/src/a.c", "inl", 1).OnlyInSpi().Calls({{0, 9, "other(E)"}});
    p.Add("/src/b.c", "inl", 1).Blocks({{2, 1, 1}}).Calls({{0, 2, "work(E)"}});
    // A version 4 "(G)" callee and an indirect site give no edge.
    p.Add("/src/b.c", "work", 10).Blocks({{7, 10, 1}}).Calls({{0, 3, "(G)gone"}, {0, 4, "(indirect)"}});
    s.writeProfiles(p);

    ExpectGolden("call_graph_definitions", s, s.run({"-txtdcg", "cg.txt"}));
}

TEST(CallGraphFile, CorruptStaticProfileLine)
{
    Scenario s;
    Project p;
    p.Add("/src/a.c", "main", 3).Blocks({{1, 3, 1}}).Calls({{0, 1, "f(E)"}});
    std::string spi = SpiText(p);
    // A call-site entry without its name: the header reader of the function
    // list skips the rest of the line, the call-graph builder does not.
    spi.insert(spi.size() - 1, " 0 2");
    s.write("vemtra.spi", spi);
    s.write("vemtra.dpi", DpiBytes(p));
    RunResult r = s.run({"-txtdcg", "cg.txt"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, BANNER + "vemcov: ERROR: corrupt spi file 'vemtra.spi', line 1\n");
    EXPECT_EQ(s.read("cg.txt"), "");
}

TEST(CallGraphFile, ValueSiteOutsideItsSegment)
{
    Scenario s;
    Project p;
    p.Add("/src/a.c", "main", 3).Blocks({{2, 3, 1}}).value_sites = {{1, {{0x1000, 4, 0}}}};
    s.writeProfiles(p);
    RunResult r = s.run({"-txtdcg", "cg.txt"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, BANNER + "shared/vemtra/tallyfold:892 ASSERTX(i < dpi->block_cnt)\n");
    EXPECT_EQ(s.read("cg.txt"), ".module 0 \"/src/a.c\"\n    .function \"main\" 0 0 2\n");
}
