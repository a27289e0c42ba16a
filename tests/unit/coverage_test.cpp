// Block and function coverage: order_func, isDupName, and markBlocks over
// profiles made by the test profile writer. Each markBlocks case runs in a
// child process, because the analysis works on process-wide state.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/comment_parser.h"
#include "analysis/coverage.h"
#include "analysis/coverage_state.h"
#include "driver/run_state.h"
#include "driver/settings.h"
#include "report/coverage_store.h"
#include "shared/vemtra/client/dpi_file.h"
#include "tests/support/capture.h"
#include "tests/support/profile_writer.h"

using testsupport::CaptureInChild;
using testsupport::Captured;
using testsupport::Project;

namespace {

// ---- order_func and isDupName ----

std::vector<COMP> Module(const std::vector<int> &lines)
{
    std::vector<COMP> comps(lines.size());
    static char file[] = "m.c";
    for (size_t i = 0; i < lines.size(); ++i) {
        comps[i] = COMP{};
        comps[i].line = lines[i];
        comps[i].fileName = file;
        comps[i].next = i + 1 < lines.size() ? &comps[i + 1] : nullptr;
    }
    return comps;
}

// The chain as indexes into `comps`.
std::vector<int> ChainOf(const std::vector<COMP> &comps)
{
    std::vector<int> order;
    for (const COMP *c = first_func_line; c != nullptr; c = c->next_by_line) {
        order.push_back(static_cast<int>(c - comps.data()));
        EXPECT_EQ(c->first_by_line, first_func_line);
        if (order.size() > comps.size())
            break;
    }
    return order;
}

// ---- markBlocks cases ----

struct Entry {
    std::string file;
    std::string name;   // display name
    std::string proc;   // profile name
    int line;
    unsigned blockCount;
    int dup = 0;
};

struct Case {
    std::string dir;                  // scratch directory, created anew
    std::vector<std::pair<std::string, std::string>> sources;  // relative path, text
    Project profile;
    Project *reference = nullptr;
    std::vector<Entry> entries;       // sorted by file
    std::vector<std::string> oneLine, begin, end;
    bool noPartial = false;
};

std::string Path(const Case &c, const std::string &relative)
{
    return c.dir + "/" + relative;
}

// Everything the store holds for the current file, position by position.
void PrintPositions()
{
    const file_list_node *file = g_cl.currentFile;
    if (file == nullptr || file->lineTable == nullptr)
        return;
    printf("  positions:");
    for (uint32_t l = 0; l <= file->lineSlots; ++l)
        for (const block_list_node *n = file->lineTable[l]; n != nullptr; n = n->next) {
            if (n->count == NEVER_EXECUTED)
                printf(" %u:%u=never", n->line, n->column);
            else
                printf(" %u:%u=%llu", n->line, n->column, (unsigned long long)n->count);
            printf("(%u/%u/%u%s)", n->numBlocks, n->numExecuted, n->numUnexecuted, n->newFunction ? "N" : "");
        }
    printf("\n");
}

void PrintTables()
{
    printf("  covered:");
    for (int i = 0; i < numFileFuncsCovered; ++i)
        printf(" %s@%u %u/%u %.2f", fileFuncsCovered[i]->name, fileFuncsCovered[i]->line,
               fileFuncsCovered[i]->covered, fileFuncsCovered[i]->blocks, fileFuncsCovered[i]->percent);
    printf("\n  uncovered:");
    for (int i = 0; i < numFileFuncsUncovered; ++i)
        printf(" %s@%u %u/%u", fileFuncsUncovered[i]->name, fileFuncsUncovered[i]->line,
               fileFuncsUncovered[i]->covered, fileFuncsUncovered[i]->blocks);
    printf("\n");
}

// Runs the driver's module loop over the case in a child and returns what
// it printed: per module the result, the percentages, the tables and the
// store's positions; then the file list and the run totals. (The full block
// files are compared by the end-to-end tests.)
Captured RunCase(Case &c)
{
    std::string command = "rm -rf '" + c.dir + "' && mkdir -p '" + c.dir + "'";
    EXPECT_EQ(system(command.c_str()), 0);
    for (auto &source : c.sources) {
        std::string path = Path(c, source.first);
        EXPECT_TRUE(testsupport::WriteBytes(path, source.second)) << path;
    }
    EXPECT_TRUE(testsupport::WriteBytes(Path(c, "vemtra.dpi"), testsupport::DpiBytes(c.profile)));
    if (c.reference != nullptr) {
        EXPECT_TRUE(testsupport::WriteBytes(Path(c, "ref.dpi"), testsupport::DpiBytes(*c.reference)));
    }

    return CaptureInChild([&c] {
        std::string dpiName = Path(c, "vemtra.dpi"), refName = Path(c, "ref.dpi");
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
            files[i] = Path(c, e.file);
            comps[i] = COMP{};
            comps[i].next = i + 1 < comps.size() ? &comps[i + 1] : nullptr;
            comps[i].line = e.line;
            comps[i].block_count = e.blockCount;
            comps[i].dup_name = e.dup;
            comps[i].fileName = const_cast<char *>(files[i].c_str());
            comps[i].name = e.name.empty() ? nullptr : const_cast<char *>(e.name.c_str());
            comps[i].procName = const_cast<char *>(e.proc.c_str());
        }

        for (COMP *r = comps.empty() ? nullptr : &comps[0]; r != nullptr;) {
            order_func(r);
            pars = new parser(r->fileName, c.oneLine, c.begin, c.end);
            bool result = markBlocks(r);
            printf("%s: %s fc=%.4f bc=%.4f\n", r->fileName + c.dir.size() + 1, result ? "true" : "false",
                   functionCoverage, blockCoverage);
            PrintTables();
            PrintPositions();
            delete pars;
            pars = nullptr;
            g_cl.deleteCurrentFile();
            releaseModuleTables();
            COMP *next = r->next;
            while (next != nullptr && strcmp(next->fileName, r->fileName) == 0)
                next = next->next;
            r = next;
        }
        for (const COMP &comp : comps)
            if (comp.not_in_reference)
                printf("not in reference: %s\n", comp.procName);
        for (const filename_list_node *f = g_cl.fileListHead; f != nullptr; f = f->next)
            printf("file %s flags=%u funcs=%u/%u %.4f blocks=%u/%u %.4f\n", f->path + c.dir.size() + 1,
                   f->fileFlags, f->coveredFuncs, f->totalFuncs, f->funcPercent, f->coveredBlocks, f->totalBlocks,
                   f->blockPercent);
        printf("totals files=%u/%u procs=%u/%u blocks=%u/%u\n", totalNumberOfFilesCovered, totalNumberOfFiles,
               totalNumberOfProcsCovered, totalNumberOfProcs, totalNumberOfBlocksCovered, totalNumberOfBlocks);
        fflush(stdout);
    });
}

