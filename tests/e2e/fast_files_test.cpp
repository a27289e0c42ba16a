// The four coverage files of the fast road (-txtfcvrg, -xmlfcvrg, -txtbcvrg,
// -xmlbcvrg) through the real binary, byte for byte against the documented
// formats: module headers, percentages, block lists, XML escaping, the
// infeasible-code markers, the component list and a corrupt profile.
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/banner_text.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

using namespace testsupport;

namespace {

const std::vector<std::string> ALL_FOUR = {"-txtfcvrg", "f.txt", "-xmlfcvrg", "f.xml",
                                           "-txtbcvrg", "b.txt", "-xmlbcvrg", "b.xml"};

std::vector<std::string> Join(std::vector<std::string> a, const std::vector<std::string> &b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// A block line of the text block file: instance, line, column, "%12.0f".
std::string B(int instance, int line, int col, const std::string &count)
{
    return std::to_string(instance) + "\t" + std::to_string(line) + "\t" + std::to_string(col) + "\t" +
           std::string(12 - std::min<size_t>(12, count.size()), ' ') + count + "\n";
}

// One BLOCK element with its instances.
std::string XmlBlock(int line, int col, const std::vector<std::string> &counts)
{
    std::string text = "<BLOCK line=\"" + std::to_string(line) + "\" col=\"" + std::to_string(col) + "\">\n";
    for (size_t i = 0; i < counts.size(); i++)
        text += "<INSTANCE id=\"" + std::to_string(i + 1) + "\" freq=\"" +
                std::string(12 - std::min<size_t>(12, counts[i].size()), ' ') + counts[i] + "\">\n</INSTANCE>\n";
    return text + "</BLOCK>\n";
}

void ExpectOutputs(const Scenario &s, const std::map<std::string, std::string> &expected)
{
    std::map<std::string, std::string> outputs = s.outputs();
    for (const auto &[name, text] : expected) {
        ASSERT_TRUE(outputs.count(name)) << name << " was not written";
        ExpectSameBytes(name, text, outputs[name]);
    }
    EXPECT_EQ(outputs.size(), expected.size()) << "no other file (no HTML report) is written";
    EXPECT_FALSE(s.exists("CodeCoverage"));
}

}  // namespace

TEST(FastFiles, SeveralModulesWithEveryKindOfFunction)
{
    Scenario s;
    Project p;
    p.runs = 2;
    // a.c: main covers 2 of 3 blocks; foo(int) ran no block; lz has a block
    // at line 0 (left out) and two blocks at one position.
    p.Add("/src/a.c", "main", 3).Blocks({{10, 3, 1}, {0, 4, 5}, {4, 6, 1}});
    p.Add("/src/a.c", "_Z3fooi", 10).Blocks({{0, 10, 1}, {0, 11, 3}});
    p.Add("/src/a.c", "lz", 20).Blocks({{5, 0, 0}, {5, 20, 1}, {0, 20, 1}});
    // q&a.c: a name full of XML-special characters, counts beyond 32 bits
    // (the frequency is summed in single precision), and a function without
    // line information whose blocks all sit at (1, 1).
    p.Add("/src/q&a.c", "_ZltRK1AS1_", 5).Blocks({{1, 5, 1}, {2, 5, 9}, {0, 7, 1}});
    p.Add("/src/q&a.c", "big", 30).Blocks({{1234567890123, 30, 1}, {5000000000, 31, 1}});
    FunctionSpec &noline = p.Add("/src/q&a.c", "noline", 40).Blocks({{3}, {0}, {6}});
    noline.line_info = LineInfo::None;
    s.write("vemtra.spi", SpiText(p));
    s.write("vemtra.dpi", DpiBytes(p));

    RunResult r = s.run(Join(ALL_FOUR, {"-prj", "P&Q"}), NO_PACKAGE_ENV);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, BANNER_LINES + "\n");
    EXPECT_EQ(r.out, "\n");

