// The call-graph file (-txtdcg) through the real binary, byte for byte
// against the documented records: modules, functions with and without
// call-graph data, direct calls, indirect and virtual targets, and the
// statistics of functions, modules and the program.
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/banner_text.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

using namespace testsupport;

namespace {

void ExpectOnlyCallGraph(const Scenario &s, const RunResult &r, const std::string &expected)
{
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "\n");
    EXPECT_EQ(r.err, BANNER_LINES + "\n");
    std::map<std::string, std::string> outputs = s.outputs();
    EXPECT_EQ(outputs.size(), 1u) << "only the call-graph file: no HTML report";
    EXPECT_FALSE(s.exists("CodeCoverage"));
    ExpectSameBytes("cg.txt", expected, outputs["cg.txt"]);
}

}  // namespace

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
    s.write("vemtra.spi", SpiText(p));
    s.write("vemtra.dpi", DpiBytes(p));

    RunResult r = s.run({"-txtdcg", "cg.txt"}, NO_PACKAGE_ENV);
    ExpectOnlyCallGraph(s, r,
                        ".module 0 \"/src/a.c\"\n"
                        "    .function \"helper\" 0 1 4\n"
                        "    .funstats \"helper\" 0 1 4  0 0  0 0  0 0\n"
                        "    .function \"main\" 0 0 1\n"
                        "        .dcall 0 0 \"foo(int)\" 4 0\n"
                        "        .dcall 1 0 \"shared\" 2 2\n"
                        "        .dcall 2 0 \"helper\" 1 3\n"
                        "        .icall 0 0 \"helper\" 4 3\n"
                        "        .vcall 0 1 \"shared\" 4 1\n"
                        "        .icall 1 0 \"(null)\" 5 0\n"
                        "        .icall 2 0 \"helper\" 6 2\n"
                        "        .icall 2 1 \"(null)\" 6 1\n"
                        "        .vcall 2 2 \"shared\" 6 4\n"
                        "        .icall 2 3 \"foo(int)\" 6 0\n"
                        "        .icall 3 0 \"foo(int)\" 3 1\n"
                        "    .funstats \"main\" 0 0 1  3 5  4 7  2 5\n"
                        ".mstats \"/src/a.c\" 0 2  3 5  4 7  2 5\n"
                        ".module 1 \"/src/b.c\"\n"
                        "    .function \"foo(int)\" 1 3 0\n"
                        "        .dcall 0 0 \"helper\" 6 0\n"
                        "    .funstats \"foo(int)\" 1 3 0  1 0  0 0  0 0\n"
                        "    .function \"helper\" 1 4 1\n"
                        "    .funstats \"helper\" 1 4 1  0 0  0 0  0 0\n"
                        "    .function \"nospi\" 1 0 0\n"
                        "        .icall 0 0 \"main\" 30 2\n"
                        "    .funstats \"nospi\" 1 0 0  0 0  1 2  0 0\n"
                        "    .function \"shared\" 1 2 5\n"
                        "        .dcall 0 0 \"foo(int)\" 5 1\n"
                        "    .funstats \"shared\" 1 2 5  1 1  0 0  0 0\n"
                        ".mstats \"/src/b.c\" 1 4  2 1  1 2  0 0\n"
                        ".tstats 2 6  5 6  5 9  2 5\n");
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
    s.write("vemtra.spi", SpiText(p));
    s.write("vemtra.dpi", DpiBytes(p));

    RunResult r = s.run({"-txtdcg", "cg.txt"}, NO_PACKAGE_ENV);
    ExpectOnlyCallGraph(s, r,
                        ".module 0 \"/src/a.c\"\n"
                        "    .function \"inl\" 0 0 4\n"
                        "        .dcall 0 0 \"work\" 2 2\n"
                        "        .dcall 1 0 \"work\" 1 6\n"
                        "    .funstats \"inl\" 0 0 4  2 8  0 0  0 0\n"
                        ".mstats \"/src/a.c\" 0 1  2 8  0 0  0 0\n"
                        ".module 1 \"/src/b.c\"\n"
                        "    .function \"inl\" 1 2 2\n"
                        "        .dcall 0 0 \"work\" 2 2\n"
                        "        .dcall 1 0 \"work\" 1 6\n"
                        "    .funstats \"inl\" 1 2 2  2 8  0 0  0 0\n"
                        "    .function \"work\" 1 1 7\n"
                        "    .funstats \"work\" 1 1 7  0 0  0 0  0 0\n"
                        ".mstats \"/src/b.c\" 1 2  2 8  0 0  0 0\n"
                        ".tstats 2 3  4 16  0 0  0 0\n");
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
    RunResult r = s.run({"-txtdcg", "cg.txt"}, NO_PACKAGE_ENV);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, BANNER_LINES + "\nvemcov: ERROR: corrupt spi file 'vemtra.spi', line 1\n");
    EXPECT_EQ(s.read("cg.txt"), "");
}