std::string CaseDir(const char *name)
{
    return "/tmp/vemcov-coverage-" + std::to_string(getpid()) + "-" + name;
}

void Cleanup(const Case &c)
{
    std::string command = "rm -rf '" + c.dir + "'";
    EXPECT_EQ(system(command.c_str()), 0);
}

std::string Lines(int n)
{
    std::string text;
    for (int i = 1; i <= n; ++i)
        text += "line " + std::to_string(i) + "\n";
    return text;
}

}  // namespace

TEST(Coverage, OrderFuncSortsByLineAndKeepsTheHeadFirstAmongEquals)
{
    // Appends, prepends and insertions in the middle.
    std::vector<COMP> a = Module({20, 5, 30, 10, 25, 1});
    order_func(&a[0]);
    EXPECT_EQ(ChainOf(a), (std::vector<int>{5, 1, 3, 0, 4, 2}));
    // Equal lines: joining the head's group goes right after the head,
    // joining another group goes before its members.
    std::vector<COMP> b = Module({5, 5, 9, 5, 9, 9, 2, 5});
    order_func(&b[0]);
    EXPECT_EQ(ChainOf(b), (std::vector<int>{6, 7, 0, 3, 1, 5, 4, 2}));
    // Only the module of `first` is chained.
    std::vector<COMP> c = Module({3, 1, 2});
    static char other[] = "n.c";
    c[2].fileName = other;
    order_func(&c[0]);
    EXPECT_EQ(ChainOf(c), (std::vector<int>{1, 0}));
    first_func_line = nullptr;
}