    const std::string op = "operator<(A const&, A const&)";
    const std::string opXml = "operator&lt;(A const&amp;, A const&amp;)";
    ExpectOutputs(s, {
        {"f.txt", "Covered Functions in File: \"/src/a.c\"\n"
                  "\"lz\"\t5\t2\t1\t 50.00\n"
                  "\"main\"\t10\t3\t2\t 66.67\n"
                  "\nCovered Functions in File: \"/src/q&a.c\"\n"
                  "\"" + op + "\"\t1\t3\t2\t 66.67\n"
                  "\"big\"\t1234567954432\t2\t2\t100.00\n"
                  "\"noline\"\t3\t3\t2\t 66.67\n"},
        {"f.xml", "<PROJECT name = \"P&amp;Q\">\n"
                  "<MODULE name = \"/src/a.c\">\n"
                  "<FUNCTION name=\"lz\" freq=\"5\">\n"
                  "<BLOCKS total=\"2\" covered=\"1\" coverage=\" 50.00%\"></BLOCKS>\n</FUNCTION>\n"
                  "<FUNCTION name=\"main\" freq=\"10\">\n"
                  "<BLOCKS total=\"3\" covered=\"2\" coverage=\" 66.67%\"></BLOCKS>\n</FUNCTION>\n"
                  "</MODULE>\n"
                  "<MODULE name = \"/src/q&amp;a.c\">\n"
                  "<FUNCTION name=\"" + opXml + "\" freq=\"1\">\n"
                  "<BLOCKS total=\"3\" covered=\"2\" coverage=\" 66.67%\"></BLOCKS>\n</FUNCTION>\n"
                  "<FUNCTION name=\"big\" freq=\"1234567954432\">\n"
                  "<BLOCKS total=\"2\" covered=\"2\" coverage=\"100.00%\"></BLOCKS>\n</FUNCTION>\n"
                  "<FUNCTION name=\"noline\" freq=\"3\">\n"
                  "<BLOCKS total=\"3\" covered=\"2\" coverage=\" 66.67%\"></BLOCKS>\n</FUNCTION>\n"
                  "</MODULE>\n"
                  "</PROJECT>\n"},
        // foo(int) ran no block and comes first in its module: its block
        // lines stand right under the module header.
        {"b.txt", "Covered Functions in File: \"/src/a.c\"\n" +
                      B(1, 10, 1, "0") + B(1, 11, 3, "0") +
                      "function - lz\t5\n" + B(1, 20, 1, "0") + B(2, 20, 1, "5") +
                      "function - main\t10\n" + B(1, 3, 1, "10") + B(1, 4, 5, "0") + B(1, 6, 1, "4") +
                      "\nCovered Functions in File: \"/src/q&a.c\"\n"
                      "function - " + op + "\t1\n" + B(1, 5, 1, "1") + B(1, 5, 9, "2") + B(1, 7, 1, "0") +
                      "function - big\t1234567954432\n" + B(1, 30, 1, "1234567890123") + B(1, 31, 1, "5000000000") +
                      "function - noline\t3\n" + B(1, 1, 1, "6") + B(2, 1, 1, "0") + B(3, 1, 1, "3")},
        {"b.xml", "<PROJECT name = \"P&amp;Q\">\n"
                  "<MODULE name = \"/src/a.c\">\n"
                  "<FUNCTION name=\"lz\" freq=\"5\">\n" + XmlBlock(20, 1, {"0", "5"}) + "</FUNCTION>\n"
                  "<FUNCTION name=\"main\" freq=\"10\">\n" +
                      XmlBlock(3, 1, {"10"}) + XmlBlock(4, 5, {"0"}) + XmlBlock(6, 1, {"4"}) + "</FUNCTION>\n"
                  "</MODULE>\n"
                  "<MODULE name = \"/src/q&amp;a.c\">\n"
                  "<FUNCTION name=\"" + opXml + "\" freq=\"1\">\n" +
                      XmlBlock(5, 1, {"1"}) + XmlBlock(5, 9, {"2"}) + XmlBlock(7, 1, {"0"}) + "</FUNCTION>\n"
                  "<FUNCTION name=\"big\" freq=\"1234567954432\">\n" +
                      XmlBlock(30, 1, {"1234567890123"}) + XmlBlock(31, 1, {"5000000000"}) + "</FUNCTION>\n"
                  "<FUNCTION name=\"noline\" freq=\"3\">\n" + XmlBlock(1, 1, {"6", "0", "3"}) + "</FUNCTION>\n"
                  "</MODULE>\n"
                  "</PROJECT>\n"},
    });
}

TEST(FastFiles, UnexecutedBlocksStandUnderThePreviousFunction)
{
    Scenario s;
    Project p;
    p.Add("/src/a.c", "alpha", 1).Blocks({{2, 1, 1}});
    p.Add("/src/a.c", "beta", 5).Blocks({{0, 5, 1}, {0, 6, 2}});
    s.write("vemtra.spi", SpiText(p));
    s.write("vemtra.dpi", DpiBytes(p));
    RunResult r = s.run({"-txtbcvrg", "b.txt", "-nopmeter"}, NO_PACKAGE_ENV);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "");
    ExpectOutputs(s, {{"b.txt", "Covered Functions in File: \"/src/a.c\"\n"
                                "function - alpha\t2\n" +
                                    B(1, 1, 1, "2") + B(1, 5, 1, "0") + B(1, 6, 2, "0")}});
}

