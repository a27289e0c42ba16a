// File tables and the summary where the end-to-end pages cannot reach: the
// quicksort of long tables on every key, and the pages and orders that are
// refused.
#include <cstring>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

#include <gtest/gtest.h>

#include "report/file_table.h"
#include "report/summary.h"
#include "tests/support/capture.h"
#include "tests/support/scratch_dir.h"

using testsupport::Captured;
using testsupport::CaptureInDir;
using testsupport::ScratchDir;

namespace {

// Store entries as the analysis leaves them: file i of `count` lies in one of
// five directories, and its percentages take few values, so that the name
// decides often.
struct FileList {
    std::vector<std::string> paths;
    std::vector<std::unique_ptr<filename_list_node>> nodes;
    std::vector<filename_list_node *> array;

    explicit FileList(int count)
    {
        for (int i = 0; i < count; ++i)
            paths.push_back("dir" + std::to_string(i * 7 % 5) + "/f" + std::to_string(i * 13 % count) + ".c");
        for (int i = 0; i < count; ++i) {
            nodes.push_back(std::make_unique<filename_list_node>());
            filename_list_node *node = nodes.back().get();
            node->path = &paths[i][0];
            node->totalFuncs = node->totalBlocks = 4;
            node->coveredFuncs = i % 3;
            node->coveredBlocks = i % 4;
            node->funcPercent = 25.0 * node->coveredFuncs;
            node->blockPercent = 25.0 * node->coveredBlocks;
            array.push_back(node);
        }
    }
};

TEST(ReportFileTable, QuicksortOrdersEveryKeyBothWays)
{
    FileList files(40);
    for (SortType order : {1, -1, 2, -2, 3, -3}) {
        std::vector<int> index(40);
        for (int i = 0; i < 40; ++i)
            index[i] = i;
        sortFileIndex(index.data(), 40, files.array.data(), order);
        const int key = order < 0 ? -order : order;
        auto keys = [&](int i) {
            const filename_list_node *node = files.array[index[i]];
            double percent = key == 2 ? node->funcPercent : key == 3 ? node->blockPercent : 0.0;
            return std::make_pair(percent, std::string(strrchr(node->path, '/') + 1));
        };
        for (int i = 0; i + 1 < 40; ++i)
            EXPECT_TRUE(order > 0 ? keys(i) < keys(i + 1) : keys(i + 1) < keys(i)) << "order " << order << " at " << i;
    }
}

TEST(ReportFileTable, PagesAndOrdersThatAreRefused)
{
    FileList files(3);
    auto table = [&](SortType order) {
        return [&files, order] {
            return bCreateCov(true, order, "__Covered_Files_Coverage", "html", nullptr, 3, files.array.data());
        };
    };
    ScratchDir noReportDir, dir;
    mkdir(dir.path("CodeCoverage").c_str(), 0777);
    Captured c = CaptureInDir(noReportDir.path(), table(2));
    EXPECT_EQ(7, c.status);
    EXPECT_EQ("Unable to create root html file __Covered_Files_Coverage!\n", c.err);
    c = CaptureInDir(dir.path(), table(-4));
    EXPECT_EQ(1, c.status);
    EXPECT_EQ("Invalid sorting option -4\n", c.err);
    c = CaptureInDir(dir.path(), table(0));
    EXPECT_EQ(1, c.status);
    EXPECT_EQ("Internal error: invalid sort oder: 0\n", c.err);

    // The summary page, then the root page in the current directory.
    auto summary = [] { return bCreateSummary(nullptr, "Code_Coverage", "__Code_Coverage", nullptr, nullptr, "html"); };
    c = CaptureInDir(noReportDir.path(), summary);
    EXPECT_EQ(7, c.status);
    EXPECT_EQ("Unable to create root html file __Code_Coverage!\n", c.err);
    mkdir(dir.path("CODE_COVERAGE.HTML").c_str(), 0777);
    c = CaptureInDir(dir.path(), summary);
    EXPECT_EQ(7, c.status);
    EXPECT_EQ("Unable to create root html file Code_Coverage!\n", c.err);
    EXPECT_TRUE(dir.exists("CodeCoverage/__CODE_COVERAGE.HTML"));
}

}  // namespace