TEST(Coverage, IsDupNameSearchesEitherWay)
{
    char f[] = "f", g[] = "g";
    func one{f, f, 3, 0, 0, 0.0}, two{g, g, 3, 0, 0, 0.0}, three{f, f, 3, 0, 0, 0.0}, four{f, f, 4, 0, 0, 0.0};
    func *table[] = {&one, &two, &three, &four};
    int index = -1;
    EXPECT_TRUE(isDupName(f, 3, table, 4, 1, &index));
    EXPECT_EQ(index, 0);
    EXPECT_TRUE(isDupName(f, 3, table, 4, -1, &index));
    EXPECT_EQ(index, 2);
    EXPECT_TRUE(isDupName(f, 4, table, 4, -1, nullptr));
    EXPECT_FALSE(isDupName(f, 4, table, 3, 1, &index));  // only the first `count`
    EXPECT_FALSE(isDupName(g, 4, table, 4, 1, &index));
    EXPECT_FALSE(isDupName(nullptr, 3, table, 4, 1, &index));
    EXPECT_FALSE(isDupName(f, 3, nullptr, 4, 1, &index));
    EXPECT_FALSE(isDupName(f, 3, table, 0, 1, &index));
}

TEST(Coverage, CoveredPartialAndNeverCalledFunctions)
{
    Case c;
    c.dir = CaseDir("basic");
    c.sources = {{"a.c", Lines(30)}, {"b.c", Lines(5)}};
    std::string a = Path(c, "a.c"), b = Path(c, "b.c");
    c.profile.runs = 2;
    // main: entry block ran 4 times, one block never; two blocks share 12:3.
    c.profile.Add(a, "main", 10).Blocks({{4, 10, 1}, {0, 11, 5}, {6, 12, 3}, {0, 12, 3}});
    c.profile.Add(a, "ran_nothing", 20).Blocks({{0, 20, 1}, {0, 21, 2}});
    c.profile.Add(b, "only_b", 2).Blocks({{0, 2, 1}});
    c.entries = {{"a.c", "main", "main", 10, 4},
                 {"a.c", "never", "never", 25, 3},
                 {"a.c", "ran_nothing", "ran_nothing", 20, 2},
                 {"b.c", "only_b", "only_b", 2, 1}};
    Captured run = RunCase(c);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "a.c: true fc=66.6667 bc=22.2222\n"
              "  covered: main@10 2/4 50.00\n"
              "  uncovered: ran_nothing@20 0/2 never@25 0/3\n"
              "  positions: 10:1=4(1/1/0) 11:5=0(1/0/1) 12:3=6(2/1/1) 20:1=0(1/0/1) 21:2=0(1/0/1) 25:1=never(1/1/0)\n"
              "b.c: true fc=100.0000 bc=0.0000\n"
              "  covered:\n"
              "  uncovered: only_b@2 0/1\n"
              "  positions: 2:1=0(1/0/1)\n"
              "file a.c flags=5 funcs=2/3 66.6667 blocks=2/9 22.2222\n"
              "file b.c flags=5 funcs=1/1 100.0000 blocks=0/1 0.0000\n"
              "totals files=2/2 procs=3/4 blocks=2/10\n");
    Cleanup(c);
}

TEST(Coverage, InfeasibleLinesExcessBlocksAndMissingLineInformation)
{
    Case c;
    c.dir = CaseDir("infeasible");
    std::string text = Lines(40);
    text.replace(text.find("line 6\n"), 7, "x; // NF\n");
    text.replace(text.find("line 30\n"), 8, "int skipped() { // NF\n");
    c.sources = {{"m.c", text}};
    c.oneLine = {"NF"};
    std::string m = Path(c, "m.c");
    // Blocks on a disabled line, at line 0 and at column 0 are infeasible
    // but still recorded; the segment has one block more than the static
    // profile says.
    c.profile.Add(m, "f", 5).Blocks({{3, 5, 1}, {2, 6, 4}, {1, 0, 0}, {7, 7, 0}, {0, 8, 2}});
    // No line information: all blocks go to the function's line, column 1.
    c.profile.Add(m, "noinfo", 12).Blocks({{5, 0, 0}, {0, 0, 0}}).line_info = testsupport::LineInfo::None;
    // A function whose first line is disabled (and the rest of the file with it).
    c.profile.Add(m, "skipped", 30).Blocks({{9, 30, 1}});
    c.entries = {{"m.c", "f", "f", 5, 4},
                 {"m.c", "noinfo", "noinfo", 12, 2},
                 {"m.c", "skipped", "skipped", 30, 1},
                 {"m.c", "___sti__init", "init", 3, 9},
                 {"m.c", "", "anonymous", 4, 9},
                 {"m.c", "zero_line", "zero_line", 0, 9}};
    Captured run = RunCase(c);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err,
              "No line number info for " + m + ": recompile with -Qcvinstx (instead of -Qcvinst).\n"
              "...Assigning all exec counts to line 1 column 1.\n");
    EXPECT_EQ(run.out,
              "m.c: true fc=100.0000 bc=50.0000\n"
              "  covered: f@5 1/2 50.00 noinfo@12 1/2 50.00\n"
              "  uncovered:\n"
              "  positions: 5:1=3(1/1/0) 6:4=2(1/1/0) 7:0=7(1/1/0) 8:2=0(1/0/1) 12:1=5(2/1/1)\n"
              "file m.c flags=5 funcs=2/2 100.0000 blocks=2/4 50.0000\n"
              "totals files=1/1 procs=2/2 blocks=2/4\n");
    Cleanup(c);
}