TEST(FastFiles, PercentagesRoundHalfUp)
{
    Scenario s;
    Project p;
    // 1 of 800 blocks is 0.125 %: half up gives 0.13 where printf alone
    // would print 0.12.
    std::vector<BlockSpec> blocks(800, BlockSpec{0, 2, 1});
    blocks[0].count = 1;
    p.Add("/src/r.c", "eighth", 2).Blocks(blocks);
    s.write("vemtra.spi", SpiText(p));
    s.write("vemtra.dpi", DpiBytes(p));
    RunResult r = s.run({"-txtfcvrg", "f.txt"}, NO_PACKAGE_ENV);
    EXPECT_EQ(r.status, 0);
    ExpectOutputs(s, {{"f.txt", "Covered Functions in File: \"/src/r.c\"\n\"eighth\"\t1\t800\t1\t  0.13\n"}});
}

TEST(FastFiles, MarkersMakeLinesInfeasible)
{
    Scenario s;
    const std::string m = s.path("src/m.c");
    s.write("src/m.c", "int g(int x)\n"               // 1
                       "{\n"                          // 2
                       "  if (x) return 1;\n"         // 3
                       "  return 0; // NOTREACHED\n"  // 4
                       "}\n"                          // 5
                       "int k(void) // NOTREACHED\n"  // 6: the whole of k, to line 10
                       "{\n"                          // 7
                       "  return 3;\n"                // 8
                       "}\n"                          // 9
                       "/* BEGIN_OFF */\n"            // 10
                       "int h(void)\n"                // 11
                       "{\n"                          // 12
                       "  return 2;\n"                // 13
                       "}\n"                          // 14
                       "/* END_OFF */\n"              // 15
                       "int last(void)\n"             // 16
                       "{\n"                          // 17
                       "  return 4;\n"                // 18
                       "}\n");                        // 19
    Project p;
    p.Add(m, "g", 1).Blocks({{5, 1, 1}, {2, 3, 3}, {0, 4, 3}});
    p.Add(m, "k", 6).Blocks({{1, 6, 1}, {1, 8, 3}});
    p.Add(m, "h", 11).Blocks({{0, 11, 1}, {0, 13, 3}});
    p.Add(m, "last", 16).Blocks({{7, 16, 1}, {0, 18, 3}});
    s.write("vemtra.spi", SpiText(p));
    s.write("vemtra.dpi", DpiBytes(p));
    RunResult r = s.run(Join(ALL_FOUR, {"-onelinedsbl", "NOTREACHED", "-beginblkdsbl", "BEGIN_OFF",
                                        "-endblkdsbl", "END_OFF"}), NO_PACKAGE_ENV);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, BANNER_LINES + "\n");
    const std::string header = "Covered Functions in File: \"" + m + "\"\n";
    const std::string module = "<MODULE name = \"" + m + "\">\n";
    ExpectOutputs(s, {
        {"f.txt", header + "\"g\"\t5\t2\t2\t100.00\n" + "\"last\"\t7\t2\t1\t 50.00\n"},
        {"f.xml", "<PROJECT name = \"(null)\">\n" + module +
                      "<FUNCTION name=\"g\" freq=\"5\">\n"
                      "<BLOCKS total=\"2\" covered=\"2\" coverage=\"100.00%\"></BLOCKS>\n</FUNCTION>\n"
                      "<FUNCTION name=\"last\" freq=\"7\">\n"
                      "<BLOCKS total=\"2\" covered=\"1\" coverage=\" 50.00%\"></BLOCKS>\n</FUNCTION>\n"
                      "</MODULE>\n</PROJECT>\n"},
        {"b.txt", header + "function - g\t5\n" + B(1, 1, 1, "5") + B(1, 3, 3, "2") + "function - last\t7\n" +
                      B(1, 16, 1, "7") + B(1, 18, 3, "0")},
        {"b.xml", "<PROJECT name = \"(null)\">\n" + module + "<FUNCTION name=\"g\" freq=\"5\">\n" +
                      XmlBlock(1, 1, {"5"}) + XmlBlock(3, 3, {"2"}) + "</FUNCTION>\n" +
                      "<FUNCTION name=\"last\" freq=\"7\">\n" + XmlBlock(16, 1, {"7"}) + XmlBlock(18, 3, {"0"}) +
                      "</FUNCTION>\n</MODULE>\n</PROJECT>\n"},
    });
}

