// The function list read from the static profile: records per function of
// the modules of interest, sorted, with module starts, duplicate instances
// and repeated entries handled. (Its failures are the run's, in the
// end-to-end cases of the run's inputs.)
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "driver/component_file.h"
#include "driver/function_list.h"
#include "driver/run_state.h"
#include "shared/vemtra/client/src_root.h"
#include "tests/support/profile_writer.h"
#include "tests/support/scratch_dir.h"

using namespace testsupport;

namespace {

// The run keeps its one list to the end and never frees it. A test that
// builds several in one process must free each before the next replaces
// it: a dropped list is a leak that the sanitizer build's check at exit
// reports whenever no stale copy of its head happens to survive.
void FreeList()
{
    freeComponentList();
}

// Builds the list from `spi` and describes each record as
// "file|display|proc|line|blocks|first|dup|linkage".
std::vector<std::string> ListOf(const std::string &spi)
{
    FreeList();
    ScratchDir dir;
    buildComponentList(dir.write("vemtra.spi", spi).c_str());
    std::vector<std::string> out;
    int count = 0;
    for (COMP *c = componentList; c != nullptr; c = c->next, count++)
        out.push_back(std::string(c->fileName) + "|" + c->name + "|" + c->procName + "|" + std::to_string(c->line) +
                      "|" + std::to_string(c->block_count) + "|" + std::to_string(c->first_in_module) + "|" +
                      std::to_string(c->dup_name) + "|" + static_cast<char>(c->spi_value));
    EXPECT_EQ(count, numComponents);
    return out;
}

class FunctionList : public testing::Test {
protected:
    void SetUp() override
    {
        moduleName.clear();
        VEMTRA_Src_Root_Dir_Set(nullptr, 0);
    }
    void TearDown() override
    {
        moduleName.clear();
        FreeList();
    }
};

}  // namespace

TEST_F(FunctionList, SortedByFileThenDisplayNameWithModuleStarts)
{
    Project p;
    p.Add("/s/b.c", "zz", 1).Blocks({{1, 1, 1}, {1, 2, 1}}).excluded_block_count = 1;
    p.Add("/s/a.c", "_Z3fooi", 7, 'S');
    p.Add("/s/b.c", "aa", 9);
    p.Add("/s/a.c", "bar", 2);
    EXPECT_EQ(ListOf(SpiText(p)), (std::vector<std::string>{
                                      "/s/a.c|bar|bar|2|0|1|0|E",
                                      "/s/a.c|foo(int)|_Z3fooi|7|0|0|0|S",
                                      "/s/b.c|aa|aa|9|0|1|0|E",
                                      "/s/b.c|zz|zz|1|1|0|0|E",
                                  }));
    // The display name is a copy only when demangling changed the name.
    COMP *bar = componentList;
    EXPECT_EQ(bar->name, bar->procName);
    EXPECT_NE(bar->next->name, bar->next->procName);
}

TEST_F(FunctionList, DuplicateEntriesDroppedAndInstancesMarked)
{
    Project p;
    p.Add("/s/a.c", "f", 4);
    p.Add("/s/a.c", "f", 4);          // the same entry twice: one is dropped
    p.Add("/s/a.c", "_Z1gv", 8);      // g() at line 8 ...
    p.Add("/s/a.c", "_Z1gv", 8);
    p.Add("/s/a.c", "_Z1gIiEvv", 8);  // ... no: another display name, not an instance
    p.Add("/s/b.c", "_ZN1AC1Ev", 5);  // A::A() twice under two profile names
    p.Add("/s/b.c", "_ZN1AC2Ev", 5);
    std::vector<std::string> list = ListOf(SpiText(p));
    EXPECT_EQ(list, (std::vector<std::string>{
                        "/s/a.c|f|f|4|0|1|0|E",
                        "/s/a.c|g()|_Z1gv|8|0|0|0|E",
                        "/s/a.c|void g<int>()|_Z1gIiEvv|8|0|0|0|E",
                        "/s/b.c|A::A()|_ZN1AC1Ev|5|0|1|1|E",
                        "/s/b.c|A::A()|_ZN1AC2Ev|5|0|0|1|E",
                    }));
}

TEST_F(FunctionList, OnlyModulesOfInterestAndEmptyFiles)
{
    Project p;
    p.Add("/s/keep/a.c", "f", 1);
    p.Add("/s/skip/b.c", "g", 1);
    moduleName = {"keep"};
    EXPECT_EQ(ListOf(SpiText(p)), (std::vector<std::string>{"/s/keep/a.c|f|f|1|0|1|0|E"}));
    moduleName = {"~keep"};
    EXPECT_TRUE(ListOf(SpiText(p)).empty());
    moduleName.clear();
    EXPECT_TRUE(ListOf("").empty());
    EXPECT_EQ(componentList, nullptr);
    // A last line without its newline still counts.
    EXPECT_EQ(ListOf("a.c a.o f 3 2 E").size(), 1u);
}

// The sort compares file names by their places among the list's: two
// copies of one path, apart in the list, must still sort as one file (the
// second copy's record between the first's), and
// a record without a display name falls back to its profile name.
TEST(ComponentSort, EqualPathsInSeparateCopiesSortAsOneFile)
{
    char b1[] = "/s/b.c", a[] = "/s/a.c", b2[] = "/s/b.c", ab[] = "/s/ab.c";
    char zz[] = "zz", nn[] = "nn", mm[] = "mm", p1[] = "p1", p2[] = "p2";
    COMP records[6] = {};
    const struct {
        char *file;
        char *name;
        char *proc;
    } made[6] = {{b1, zz, zz}, {a, mm, mm}, {b2, nn, nn}, {ab, nullptr, p2}, {ab, nullptr, p1}, {b1, mm, mm}};
    COMP *array[6];
    for (int i = 0; i < 6; ++i) {
        records[i].fileName = made[i].file;
        records[i].name = made[i].name;
        records[i].procName = made[i].proc;
        array[i] = &records[i];
    }
    QuickSortComponents(array, 6);
    std::vector<std::string> order;
    for (COMP *c : array)
        order.push_back(std::string(c->fileName) + "|" + c->procName);
    EXPECT_EQ(order, (std::vector<std::string>{"/s/a.c|mm", "/s/ab.c|p1", "/s/ab.c|p2", "/s/b.c|mm", "/s/b.c|nn",
                                               "/s/b.c|zz"}));
}
