// Whole projects through the full road without HTML: the full block files,
// the console output and what is (not) written, for a project with static,
// external, never-called and two-instance functions, infeasible regions,
// a function without line information and a missing source; a differential
// run; unusual source files; and a profile that records no runs.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/banner_text.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

using testsupport::ExpectSameBytes;
using testsupport::Project;
using testsupport::RunResult;
using testsupport::Scenario;

namespace {

// The banner and the option parser's empty line.
const std::string BANNER = testsupport::BANNER_LINES + "\n";

// One block record of the text file and its XML instance, for counts that
// fit the 12-column field.
std::string Txt(int instance, int line, int col, const std::string &count)
{
    return std::to_string(instance) + "\t" + std::to_string(line) + "\t" + std::to_string(col) + "\t" +
           std::string(12 - count.size(), ' ') + count + "\n";
}

std::string Block(int line, int col, const std::vector<std::string> &counts)
{
    std::string xml = "<BLOCK line=\"" + std::to_string(line) + "\" col=\"" + std::to_string(col) + "\">\n";
    for (size_t i = 0; i < counts.size(); ++i)
        xml += "<INSTANCE id=\"" + std::to_string(i + 1) + "\" freq=\"" + std::string(12 - counts[i].size(), ' ') +
               counts[i] + "\">\n</INSTANCE>\n";
    return xml + "</BLOCK>\n";
}

// Runs vemcov with no compiler package along PATH, so the banner is fixed.
RunResult RunVemcov(const Scenario &scenario, const std::vector<std::string> &args)
{
    return scenario.run(args, testsupport::NO_PACKAGE_ENV);
}

void WriteProfiles(Scenario &scenario, const Project &project)
{
    scenario.write("vemtra.spi", testsupport::SpiText(project));
    scenario.write("vemtra.dpi", testsupport::DpiBytes(project));
}

const char APP_C[] =
    "/* app.c: a small program */\n"      // 1
    "static int helper(int x)\n"          // 2
    "{\n"                                 // 3
    "    if (x > 10)\n"                   // 4
    "        return 1;\n"                 // 5
    "    return 0;\n"                     // 6
    "}\n"                                 // 7
    "\n"                                  // 8
    "int never_called(void)\n"            // 9
    "{\n"                                 // 10
    "    return 42;\n"                    // 11
    "}\n"                                 // 12
    "\n"                                  // 13
    "int main(int argc, char **argv)\n"   // 14
    "{\n"                                 // 15
    "    int r = helper(argc);\n"         // 16
    "    /* NF_BEGIN */\n"                // 17
    "    if (r < 0)\n"                    // 18
    "        abort(\"// NF_END\");\n"     // 19
    "    /* NF_END */\n"                  // 20
    "    return r;\n"                     // 21
    "}\n"                                 // 22
    "\n"                                  // 23
    "void debug_dump(void) // NF\n"       // 24
    "{\n"                                 // 25
    "    puts(\"dump\");\n"               // 26
    "}\n"                                 // 27
    "int after(void)\n"                   // 28
    "{\n"                                 // 29
    "    return 7;\n"                     // 30
    "}\n";                                // 31

const char BOX_H[] =
    "template <typename T> struct Box {\n"
    "    Box() : value() {\n"
    "        if (sizeof(T) > 8) value = T();\n"
    "    }\n"
    "    T value;\n"
    "};\n";

// The project of the first cases. Functions are added out of order: the
// tool sorts them by file, display name and profile name.
Project DemoProject(const Scenario &scenario)
{
    std::string app = scenario.path("src/app.c"), box = scenario.path("src/box.h");
    Project p;
    p.runs = 3;
    p.Add(app, "main", 14).Blocks({{3, 15, 1}, {3, 16, 13}, {0, 18, 5}, {0, 19, 9}, {3, 21, 5}});
    p.Add(app, "helper", 2, 'S').Blocks({{3, 3, 1}, {1, 5, 9}, {2, 6, 5}});
    p.Add(app, "never_called", 9).Blocks({{0, 10, 1}, {0, 11, 5}}).OnlyInSpi();
    p.Add(app, "debug_dump", 24).Blocks({{1, 25, 1}});
    p.Add(app, "after", 28).Blocks({{3, 29, 1}});
    // Two instances of one source function (complete and base constructor).
    p.Add(box, "_ZN3BoxIiEC2Ev", 2).Blocks({{0, 2, 5}, {0, 3, 9}});
    p.Add(box, "_ZN3BoxIiEC1Ev", 2).Blocks({{2, 2, 5}, {0, 3, 9}});
    p.Add(scenario.path("src/lost.c"), "lost_fn", 1).Blocks({{1, 1, 1}});
    p.Add(scenario.path("src/noline.c"), "noline", 1).Blocks({{5, 0, 0}, {2, 0, 0}}).line_info =
        testsupport::LineInfo::None;
    return p;
}

void WriteDemo(Scenario &scenario)
{
    scenario.write("src/app.c", APP_C);
    scenario.write("src/box.h", BOX_H);
    scenario.write("src/noline.c", "int noline(int a)\n{\n    return a * 2;\n}\n");
    WriteProfiles(scenario, DemoProject(scenario));
}

const std::vector<std::string> MARKERS = {"-onelinedsbl", "NF", "-beginblkdsbl", "NF_BEGIN", "-endblkdsbl", "NF_END"};

std::vector<std::string> Args(std::vector<std::string> args, const std::vector<std::string> &more)
{
    args.insert(args.end(), more.begin(), more.end());
    return args;
}

}  // namespace

