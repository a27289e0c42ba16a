// Block and function coverage: order_func, and markBlocks over
// profiles made by the test profile writer. Each markBlocks case runs the
// driver's module loop in a child, because the analysis works on
// process-wide state, and prints per module the result, the percentages,
// the function tables and the store's positions, then the file list and the
// run totals; the expected prints are under tests/unit/expected/.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/comment_parser.h"
#include "analysis/coverage.h"
#include "analysis/coverage_state.h"
#include "driver/run_state.h"
#include "driver/settings.h"
#include "analysis/coverage_store.h"
#include "shared/vemtra/client/dpi_file.h"
#include "tests/support/capture.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"
#include "tests/support/scratch_dir.h"

using testsupport::Project;

namespace {

// Entries with these lines, in list order, chained by order_func; a line
// of 0 starts another module. The result is the chain as indexes.
std::vector<int> ChainOf(const std::vector<int> &lines)
{
    static char file[] = "m.c", other[] = "n.c";
    std::vector<COMP> comps(lines.size());
    for (size_t i = 0; i < lines.size(); ++i) {
        comps[i].line = lines[i];
        comps[i].fileName = i > 0 && (lines[i] == 0 || comps[i - 1].fileName == other) ? other : file;
        comps[i].next = i + 1 < lines.size() ? &comps[i + 1] : nullptr;
    }
    order_func(&comps[0]);
    std::vector<int> order;
    for (const COMP *c = first_func_line; c != nullptr && order.size() <= comps.size(); c = c->next_by_line) {
        order.push_back(static_cast<int>(c - comps.data()));
        EXPECT_EQ(c->first_by_line, first_func_line);
    }
    first_func_line = nullptr;
    return order;
}

struct Entry {
    std::string file;
    std::string name;   // display name; empty for none
    std::string proc;   // profile name
    int line;
    unsigned blockCount;
    int dup = 0;
};

struct Case {
    testsupport::ScratchDir dir;
    std::vector<std::pair<std::string, std::string>> sources;  // relative path, text
    Project profile;
    Project *reference = nullptr;
    std::vector<Entry> entries;  // adjacent per file
    std::vector<std::string> oneLine, begin, end;
    bool noPartial = false;
};

void PrintModule(const char *file, bool result)
{
    printf("%s: %s fc=%.4f bc=%.4f\n  covered:", file, result ? "true" : "false", functionCoverage, blockCoverage);
    for (int i = 0; i < numFileFuncsCovered; ++i)
        printf(" %s@%u %u/%u %.2f", fileFuncsCovered[i]->name, fileFuncsCovered[i]->line,
               fileFuncsCovered[i]->covered, fileFuncsCovered[i]->blocks, fileFuncsCovered[i]->percent);
    printf("\n  uncovered:");
    for (int i = 0; i < numFileFuncsUncovered; ++i)
        printf(" %s@%u %u/%u", fileFuncsUncovered[i]->name, fileFuncsUncovered[i]->line,
               fileFuncsUncovered[i]->covered, fileFuncsUncovered[i]->blocks);
    printf("\n  positions:");
    const file_list_node *table = g_cl.currentFile;
    for (uint32_t l = 0; table->lineTable != nullptr && l <= table->lineSlots; ++l)
        for (const block_list_node *n = table->lineTable[l]; n != nullptr; n = n->next) {
            printf(" %u:%u=", n->line, n->column);
            if (n->count == NEVER_EXECUTED)
                printf("never");
            else
                printf("%llu", (unsigned long long)n->count);
            printf("(%u/%u/%u%s)", n->numBlocks, n->numExecuted, n->numUnexecuted, n->newFunction ? "N" : "");
        }
    printf("\n");
}

// Runs the driver's module loop over the case and compares everything it
// printed, the case directory left out of paths, with the expected file.
void ExpectCase(Case &c, const std::string &expected)
{
    for (auto &source : c.sources)
        ASSERT_TRUE(testsupport::WriteBytes(c.dir.path(source.first), source.second));
    ASSERT_TRUE(testsupport::WriteBytes(c.dir.path("vemtra.dpi"), testsupport::DpiBytes(c.profile)));
    if (c.reference != nullptr) {
        ASSERT_TRUE(testsupport::WriteBytes(c.dir.path("ref.dpi"), testsupport::DpiBytes(*c.reference)));
    }

    testsupport::Captured run = testsupport::CaptureInChild([&c] {
        std::string dpiName = c.dir.path("vemtra.dpi"), refName = c.dir.path("ref.dpi");
        g_lpszDPIFileName = const_cast<char *>(dpiName.c_str());
        pgofDPIFile = VEMTRA_Open_Dpi_File(dpiName.c_str());
        if (c.reference != nullptr) {
            compWithRef = 1;
            g_lpszRefDPIFileName = const_cast<char *>(refName.c_str());
            pgofRefDPIFile = VEMTRA_Open_Dpi_File(refName.c_str());
        }
        g_bNoPartial = c.noPartial;

        std::vector<COMP> comps(c.entries.size());
        std::vector<std::string> files(c.entries.size());
        for (size_t i = 0; i < c.entries.size(); ++i) {
            const Entry &e = c.entries[i];
            files[i] = c.dir.path(e.file);
            comps[i].next = i + 1 < comps.size() ? &comps[i + 1] : nullptr;
            comps[i].line = e.line;
            comps[i].block_count = e.blockCount;
            comps[i].dup_name = e.dup;
            comps[i].fileName = const_cast<char *>(files[i].c_str());
            comps[i].name = e.name.empty() ? nullptr : const_cast<char *>(e.name.c_str());
            comps[i].procName = const_cast<char *>(e.proc.c_str());
        }
        for (COMP *r = &comps[0]; r != nullptr;) {
            order_func(r);
            pars = new parser(r->fileName, c.oneLine, c.begin, c.end);
            PrintModule(r->fileName, markBlocks(r));
            delete pars;
            g_cl.deleteCurrentFile();
            releaseModuleTables();
            const char *module = r->fileName;
            while (r != nullptr && strcmp(r->fileName, module) == 0)
                r = r->next;
        }
        for (const COMP &comp : comps)
            if (comp.not_in_reference)
                printf("not in reference: %s\n", comp.procName);
        for (const filename_list_node *f = g_cl.fileListHead; f != nullptr; f = f->next)
            printf("file %s flags=%u funcs=%u/%u %.4f blocks=%u/%u %.4f\n", f->path, f->fileFlags, f->coveredFuncs,
                   f->totalFuncs, f->funcPercent, f->coveredBlocks, f->totalBlocks, f->blockPercent);
        printf("totals files=%u/%u procs=%u/%u blocks=%u/%u\n", totalNumberOfFilesCovered, totalNumberOfFiles,
               totalNumberOfProcsCovered, totalNumberOfProcs, totalNumberOfBlocksCovered, totalNumberOfBlocks);
        fflush(stdout);
    });
    std::string printed = "status " + std::to_string(run.status) + "\n" + run.out + "-- standard error\n" + run.err;
    std::string prefix = c.dir.path() + "/";
    for (size_t at; (at = printed.find(prefix)) != std::string::npos;)
        printed.erase(at, prefix.size());
    testsupport::ExpectSameAsFile(expected, printed);
}

std::string Lines(int n)
{
    std::string text;
    for (int i = 1; i <= n; ++i)
        text += "line " + std::to_string(i) + "\n";
    return text;
}

}  // namespace