TEST(Coverage, ExecutedInstanceSupersedesUnexecutedOnes)
{
    Case c;
    c.dir = CaseDir("instances");
    c.sources = {{"t.h", Lines(20)}};
    std::string t = Path(c, "t.h");
    c.profile.Add(t, "_Z3maxIiET_S0_S0_", 4).Blocks({{0, 4, 1}, {0, 5, 3}});
    c.profile.Add(t, "_Z3maxIlET_S0_S0_", 4).Blocks({{2, 4, 1}, {0, 5, 3}});
    c.profile.Add(t, "_Z3maxIcET_S0_S0_", 4).Blocks({{0, 4, 1}, {0, 5, 3}});
    c.profile.Add(t, "_Z3minIiET_S0_S0_", 9).Blocks({{0, 9, 1}});
    c.profile.Add(t, "_Z3minIlET_S0_S0_", 9).Blocks({{0, 9, 1}});
    c.profile.Add(t, "solo", 15).Blocks({{0, 15, 1}});
    c.entries = {{"t.h", "max", "_Z3maxIiET_S0_S0_", 4, 2, 1},
                 {"t.h", "max", "_Z3maxIlET_S0_S0_", 4, 2, 1},
                 {"t.h", "max", "_Z3maxIcET_S0_S0_", 4, 2, 1},
                 {"t.h", "min", "_Z3minIiET_S0_S0_", 9, 1, 1},
                 {"t.h", "min", "_Z3minIlET_S0_S0_", 9, 1, 1},
                 {"t.h", "solo", "solo", 15, 1}};
    Captured run = RunCase(c);
    EXPECT_EQ(run.status, 0);
    // max is listed once, as covered; min once, as uncovered. The totals
    // still count every instance.
    EXPECT_EQ(run.out,
              "t.h: true fc=100.0000 bc=11.1111\n"
              "  covered: max@4 1/2 50.00\n"
              "  uncovered: solo@15 0/1 min@9 0/1\n"
              "  positions: 4:1=2(3/1/2) 5:3=0(3/0/3) 9:1=0(2/0/2) 15:1=0(1/0/1)\n"
              "file t.h flags=5 funcs=6/6 100.0000 blocks=1/9 11.1111\n"
              "totals files=1/1 procs=6/6 blocks=1/9\n");
    Cleanup(c);
}

TEST(Coverage, NoPartialCountsTheSiblingsOfAnExecutedBlock)
{
    Case c;
    c.dir = CaseDir("nopartial");
    c.sources = {{"p.c", Lines(10)}};
    std::string p = Path(c, "p.c");
    c.profile.Add(p, "f", 2).Blocks({{0, 3, 2}, {0, 3, 2}, {5, 3, 2}, {0, 3, 2}, {0, 4, 1}});
    c.entries = {{"p.c", "f", "f", 2, 5}};
    c.noPartial = true;
    Captured run = RunCase(c);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out,
              "p.c: true fc=100.0000 bc=80.0000\n"
              "  covered: f@2 4/5 80.00\n"
              "  uncovered:\n"
              "  positions: 3:2=5(4/1/0) 4:1=0(1/0/1)\n"
              "file p.c flags=5 funcs=1/1 100.0000 blocks=4/5 80.0000\n"
              "totals files=1/1 procs=1/1 blocks=4/5\n");
    Cleanup(c);
}

