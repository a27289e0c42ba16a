// The importer's rules on small hand-written exports: where llvm's regions
// land, how copies of a function fold, how gcov's lines are shared out, and
// what reaches the profiles.
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <simdjson.h>

#include "import/gcov_json.h"
#include "import/import_model.h"
#include "import/llvm_export.h"
#include "import/profile_output.h"

namespace {

using vemcov_import::ImportedBlock;
using vemcov_import::ImportedFunction;

std::string Export(const std::string &functions)
{
    return R"({"data":[{"files":[{"filename":"/src/a.c","segments":[[1,1,5,true,true,false]]}],"functions":[)" +
           functions + R"(],"totals":{}}],"type":"llvm.coverage.json.export","version":"2.0.1"})";
}

std::vector<ImportedFunction> ReadExport(const std::string &json, std::string *error = nullptr)
{
    simdjson::padded_string text(json);
    std::vector<ImportedFunction> copies;
    std::string message;
    bool read = vemcov_import::readLlvmExport(text, "export.json", "/work", copies, message);
    if (error != nullptr)
        *error = read ? "" : message;
    else
        EXPECT_TRUE(read) << message;
    return copies;
}

std::string Positions(const ImportedFunction &f)
{
    std::string text;
    for (const ImportedBlock &b : f.blocks)
        text += std::to_string(b.line) + ":" + std::to_string(b.col) + "-" + std::to_string(b.end_line) + ":" +
                std::to_string(b.end_col) + "=" + std::to_string(b.count) + " ";
    return text;
}

// Code regions become blocks in order; a region of a macro expansion (file
// id 1, expanded at 3:5-3:12, itself inside an expansion at 4:1) lands on the
// outermost call site; gap, skipped and expansion regions are no blocks.
TEST(ImportLlvm, CodeRegionsBecomeBlocksAtTheirPlaceInTheFunctionsFile)
{
    std::vector<ImportedFunction> copies = ReadExport(Export(R"(
        {"name":"a.c:helper","count":5,"filenames":["lib/a.c","/inc/m.h","/inc/n.h"],"branches":[[2,1,2,4,1,1,0,0,4]],
         "regions":[[1,1,10,2,5,0,0,0],[2,3,2,9,0,0,0,3],[3,5,3,12,5,0,1,1],[20,1,20,30,4,1,0,0],
                    [21,1,21,9,4,1,2,1],[30,2,30,8,0,2,0,0],[6,1,7,1,0,0,0,2]]})"));
    ASSERT_EQ(1u, copies.size());
    const ImportedFunction &f = copies[0];
    EXPECT_EQ("/work/lib/a.c", f.file);
    EXPECT_EQ("helper", f.name);
    EXPECT_TRUE(f.is_static);
    EXPECT_EQ(1u, f.line);
    EXPECT_EQ(1u, f.col);
    EXPECT_EQ(5u, f.executions);
    EXPECT_EQ("1:1-10:2=5 3:5-3:12=4 3:5-3:12=0 ", Positions(f));
}

TEST(ImportLlvm, StaticPrefixesAreRemovedFromNamesOnly)
{
    struct Case {
        std::string name, plain;
        bool removed;
    } cases[] = {
        {"src/a.cpp:_ZL3foov", "_ZL3foov", true}, {"a.c;helper", "helper", true},
        {"_Z3barv", "_Z3barv", false},           {"-[Foo bar:]", "-[Foo bar:]", false},
        {":x", ":x", false},                     {"x:", "x:", false},
    };
    for (const Case &c : cases) {
        std::string name = c.name;
        EXPECT_EQ(c.removed, vemcov_import::removeStaticPrefix(name)) << c.name;
        EXPECT_EQ(c.plain, name) << c.name;
    }
}

TEST(ImportLlvm, MalformedExportsAreRefusedWithThePlace)
{
    struct Case {
        std::string json, message;
    } cases[] = {
        {Export(R"({"name":"f","count":1,"filenames":["a.c"],"regions":[[1,1,2]]})"),
         "export.json, line 1, column 155: a region has fewer than 8 numbers"},
        {Export(R"({"name":"f","count":-1,"filenames":["a.c"],"regions":[]})"),
         "export.json, line 1, column 115: malformed JSON (The JSON element does not have the requested type.)"},
        {R"({"data":[],"type":"something else","version":"2.0.1"})",
         "export.json, at the end: not an llvm-cov export (its \"type\" is not \"llvm.coverage.json.export\")"},
        {R"({"data":[],"type":"llvm.coverage.json.export","version":"3.0.0"})",
         "export.json, at the end: export format version 3.0.0 is not 2.x"},
        {"", "export.json, at the start: malformed JSON (Empty: no JSON found)"},
    };
    for (const Case &c : cases) {
        std::string error;
        ReadExport(c.json, &error);
        EXPECT_EQ(c.message, error) << c.json;
    }
}

ImportedFunction Copy(const std::string &name, uint64_t executions, std::vector<ImportedBlock> blocks,
                      uint32_t line = 10)
{
    ImportedFunction f;
    f.file = "/src/t.h";
    f.name = name;
    f.line = line;
    f.col = 1;
    f.executions = executions;
    f.blocks = std::move(blocks);
    return f;
}

// Template instantiations (same file and start) fold into the copy with the
// most covered blocks, the first of equals; the function was entered as
// often as all copies together.
TEST(ImportModel, CopiesFoldIntoTheMostCoveredOne)
{
    std::vector<ImportedFunction> copies = {
        Copy("_Z1fIiEvv", 0, {{0, 10, 1}, {0, 11, 3}}),
        Copy("_Z1fIdEvv", 2, {{2, 10, 1}, {0, 11, 3}}),
        Copy("_Z1gv", 1, {{1, 20, 1}}, 20),
        Copy("_Z1fIcEvv", 3, {{3, 10, 1}, {1, 11, 3}}),
        Copy("_Z1fIlEvv", 1, {{1, 10, 1}, {1, 11, 3}}),
    };
    auto groups = vemcov_import::groupCopies(copies);
    ASSERT_EQ(2u, groups.size());
    EXPECT_EQ(4u, groups[0].size());
    ImportedFunction f = vemcov_import::keepBestCopy(groups[0]);
    EXPECT_EQ("_Z1fIcEvv", f.name);
    EXPECT_EQ(6u, f.executions);
    EXPECT_EQ("10:1-0:0=3 11:3-0:0=1 ", Positions(f));
}

// gcov's copies of a function add up line by line; a line listed by a
// function and by a lambda inside it belongs to the lambda; lines gcov put
// outside every function join the function of their file that starts
// before them (else the file's first function, whose entry line stays its
// first block).
TEST(ImportGcov, LinesAreSummedAndEachLineHasOneFunction)
{
    std::vector<ImportedFunction> copies = {
        Copy("_Z1fv", 1, {{1, 10, 0}, {0, 12, 0}}),
        Copy("_Z1fv", 2, {{2, 10, 0}, {5, 11, 0}}),
    };
    auto groups = vemcov_import::groupCopies(copies);
    ASSERT_EQ(1u, groups.size());
    std::vector<ImportedFunction> functions = {vemcov_import::sumLineCopies(groups[0])};
    EXPECT_EQ(3u, functions[0].executions);
    EXPECT_EQ("10:0-0:0=3 11:0-0:0=5 12:0-0:0=0 ", Positions(functions[0]));

    ImportedFunction lambda = Copy("_ZZ1fvENKUlvE_clEv", 4, {{4, 11, 0}}, 11);
    lambda.col = 20;
    functions.push_back(lambda);
    ImportedFunction orphans = Copy("", 0, {{7, 30, 0}, {1, 5, 0}});
    ImportedFunction elsewhere = Copy("", 0, {{1, 3, 0}});
    elsewhere.file = "/src/other.h";
    EXPECT_EQ(1u, vemcov_import::adoptOrphanLines(functions, {orphans, elsewhere}));
    vemcov_import::giveEachLineOneFunction(functions);
    EXPECT_EQ("10:0-0:0=3 5:0-0:0=1 12:0-0:0=0 ", Positions(functions[0]));
    EXPECT_EQ("11:0-0:0=4 30:0-0:0=7 ", Positions(functions[1]));
}

// What the profiles get: a static-profile line for every function, a
// segment only for those entered, and packed positions held at the
// format's limits.
TEST(ImportOutput, OnlyEnteredFunctionsGetSegmentsAndPositionsFitThePackedForm)
{
    std::vector<ImportedFunction> functions = {
        Copy("_Z1fv", 0, {{0, 10, 1, 12, 2}}),
        Copy("_Z1gv", 2, {{2, 20, 1500, 5000000, 2000}}, 20),
    };
    functions[1].is_static = true;
    vemtra_writer::Project project = vemcov_import::describeProfiles(functions, 3, true);
    ASSERT_EQ(2u, project.functions.size());
    EXPECT_EQ(3u, project.runs);
    EXPECT_FALSE(project.functions[0].in_dpi);
    EXPECT_EQ(1, project.functions[0].block_count);
    EXPECT_EQ('E', project.functions[0].linkage);
    const vemtra_writer::FunctionSpec &g = project.functions[1];
    EXPECT_TRUE(g.in_dpi);
    EXPECT_EQ('s', g.linkage);
    ASSERT_EQ(1u, g.blocks.size());
    EXPECT_EQ(1023u, g.blocks[0].col);
    EXPECT_EQ(4194303u, g.blocks[0].end_line);
    EXPECT_EQ(1023u, g.blocks[0].end_col);
    vemcov_import::ImportTotals totals = vemcov_import::countTotals(functions);
    EXPECT_EQ(1u, totals.files);
    EXPECT_EQ(1u, totals.functions_entered);
    EXPECT_EQ(2u, totals.blocks);
    EXPECT_EQ(1u, totals.blocks_covered);
}

}  // namespace