TEST(Coverage, OrderFuncChainsByLineWithTheSpecifiedOrderAmongEquals)
{
    // Appended after the tail, prepended before the head, otherwise inserted
    // after the head before the first entry whose line is not smaller.
    EXPECT_EQ(ChainOf({20, 5, 30, 10, 25, 1}), (std::vector<int>{5, 1, 3, 0, 4, 2}));
    // Equal lines: joining the head's group goes right after the head,
    // joining another group (the tail's too) goes before its members.
    EXPECT_EQ(ChainOf({5, 5, 9, 5, 9, 9, 2, 5}), (std::vector<int>{6, 7, 0, 3, 1, 5, 4, 2}));
    // Only the module of `first` is chained.
    EXPECT_EQ(ChainOf({3, 1, 0, 2}), (std::vector<int>{1, 0}));
}

// a.c: covered, partly run and never-called functions. gone.c: a missing
// source, refused before any counting. m.c: blocks on a marked line, at line
// 0 and at column 0, a segment larger than the static count, a function
// without line information, one starting on a marked line, and entries
// without a name, generated or at line 0. t.h: instances of one function,
// the executed one superseding the others wherever they stand in the
// uncovered table.
TEST(Coverage, NormalMode)
{
    Case c;
    std::string m = Lines(40);
    m.replace(m.find("line 6\n"), 7, "x; // NF\n");
    m.replace(m.find("line 30\n"), 8, "int skipped() { // NF\n");
    c.sources = {{"a.c", Lines(30)}, {"m.c", m}, {"t.h", Lines(20)}};
    c.oneLine = {"NF"};
    c.profile.runs = 2;
    std::string a = c.dir.path("a.c"), t = c.dir.path("t.h"), mc = c.dir.path("m.c");
    c.profile.Add(a, "main", 10).Blocks({{4, 10, 1}, {0, 11, 5}, {6, 12, 3}, {0, 12, 3}});
    c.profile.Add(a, "ran_nothing", 20).Blocks({{0, 20, 1}, {0, 21, 2}});
    c.profile.Add(c.dir.path("gone.c"), "g", 1).Blocks({{1, 1, 1}});
    c.profile.Add(mc, "f", 5).Blocks({{3, 5, 1}, {2, 6, 4}, {1, 0, 0}, {7, 7, 0}, {0, 8, 2}});
    c.profile.Add(mc, "noinfo", 12).Blocks({{5, 0, 0}, {0, 0, 0}}).line_info = testsupport::LineInfo::None;
    c.profile.Add(mc, "skipped", 30).Blocks({{9, 30, 1}});
    for (auto [proc, line] : std::vector<std::pair<const char *, uint32_t>>{
             {"maxIi", 4}, {"maxIc", 4}, {"minIi", 9}, {"minIl", 9}, {"solo", 15}, {"tiny", 17}})
        c.profile.Add(t, proc, line).Blocks({{0, line, 1}, {0, line + 1, 3}});
    c.profile.Add(t, "maxIl", 4).Blocks({{2, 4, 1}, {0, 5, 3}});
    c.entries = {{"a.c", "main", "main", 10, 4},
                 {"a.c", "never", "never", 25, 3},
                 {"a.c", "ran_nothing", "ran_nothing", 20, 2},
                 {"gone.c", "g", "g", 1, 1},
                 {"m.c", "f", "f", 5, 4},
                 {"m.c", "noinfo", "noinfo", 12, 2},
                 {"m.c", "skipped", "skipped", 30, 1},
                 {"m.c", "___sti__init", "init", 3, 9},
                 {"m.c", "", "anonymous", 4, 9},
                 {"m.c", "zero_line", "zero_line", 0, 9},
                 {"t.h", "max", "maxIi", 4, 2, 1},
                 {"t.h", "solo", "solo", 15, 2},
                 {"t.h", "tiny", "tiny", 17, 2},
                 {"t.h", "max", "maxIl", 4, 2, 1},
                 {"t.h", "max", "maxIc", 4, 2, 1},
                 {"t.h", "min", "minIi", 9, 2, 1},
                 {"t.h", "min", "minIl", 9, 2, 1}};
    ExpectCase(c, "coverage_normal_mode.txt");
}

