// -j: the pages written on several threads are the same files, byte for
// byte, as those written one after the other, and the run prints the same.
// A run over an earlier report, whose files it writes over in place, leaves
// the same files as a run in an empty directory.
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/profile_writer.h"
#include "tests/support/scenario.h"

namespace {

using testsupport::Project;
using testsupport::RunResult;
using testsupport::Scenario;

// Twelve files of four functions each: covered, partly covered, never
// called and a function under an infeasible marker, with crowded lines.
void WriteProject(Scenario &scenario, Project &current, Project &reference)
{
    const std::string src = scenario.dir() + "/src/";
    for (int f = 0; f < 12; ++f) {
        std::string name = "unit" + std::to_string(f) + ".c";
        std::string text;
        for (int fn = 0; fn < 4; ++fn) {
            text += "int f" + std::to_string(fn) + "(int x)\n{\n";
            text += fn == 3 ? "    return x; // NOT_FEASIBLE\n" : "    if (x > 1) return x; else return -x;\n";
            text += "}\n";
        }
        scenario.write("src/" + name, text);
        for (int fn = 0; fn < 4; ++fn) {
            uint32_t line = static_cast<uint32_t>(fn * 4 + 1);
            std::string function = "f" + std::to_string(fn);
            uint64_t ran = static_cast<uint64_t>((f + fn) % 3);
            auto &added = current.Add(src + name, function, line)
                             .Blocks({{ran + 1, line + 1, 1}, {ran, line + 2, 5}, {0, line + 2, 16}, {ran, line + 2, 28}});
            if (fn == 2 && f % 2 == 0)
                added.OnlyInSpi();
            reference.Add(src + name, function, line).Blocks({{1, line + 1, 1}, {f % 2 == 0 ? 1u : 0u, line + 2, 5},
                                                              {0, line + 2, 16}, {0, line + 2, 28}});
        }
    }
}

// Runs vemcov with `args` and returns everything it wrote; the files are
// removed afterwards, so that the next run starts from the inputs alone.
std::map<std::string, std::string> RunAndCollect(const Scenario &scenario, const std::vector<std::string> &args,
                                                 RunResult &result)
{
    result = scenario.run(args);
    std::map<std::string, std::string> written = scenario.outputs();
    for (const auto &file : written)
        std::filesystem::remove(scenario.path(file.first));
    return written;
}

TEST(Jobs, SeveralThreadsWriteTheSameFilesAsOne)
{
    Scenario scenario;
    Project current, reference;
    WriteProject(scenario, current, reference);
    scenario.writeProfiles(current);
    scenario.write("old.dpi", testsupport::DpiBytes(reference));
    const std::vector<std::vector<std::string>> runs = {
        {"-counts", "-onelinedsbl", "NOT_FEASIBLE", "-txtbcvrgfull", "full.txt", "-xmlbcvrgfull", "full.xml",
         "-lcov", "cov.info", "-cobertura", "cov.xml", "-json", "cov.json", "-html5", "view"},
        {"-counts", "-ref", "old.dpi", "-onelinedsbl", "NOT_FEASIBLE", "-txtbcvrgfull", "full.txt",
         "-xmlbcvrgfull", "full.xml"},
    };
    // -j 2: the run makes the pages and a thread writes them; -j 4: two
    // page threads more.
    for (const std::vector<std::string> &options : runs) {
        std::vector<std::string> one = options;
        one.insert(one.end(), {"-j", "1"});
        RunResult first;
        std::map<std::string, std::string> serial = RunAndCollect(scenario, one, first);
        ASSERT_EQ(0, first.status) << first.err;
        EXPECT_GT(serial.size(), 50u);
        for (const char *jobs : {"2", "4"}) {
            std::vector<std::string> several = options;
            several.insert(several.end(), {"-j", jobs});
            RunResult second;
            std::map<std::string, std::string> threaded = RunAndCollect(scenario, several, second);
            EXPECT_EQ(0, second.status) << second.err;
            EXPECT_EQ(first.out, second.out) << jobs;  // the progress meter included
            EXPECT_EQ(first.err, second.err) << jobs;
            ASSERT_EQ(serial.size(), threaded.size()) << jobs;
            for (const auto &file : serial) {
                auto other = threaded.find(file.first);
                ASSERT_NE(other, threaded.end()) << file.first;
                EXPECT_TRUE(file.second == other->second) << file.first << " differs with -j " << jobs;
            }
        }
    }
}

// Every file of the earlier report is given a longer or a shorter text
// first (an older report of a larger or smaller project); what is left of
// it must not show in the new one.
TEST(Jobs, ARunOverAnEarlierReportLeavesWhatARunInAnEmptyPlaceLeaves)
{
    Scenario scenario;
    Project current, reference;
    WriteProject(scenario, current, reference);
    scenario.writeProfiles(current);
    const std::vector<std::string> options = {"-counts", "-onelinedsbl", "NOT_FEASIBLE", "-outdir", "report",
                                              "-html5", "view", "-lcov", "cov.info", "-j", "2"};
    RunResult fresh, over;
    std::map<std::string, std::string> expected = RunAndCollect(scenario, options, fresh);
    ASSERT_EQ(0, fresh.status) << fresh.err;
    ASSERT_GT(expected.size(), 50u);
    int shorter = 0;
    for (const auto &file : expected) {
        std::string old = file.second + std::string(5000, 'x');
        if (++shorter % 2 == 0)
            old = file.second.substr(0, file.second.size() / 2);
        std::ofstream stale(scenario.path(file.first), std::ios::binary);
        ASSERT_TRUE(stale << old) << file.first;
    }
    std::map<std::string, std::string> written = RunAndCollect(scenario, options, over);
    EXPECT_EQ(0, over.status) << over.err;
    EXPECT_EQ(fresh.out, over.out);
    EXPECT_EQ(fresh.err, over.err);
    ASSERT_EQ(expected.size(), written.size());
    for (const auto &file : expected)
        EXPECT_TRUE(file.second == written[file.first]) << file.first << " differs";
}

// A page that cannot be written on a page thread ends the run with the
// message and status of one written without threads, and no signal.
TEST(Jobs, AFullDiskEndsTheRunWithItsMessage)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "mounting a small file system needs root";
    Scenario scenario;
    Project current, reference;
    WriteProject(scenario, current, reference);
    scenario.writeProfiles(current);
    std::filesystem::create_directories(scenario.path("small"));
    RunResult mounted = testsupport::RunProgram(testsupport::ProgramRun{
        "/bin/mount", "mount", {"-t", "tmpfs", "-o", "size=64k", "tmpfs", "small"}, scenario.dir(), {}, {}, 30, 0});
    if (mounted.status != 0)
        GTEST_SKIP() << "cannot mount a tmpfs here: " << mounted.err;
    for (int round = 0; round < 3; ++round) {
        RunResult result = scenario.run({"-nopmeter", "-counts", "-j", round == 1 ? "2" : "4", "-outdir", "small"});
        EXPECT_EQ(1, result.status) << result.err;
        EXPECT_EQ(0, result.signal);
        EXPECT_NE(std::string::npos, result.err.find("ERROR: cannot write ")) << result.err;
    }
    testsupport::RunProgram(testsupport::ProgramRun{"/bin/umount", "umount", {"small"}, scenario.dir(), {}, {}, 30, 0});
}