TEST(FullBlockFiles, ProjectWithMarkers)
{
    Scenario scenario;
    WriteDemo(scenario);
    const std::string app = scenario.path("src/app.c"), box = scenario.path("src/box.h");
    const std::string lost = scenario.path("src/lost.c"), noline = scenario.path("src/noline.c");

    RunResult run = RunVemcov(scenario, Args({"-nohtml", "-prj", "demo<&>", "-txtbcvrgfull", "full.txt",
                                              "-xmlbcvrgfull", "full.xml"},
                                             MARKERS));
    EXPECT_EQ(run.status, 0);
    // Nine functions: the meter reports at every tick. The missing source
    // is reported on standard output between two ticks.
    ExpectSameBytes("stdout",
                    "Progress: 11% .. 22% .. 33% .. 44% .. 56% .. 67% .. 78% .. \n"
                    "Warning - File " + lost + " not found!\n"
                    "89% .. 100%\n",
                    run.out);
    ExpectSameBytes("stderr",
                    BANNER + "No line number info for " + noline +
                        ": recompile with -Qcvinstx (instead of -Qcvinst).\n"
                        "...Assigning all exec counts to line 1 column 1.\n",
                    run.err);

    // app.c: debug_dump starts on a marked line and is left out; main's
    // blocks on lines 17-20 are infeasible (the "// NF_END" in a string
    // does not count); never_called has no segment. The missing source
    // gets its module opening only.
    const std::string txt =
        "file - " + app + "\n"
        "function - after\t3\n" + Txt(1, 29, 1, "3") +
        "function - helper\t3\n" + Txt(1, 3, 1, "3") + Txt(1, 5, 9, "1") + Txt(1, 6, 5, "2") +
        "function - main\t3\n" + Txt(1, 15, 1, "3") + Txt(1, 16, 13, "3") + Txt(1, 21, 5, "3") +
        "function - never_called\t0\n"
        "file - " + box + "\n"
        "function - Box<int>::Box()\t2\n" + Txt(1, 2, 5, "2") + Txt(1, 3, 9, "0") +
        "function - Box<int>::Box()\t0\n" + Txt(1, 2, 5, "0") + Txt(1, 3, 9, "0") +
        "file - " + lost + "\n"
        "file - " + noline + "\n"
        "function - noline\t5\n" + Txt(1, 1, 1, "2") + Txt(2, 1, 1, "5");
    const std::string xml =
        "<PROJECT name=\"demo&lt;&amp;&gt;\">\n"
        "<MODULE name = \"" + app + "\">\n"
        "<FUNCTION name=\"after\" freq=\"3\">\n" + Block(29, 1, {"3"}) + "</FUNCTION>\n"
        "<FUNCTION name=\"helper\" freq=\"3\">\n" + Block(3, 1, {"3"}) + Block(5, 9, {"1"}) + Block(6, 5, {"2"}) +
        "</FUNCTION>\n"
        "<FUNCTION name=\"main\" freq=\"3\">\n" + Block(15, 1, {"3"}) + Block(16, 13, {"3"}) + Block(21, 5, {"3"}) +
        "</FUNCTION>\n"
        "<FUNCTION name=\"never_called\" freq=\"0\" line=\"9\"></FUNCTION>\n"
        "</MODULE>\n"
        "<MODULE name = \"" + box + "\">\n"
        "<FUNCTION name=\"Box&lt;int&gt;::Box()\" freq=\"2\">\n" + Block(2, 5, {"2"}) + Block(3, 9, {"0"}) +
        "</FUNCTION>\n"
        "<FUNCTION name=\"Box&lt;int&gt;::Box()\" freq=\"0\">\n" + Block(2, 5, {"0"}) + Block(3, 9, {"0"}) +
        "</FUNCTION>\n"
        "</MODULE>\n"
        "<MODULE name = \"" + lost + "\">\n"
        "<MODULE name = \"" + noline + "\">\n"
        "<FUNCTION name=\"noline\" freq=\"5\">\n" + Block(1, 1, {"2", "5"}) + "</FUNCTION>\n"
        "</MODULE>\n"
        "</PROJECT>\n";
    std::map<std::string, std::string> outputs = scenario.outputs();
    EXPECT_EQ(outputs.size(), 2u);  // no report directory, no page
    ExpectSameBytes("full.txt", txt, outputs["full.txt"]);
    ExpectSameBytes("full.xml", xml, outputs["full.xml"]);

    // -nopartial changes coverage numbers, never the counts in the files.
    RunResult again = RunVemcov(scenario, Args({"-nohtml", "-nopmeter", "-nopartial", "-prj", "demo<&>",
                                                "-txtbcvrgfull", "full.txt", "-xmlbcvrgfull", "full.xml"},
                                               MARKERS));
    EXPECT_EQ(again.status, 0);
    ExpectSameBytes("stdout without meter", "\nWarning - File " + lost + " not found!\n", again.out);
    outputs = scenario.outputs();
    ExpectSameBytes("full.txt with -nopartial", txt, outputs["full.txt"]);
    ExpectSameBytes("full.xml with -nopartial", xml, outputs["full.xml"]);

    // Without markers every block is feasible and debug_dump is back.
    RunResult plain = scenario.run({"-nohtml", "-nopmeter", "-txtbcvrgfull", "plain.txt"});
    EXPECT_EQ(plain.status, 0);
    const std::string plainApp =
        "file - " + app + "\n"
        "function - after\t3\n" + Txt(1, 29, 1, "3") +
        "function - debug_dump\t1\n" + Txt(1, 25, 1, "1") +
        "function - helper\t3\n" + Txt(1, 3, 1, "3") + Txt(1, 5, 9, "1") + Txt(1, 6, 5, "2") +
        "function - main\t3\n" + Txt(1, 15, 1, "3") + Txt(1, 16, 13, "3") + Txt(1, 18, 5, "0") +
        Txt(1, 19, 9, "0") + Txt(1, 21, 5, "3") +
        "function - never_called\t0\n";
    std::string plainTxt = scenario.outputs()["plain.txt"];
    ExpectSameBytes("plain.txt", plainApp, plainTxt.substr(0, plainApp.size()));
    EXPECT_EQ(plainTxt.substr(plainApp.size()), txt.substr(txt.find("file - " + box)));
}