TEST(FastFiles, APairOutsideTheComponentListEndsTheWalk)
{
    Scenario s;
    Project p;
    p.Add("/src/a.c", "a1", 1).Blocks({{1, 1, 1}});
    p.Add("/src/a.c", "a2", 5).Blocks({{2, 5, 1}});
    p.Add("/src/b.c", "b1", 1).Blocks({{3, 1, 1}});
    p.Add("/src/c.c", "c1", 1).Blocks({{4, 1, 1}});
    s.write("vemtra.spi", SpiText(p));
    s.write("vemtra.dpi", DpiBytes(p));

    // b.c is not of interest: the walk stays on its pair, so c.c never comes.
    s.write("comp.txt", "a.c\nc.c\n");
    RunResult r = s.run(Join(ALL_FOUR, {"-comp", "comp.txt"}), NO_PACKAGE_ENV);
    EXPECT_EQ(r.status, 0);
    const std::string aXml = "<MODULE name = \"/src/a.c\">\n"
                             "<FUNCTION name=\"a1\" freq=\"1\">\n"
                             "<BLOCKS total=\"1\" covered=\"1\" coverage=\"100.00%\"></BLOCKS>\n</FUNCTION>\n"
                             "<FUNCTION name=\"a2\" freq=\"2\">\n"
                             "<BLOCKS total=\"1\" covered=\"1\" coverage=\"100.00%\"></BLOCKS>\n</FUNCTION>\n";
    ExpectOutputs(s, {
        {"f.txt", "Covered Functions in File: \"/src/a.c\"\n\"a1\"\t1\t1\t1\t100.00\n\"a2\"\t2\t1\t1\t100.00\n"},
        {"f.xml", "<PROJECT name = \"(null)\">\n" + aXml + "</MODULE>\n</PROJECT>\n"},
        {"b.txt", "Covered Functions in File: \"/src/a.c\"\nfunction - a1\t1\n" + B(1, 1, 1, "1") +
                      "function - a2\t2\n" + B(1, 5, 1, "2")},
        {"b.xml", "<PROJECT name = \"(null)\">\n<MODULE name = \"/src/a.c\">\n"
                  "<FUNCTION name=\"a1\" freq=\"1\">\n" + XmlBlock(1, 1, {"1"}) + "</FUNCTION>\n"
                  "<FUNCTION name=\"a2\" freq=\"2\">\n" + XmlBlock(5, 1, {"2"}) + "</FUNCTION>\n"
                  "</MODULE>\n</PROJECT>\n"},
    });

    // Already the first pair is out: no module at all, and the XML files
    // still get their closing "</MODULE>".
    s.write("comp.txt", "c.c\n");
    r = s.run(Join(ALL_FOUR, {"-comp", "comp.txt"}), NO_PACKAGE_ENV);
    EXPECT_EQ(r.status, 0);
    ExpectOutputs(s, {
        {"f.txt", ""},
        {"f.xml", "<PROJECT name = \"(null)\">\n</MODULE>\n</PROJECT>\n"},
        {"b.txt", ""},
        {"b.xml", "<PROJECT name = \"(null)\">\n</MODULE>\n</PROJECT>\n"},
    });
}

TEST(FastFiles, ADynamicProfileWithoutFunctionsIsCorrupt)
{
    Scenario s;
    Project p;
    p.Add("/src/a.c", "main", 1).OnlyInSpi();
    s.write("vemtra.spi", SpiText(p));
    s.write("vemtra.dpi", DpiBytes(p));
    // The first file ends the run; the XML files keep their opening only.
    RunResult r = s.run(Join(ALL_FOUR, {"-txtdcg", "cg.txt"}), NO_PACKAGE_ENV);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, BANNER_LINES + "\nvemtra.dpi is corrupt!\n");
    ExpectOutputs(s, {{"f.txt", ""},
                      {"f.xml", "<PROJECT name = \"(null)\">\n"},
                      {"b.txt", ""},
                      {"b.xml", "<PROJECT name = \"(null)\">\n"},
                      {"cg.txt", ""}});

    // The call-graph file alone ends the same way.
    r = s.run({"-txtdcg", "cg.txt", "-dpi", "vemtra.dpi"}, NO_PACKAGE_ENV);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, BANNER_LINES + "\nvemtra.dpi is corrupt!\n");
}