TEST(Coverage, DifferentialAgainstAReference)
{
    Case c;
    c.dir = CaseDir("differential");
    c.sources = {{"old.c", Lines(20)}, {"new.c", Lines(10)}, {"same.c", Lines(10)}};
    std::string o = Path(c, "old.c"), n = Path(c, "new.c"), s = Path(c, "same.c");
    Project reference;
    reference.Add(o, "known", 3).Blocks({{1, 3, 1}, {0, 4, 1}, {2, 5, 1}});
    reference.Add(o, "idle", 12).Blocks({{0, 12, 1}});
    reference.Add(s, "same", 2).Blocks({{3, 2, 1}});
    c.reference = &reference;
    c.profile.Add(o, "known", 3).Blocks({{1, 3, 1}, {7, 4, 1}, {0, 5, 1}});
    c.profile.Add(o, "fresh", 8).Blocks({{2, 8, 1}, {0, 9, 1}});
    c.profile.Add(o, "idle", 12).Blocks({{0, 12, 1}});
    c.profile.Add(n, "brand_new", 2).Blocks({{1, 2, 1}});
    c.profile.Add(s, "same", 2).Blocks({{3, 2, 1}});
    c.entries = {{"new.c", "brand_new", "brand_new", 2, 1},
                 {"old.c", "fresh", "fresh", 8, 2},
                 {"old.c", "gone", "gone", 16, 1},
                 {"old.c", "idle", "idle", 12, 1},
                 {"old.c", "known", "known", 3, 3},
                 {"same.c", "same", "same", 2, 1}};
    Captured run = RunCase(c);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    // Only blocks the reference never ran count; the full files keep the
    // counts as read; a module without newly covered blocks is refused.
    EXPECT_EQ(run.out,
              "new.c: true fc=100.0000 bc=100.0000\n"
              "  covered:\n"
              "  uncovered: brand_new@2 1/1\n"
              "  positions: 2:1=1(1/1/0N)\n"
              "old.c: true fc=50.0000 bc=28.5714\n"
              "  covered: known@3 1/3 33.33\n"
              "  uncovered: fresh@8 1/2\n"
              "  positions: 3:1=0(1/0/1) 4:1=7(1/1/0) 5:1=0(1/0/1) 8:1=2(1/1/0N) 9:1=0(1/0/1N) 12:1=0(1/0/1)\n"
              "same.c: false fc=0.0000 bc=0.0000\n"
              "  covered:\n"
              "  uncovered:\n"
              "  positions: 2:1=0(1/0/1)\n"
              "not in reference: brand_new\n"
              "not in reference: fresh\n"
              "file new.c flags=3 funcs=1/1 100.0000 blocks=1/1 100.0000\n"
              "file old.c flags=5 funcs=2/4 50.0000 blocks=2/7 28.5714\n"
              "file same.c flags=1 funcs=0/1 0.0000 blocks=0/1 0.0000\n"
              "totals files=1/3 procs=3/6 blocks=3/9\n");
    Cleanup(c);
}

TEST(Coverage, MissingSourceAndZeroRuns)
{
    Case c;
    c.dir = CaseDir("missing");
    c.sources = {{"here.c", Lines(3)}};
    std::string gone = Path(c, "gone.c");
    c.profile.Add(gone, "g", 1).Blocks({{1, 1, 1}});
    c.profile.Add(Path(c, "here.c"), "h", 1).Blocks({{1, 1, 1}});
    c.entries = {{"gone.c", "g", "g", 1, 1}, {"here.c", "h", "h", 1, 1}};
    Captured run = RunCase(c);
    EXPECT_EQ(run.status, 0);
    // The missing module is refused before any counting; it stays in the
    // file list without totals or status.
    EXPECT_EQ(run.out,
              "\nWarning - File " + gone + " not found!\n"
              "gone.c: false fc=0.0000 bc=0.0000\n"
              "  covered:\n"
              "  uncovered:\n"
              "here.c: true fc=100.0000 bc=100.0000\n"
              "  covered: h@1 1/1 100.00\n"
              "  uncovered:\n"
              "  positions: 1:1=1(1/1/0)\n"
              "file gone.c flags=0 funcs=0/0 0.0000 blocks=0/0 0.0000\n"
              "file here.c flags=5 funcs=1/1 100.0000 blocks=1/1 100.0000\n"
              "totals files=1/1 procs=1/1 blocks=1/1\n");

    c.profile.runs = 0;
    Captured zero = RunCase(c);
    EXPECT_EQ(zero.status, 1);
    EXPECT_EQ(zero.err, "Read in 0 runs for .dpi file - .dpi File corrupt!\n");
    Cleanup(c);
}
