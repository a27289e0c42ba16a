// Component list file: reading patterns and markers, every message with its
// status, module selection, and the marker clash check.
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "driver/component_file.h"
#include "driver/settings.h"
#include "tests/support/capture.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scratch_dir.h"

using testsupport::CaptureInChild;
using testsupport::Captured;
using Strings = std::vector<std::string>;

namespace {

class ComponentFile : public testing::Test {
protected:
    void SetUp() override
    {
        moduleName.clear();
        one_line_disable.clear();
        start_disable_block.clear();
        end_disable_block.clear();
        Infeasible_markers_specified = 0;
    }

    // Writes a component file and returns its path.
    std::string File(const std::string &bytes, const std::string &name = "comp.txt")
    {
        testsupport::WriteBytes(dir_.path(name), bytes);
        return dir_.path(name);
    }

    testsupport::ScratchDir dir_;
};

TEST_F(ComponentFile, PatternsAndMarkersAreFiled)
{
    std::string path = File("src/io\n"
                            "ONE_LINE_NOTFEASIBLE: \"NOTREACHED\" trailing words\n"
                            "BEGIN_NOTFEASIBLE: \"BEGIN DEAD\"\n"
                            "  lib with blanks  \n"
                            "END_NOTFEASIBLE: \"END DEAD\"\n"
                            "\n"
                            "~test");
    one_line_disable.push_back("FROM OPTION");
    EXPECT_EQ(getModuleNames(path.c_str()), 0);
    EXPECT_EQ(moduleName, (Strings{"src/io", "  lib with blanks  ", "", "~test"}));
    EXPECT_EQ(one_line_disable, (Strings{"FROM OPTION", "NOTREACHED"}));
    EXPECT_EQ(start_disable_block, Strings{"BEGIN DEAD"});
    EXPECT_EQ(end_disable_block, Strings{"END DEAD"});
    EXPECT_EQ(Infeasible_markers_specified, 1);
}

TEST_F(ComponentFile, KeywordRulesAndValueOffset)
{
    // The first keyword in test order wins; the value is searched from the
    // keyword's length (21 here) counted from the line's start, so a quote
    // before that offset is passed over and one after it, before a late
    // keyword, is taken.
    std::string path = File("END_NOTFEASIBLE: ONE_LINE_NOTFEASIBLE: \"x\"\n"
                            "\"skip\"               \"early\" ONE_LINE_NOTFEASIBLE: \"late\"\n"
                            "BEGIN_NOTFEASIBLE:\"a\"\"b\"\n"
                            "END_NOTFEASIBLE:\"c\"\n");
    getModuleNames(path.c_str());
    EXPECT_EQ(one_line_disable, (Strings{"x", "early"}));
    EXPECT_EQ(start_disable_block, Strings{"a"});
    EXPECT_EQ(end_disable_block, Strings{"c"});
    EXPECT_TRUE(moduleName.empty());
}

TEST_F(ComponentFile, LinesAreKeptAsWritten)
{
    // A carriage return stays in a pattern but not in a quoted marker; an
    // over-long line is read in pieces of 4095 characters.
    std::string exact(4095, 'a');
    std::string path = File("src/a.c\r\nONE_LINE_NOTFEASIBLE: \"skip\"\r\n" + exact + "\n" + std::string(4095, 'b') +
                            "tail\nlast");
    getModuleNames(path.c_str());
    EXPECT_EQ(moduleName, (Strings{"src/a.c\r", exact, std::string(4095, 'b'), "tail", "last"}));
    EXPECT_EQ(one_line_disable, Strings{"skip"});
    EXPECT_EQ(isInComponents("/home/u/src/a.c"), 0);
    EXPECT_EQ(isInComponents("/home/u/src/a.c\r"), 1);
}

TEST_F(ComponentFile, SelectionByInclusionAndExclusion)
{
    EXPECT_EQ(isInComponents("/any/file.c"), 1) << "no patterns: every module";

    for (const Strings &order : {Strings{"/proj/lib/", "~test"}, Strings{"~test", "/proj/lib/"}}) {
        moduleName = order;
        EXPECT_EQ(isInComponents("/proj/lib/io.c"), 1);
        EXPECT_EQ(isInComponents("/proj/lib/io_test.c"), 0);
        EXPECT_EQ(isInComponents("/proj/app/main.c"), 0);
        EXPECT_EQ(isInComponents("/proj/LIB/io.c"), 0) << "matching is case-sensitive";
    }

    moduleName = {"~gen", "~test"};
    EXPECT_EQ(isInComponents("/proj/lib/io.c"), 0) << "exclusions alone select nothing";

    moduleName = {""};
    EXPECT_EQ(isInComponents("/proj/lib/io.c"), 1) << "an empty line matches every name";

    moduleName = {"~"};
    EXPECT_EQ(isInComponents("/proj/lib/io.c"), 0);
}

TEST_F(ComponentFile, ContentMayComeFromTheCommandLine)
{
    // An empty file is fine when an option gave a marker; end markers of the
    // options satisfy start markers of the file.
    one_line_disable.push_back("opt");
    EXPECT_EQ(getModuleNames(File("").c_str()), 0);
    EXPECT_EQ(isInComponents("/x/y.c"), 1) << "a file without patterns selects every module";

    one_line_disable.clear();
    end_disable_block.push_back("opt end");
    EXPECT_EQ(getModuleNames(File("BEGIN_NOTFEASIBLE: \"b\"\n", "b.txt").c_str()), 0);
    EXPECT_EQ(getModuleNames(nullptr), 0);
}

TEST_F(ComponentFile, ReadErrorsEndTheRun)
{
    struct Case {
        const char *bytes;
        const char *message;  // %s is the file's path
    };
    const Case cases[] = {
        {"ONE_LINE_NOTFEASIBLE: no quotes\n", "ERROR: File %s does not contain quotas for ONE_LINE_NOTFEASIBLE\n"},
        {"BEGIN_NOTFEASIBLE: \"half\nEND_NOTFEASIBLE: \"e\"\n",
         "ERROR: File %s does not contain quotas for BEGIN_NOTFEASIBLE\n"},
        {"a.c\nEND_NOTFEASIBLE:", "ERROR: File %s does not contain quotas for END_NOTFEASIBLE\n"},
        {"ONE_LINE_NOTFEASIBLE: \"\"\n", "ERROR: you specified empty marker for infeasible\n"},
        {"", "ERROR: File %s does not contain any component information\n"},
        {"a.c\nBEGIN_NOTFEASIBLE: \"b\"\n",
         "ERROR: Component file %s specifies start block marker but not does not specify end block marker\n"},
        {"END_NOTFEASIBLE: \"e\"\n",
         "ERROR: Component file %s specifies end block marker but not does not specify start block marker\n"},
    };
    for (const Case &c : cases) {
        std::string path = File(c.bytes);
        Captured run = CaptureInChild([&] { getModuleNames(path.c_str()); });
        char expected[512];
        snprintf(expected, sizeof expected, c.message, path.c_str());
        EXPECT_EQ(run.status, 1) << c.bytes;
        EXPECT_EQ(run.err, expected) << c.bytes;
        EXPECT_EQ(run.out, "");
    }

    std::string missing = dir_.path("missing.txt");
    Captured run = CaptureInChild([&] { getModuleNames(missing.c_str()); });
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "ERROR: Couldn't open the component file " + missing + "\n");
}

TEST_F(ComponentFile, MarkerClashes)
{
    EXPECT_EQ(check_NFmarkers_intersect(), 0);

    struct Case {
        Strings one_line, start, end;
        const char *message;
    };
    const Case cases[] = {
        {{"A", "B"}, {"B"}, {"A"},
         "ERROR: same comment A specified for one-line infiseable and end infeasible block\n"},
        {{"B", "A"}, {"B"}, {"A"},
         "ERROR: same comment B specified for one-line infiseable and start infeasible block\n"},
        {{"X"}, {"S", "E"}, {"E"},
         "ERROR: same comment E specified for end infiseable block and start infeasible block\n"},
        {{"X"}, {"S"}, {"E"}, ""},
        {{"X", "X"}, {}, {}, ""},
    };
    for (const Case &c : cases) {
        one_line_disable = c.one_line;
        start_disable_block = c.start;
        end_disable_block = c.end;
        Captured run = CaptureInChild([&] { printf("%d", check_NFmarkers_intersect()); });
        EXPECT_EQ(run.out, c.message[0] != '\0' ? "1" : "0");
        EXPECT_EQ(run.err, c.message);
    }
}

}  // namespace