// A listing page whose name is taken by a directory: the run ends with the
// same message and status whether the page's file is opened by the run, by
// the file thread (-j 2, and the default on two processors) or beside page
// threads (-j 4). Without page threads it also prints the same progress
// and leaves the same files, the full block files and the view's pages
// included: what the run printed and wrote after that page waits behind it
// and goes with the run.
TEST(Jobs, APageThatCannotBeOpenedEndsTheRunAsWithOneThread)
{
    Scenario scenario;
    Project current, reference;
    WriteProject(scenario, current, reference);
    scenario.writeProfiles(current);
    RunResult plain;
    std::map<std::string, std::string> written = RunAndCollect(scenario, {"-nopmeter"}, plain);
    ASSERT_EQ(0, plain.status) << plain.err;
    std::string listing;
    for (const auto &file : written)
        if (file.first.size() > 16 && file.first.compare(file.first.size() - 16, 16, "UNIT7_C_SRC.HTML") == 0)
            listing = file.first;
    ASSERT_FALSE(listing.empty());
    const std::vector<std::string> outputs = {"-txtbcvrgfull", "full.txt", "-xmlbcvrgfull", "full.xml",
                                              "-lcov",         "cov.info", "-html5",        "view"};
    const std::vector<std::vector<std::string>> runs = {{"-j", "1"}, {"-j", "2"}, {}, {"-j", "4"}};
    RunResult expected;
    std::map<std::string, std::string> expectedFiles;
    for (const std::vector<std::string> &jobs : runs) {
        const std::string shown = jobs.empty() ? "default" : jobs[1];
        std::vector<std::string> options = outputs;
        options.insert(options.end(), jobs.begin(), jobs.end());
        std::filesystem::create_directories(scenario.path(listing));
        RunResult result;
        std::map<std::string, std::string> files = RunAndCollect(scenario, options, result);
        std::filesystem::remove(scenario.path(listing));
        EXPECT_EQ(1, result.status) << shown << ": " << result.err;
        EXPECT_EQ(0, result.signal) << shown;
        if (shown == "1") {
            expected = result;
            expectedFiles = files;
            EXPECT_NE(std::string::npos, result.err.find("for output!")) << result.err;
            EXPECT_NE(std::string::npos, result.out.find("Progress: ")) << result.out;
            continue;
        }
        EXPECT_EQ(expected.err, result.err) << shown;
        if (shown == "4")
            continue;
        EXPECT_EQ(expected.out, result.out) << shown;
        EXPECT_TRUE(expectedFiles == files) << shown << ": other files";
        for (const auto &f : files) if (expectedFiles.count(f.first) == 0 || expectedFiles[f.first] != f.second) printf("extra/diff %s %zu %zu\n", f.first.c_str(), f.second.size(), expectedFiles[f.first].size());
        for (const auto &f : expectedFiles) if (files.count(f.first) == 0) printf("missing %s\n", f.first.c_str());
    }
}

TEST(Jobs, ThreadCountsOutsideOneToSixtyFourAreRefused)
{
    Scenario scenario;
    for (const char *value : {"0", "65", "two", "-3"}) {
        RunResult result = scenario.run({"-j", value});
        EXPECT_EQ(1, result.status) << value;
        EXPECT_NE(std::string::npos,
                  result.err.find(std::string("ERROR: -j takes a number of threads from 1 to 64, not '") + value +
                                  "'."))
            << result.err;
    }
}

}  // namespace