// Without partial coverage the unexecuted blocks at a position where one
// ran count as covered.
TEST(Coverage, NoPartial)
{
    Case c;
    c.sources = {{"p.c", Lines(10)}};
    c.profile.Add(c.dir.path("p.c"), "f", 2).Blocks({{0, 3, 2}, {0, 3, 2}, {5, 3, 2}, {0, 3, 2}, {0, 4, 1}});
    c.entries = {{"p.c", "f", "f", 2, 5}};
    c.noPartial = true;
    ExpectCase(c, "coverage_no_partial.txt");
}

// Only blocks the reference never ran count; functions new to it are the
// uncovered table; a module without newly covered blocks is refused; file
// flags 2 for a module new to the reference, 4 otherwise.
TEST(Coverage, Differential)
{
    Case c;
    c.sources = {{"old.c", Lines(20)}, {"new.c", Lines(10)}, {"same.c", Lines(10)}};
    std::string o = c.dir.path("old.c"), n = c.dir.path("new.c"), s = c.dir.path("same.c");
    Project reference;
    reference.Add(o, "known", 3).Blocks({{1, 3, 1}, {0, 4, 1}, {2, 5, 1}});
    reference.Add(o, "idle", 12).Blocks({{0, 12, 1}});
    reference.Add(s, "same", 2).Blocks({{3, 2, 1}});
    c.reference = &reference;
    // known's fourth block is beyond the reference's three: it counts.
    c.profile.Add(o, "known", 3).Blocks({{1, 3, 1}, {7, 4, 1}, {0, 5, 1}, {5, 6, 1}});
    c.profile.Add(o, "fresh", 8).Blocks({{2, 8, 1}, {0, 9, 1}});
    c.profile.Add(o, "idle", 12).Blocks({{0, 12, 1}});
    c.profile.Add(n, "brand_new", 2).Blocks({{1, 2, 1}});
    c.profile.Add(s, "same", 2).Blocks({{3, 2, 1}});
    c.entries = {{"new.c", "brand_new", "brand_new", 2, 1},
                 {"old.c", "fresh", "fresh", 8, 2},
                 {"old.c", "gone", "gone", 16, 1},
                 {"old.c", "idle", "idle", 12, 1},
                 {"old.c", "known", "known", 3, 4},
                 {"same.c", "same", "same", 2, 1}};
    ExpectCase(c, "coverage_differential.txt");
}