TEST(FullBlockFiles, DifferentialRunKeepsCountsAsRead)
{
    Scenario scenario;
    scenario.write("src/calc.c", "int add(int a, int b)\n{\n    return a + b;\n}\n"
                                 "int sub(int a, int b)\n{\n    return a - b;\n}\n"
                                 "int mul(int a, int b)\n{\n    return a * b;\n}\n"
                                 "int dvd(int a, int b)\n{\n    return a / b;\n}\n");
    std::string calc = scenario.path("src/calc.c");
    Project current;
    current.Add(calc, "add", 1).Blocks({{4, 2, 1}, {4, 3, 5}});
    current.Add(calc, "sub", 5).Blocks({{2, 6, 1}, {2, 7, 5}});
    current.Add(calc, "mul", 9).Blocks({{1, 10, 1}, {0, 11, 5}});
    current.Add(calc, "dvd", 13).Blocks({{0, 14, 1}}).OnlyInSpi();
    WriteProfiles(scenario, current);
    Project reference;
    reference.Add(calc, "add", 1).Blocks({{9, 2, 1}, {9, 3, 5}});
    reference.Add(calc, "sub", 5).Blocks({{0, 6, 1}, {0, 7, 5}});
    reference.Add(calc, "dvd", 13).Blocks({{0, 14, 1}});
    scenario.write("ref.dpi", testsupport::DpiBytes(reference));

    RunResult run = RunVemcov(scenario, {"-nohtml", "-nopmeter", "-nopartial", "-ref", "ref.dpi",
                                         "-txtbcvrgfull", "diff.txt", "-xmlbcvrgfull", "diff.xml"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "");
    ExpectSameBytes("stderr", "WARNING: option -ref overrides option -nopartial.\n" + BANNER, run.err);
    // Every function with a segment is written with the counts of the
    // current profile; a function without one is not written at all.
    ExpectSameBytes("diff.txt",
                    "file - " + calc + "\n"
                    "function - add\t4\n" + Txt(1, 2, 1, "4") + Txt(1, 3, 5, "4") +
                    "function - mul\t1\n" + Txt(1, 10, 1, "1") + Txt(1, 11, 5, "0") +
                    "function - sub\t2\n" + Txt(1, 6, 1, "2") + Txt(1, 7, 5, "2"),
                    scenario.outputs()["diff.txt"]);
    ExpectSameBytes("diff.xml",
                    "<PROJECT name=\"(null)\">\n"
                    "<MODULE name = \"" + calc + "\">\n"
                    "<FUNCTION name=\"add\" freq=\"4\">\n" + Block(2, 1, {"4"}) + Block(3, 5, {"4"}) + "</FUNCTION>\n"
                    "<FUNCTION name=\"mul\" freq=\"1\">\n" + Block(10, 1, {"1"}) + Block(11, 5, {"0"}) + "</FUNCTION>\n"
                    "<FUNCTION name=\"sub\" freq=\"2\">\n" + Block(6, 1, {"2"}) + Block(7, 5, {"2"}) + "</FUNCTION>\n"
                    "</MODULE>\n"
                    "</PROJECT>\n",
                    scenario.outputs()["diff.xml"]);
}

TEST(FullBlockFiles, UnusualSourcesAreReadAsText)
{
    Scenario scenario;
    // Empty: every position lies beyond its last line.
    scenario.write("src/empty.c", "");
    // Binary: the marker scan stops at the first zero byte.
    scenario.write("src/binary.c", std::string("\x7f" "ELF") + '\0' + " /* NF */\n\xff\xfe\x80\n/* NF */\n");
    // A megabyte on the first line, with a marker at its end.
    scenario.write("src/huge.c", std::string(1 << 20, ' ') + "/* NF */\nint f(void) { return 0; }\n");
    Project p;
    p.Add(scenario.path("src/binary.c"), "b", 1).Blocks({{1, 1, 1}, {2, 2, 1}, {3, 3, 1}});
    p.Add(scenario.path("src/empty.c"), "e", 1).Blocks({{1, 1, 1}, {0, 5, 1}});
    p.Add(scenario.path("src/huge.c"), "f", 2).Blocks({{1, 1, 1048577}, {1, 2, 1}});
    WriteProfiles(scenario, p);

    RunResult run = RunVemcov(scenario, {"-nohtml", "-nopmeter", "-onelinedsbl", "NF", "-txtbcvrgfull", "odd.txt"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, BANNER);
    ExpectSameBytes("odd.txt",
                    "file - " + scenario.path("src/binary.c") + "\n"
                    "function - b\t1\n" + Txt(1, 1, 1, "1") + Txt(1, 2, 1, "2") + Txt(1, 3, 1, "3") +
                    "file - " + scenario.path("src/empty.c") + "\n"
                    "function - e\t1\n" + Txt(1, 1, 1, "1") + Txt(1, 5, 1, "0") +
                    "file - " + scenario.path("src/huge.c") + "\n"
                    "function - f\t1\n" + Txt(1, 2, 1, "1"),
                    scenario.outputs()["odd.txt"]);
}

TEST(FullBlockFiles, ProfileWithoutRunsIsCorrupt)
{
    Scenario scenario;
    scenario.write("a.c", "int a;\n");
    Project p;
    p.runs = 0;
    p.Add(scenario.path("a.c"), "a", 1).Blocks({{0, 1, 1}});
    WriteProfiles(scenario, p);
    RunResult run = RunVemcov(scenario, {"-nohtml", "-txtbcvrgfull", "z.txt"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    ExpectSameBytes("stderr", BANNER + "Read in 0 runs for .dpi file - .dpi File corrupt!\n", run.err);
    // The module's heading was written before the check.
    ExpectSameBytes("z.txt", "file - " + scenario.path("a.c") + "\n", scenario.outputs()["z.txt"]);
}
