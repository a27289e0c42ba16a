// scenario.cpp -- fixed-path case directories and golden comparisons.
#include "tests/support/scenario.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/file.h>
#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/support/scratch_dir.h"

namespace fs = std::filesystem;

namespace testsupport {
namespace {

const char *const E2E_ROOT = "/tmp/vemcov-e2e";

std::string CurrentTestName()
{
    const testing::TestInfo *info = testing::UnitTest::GetInstance()->current_test_info();
    if (info == nullptr)
        return "unnamed";
    std::string name = std::string(info->test_suite_name()) + "." + info->name();
    for (char &c : name)
        if (c == '/')
            c = '_';
    return name;
}

void WriteFile(const std::string &path, const std::string &bytes)
{
    fs::create_directories(fs::path(path).parent_path());
    WriteBytes(path, bytes);
}

std::string UnifiedDiff(const std::string &expected, const std::string &actual)
{
    char expected_name[] = "/tmp/vemcov-expected-XXXXXX";
    char actual_name[] = "/tmp/vemcov-actual-XXXXXX";
    int fd1 = mkstemp(expected_name);
    int fd2 = mkstemp(actual_name);
    if (fd1 < 0 || fd2 < 0)
        return "(cannot make a diff)";
    close(fd1);
    close(fd2);
    WriteFile(expected_name, expected);
    WriteFile(actual_name, actual);
    std::string command = std::string("diff -u --label expected --label actual ") + expected_name + " " + actual_name;
    std::string diff;
    if (FILE *pipe = popen(command.c_str(), "r")) {
        char buffer[4096];
        size_t n;
        while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0 && diff.size() < 20000)
            diff.append(buffer, n);
        pclose(pipe);
    }
    unlink(expected_name);
    unlink(actual_name);
    return diff;
}

}  // namespace

Scenario::Scenario(const std::string &name)
{
    std::string case_name = name.empty() ? CurrentTestName() : name;
    fs::create_directories(E2E_ROOT);
    std::string lock_path = std::string(E2E_ROOT) + "/" + case_name + ".lock";
    lock_fd_ = open(lock_path.c_str(), O_CREAT | O_RDWR, 0666);
    if (lock_fd_ >= 0)
        flock(lock_fd_, LOCK_EX);
    dir_ = std::string(E2E_ROOT) + "/" + case_name;
    fs::remove_all(dir_);
    fs::create_directories(dir_);
}

Scenario::~Scenario()
{
    if (lock_fd_ >= 0) {
        flock(lock_fd_, LOCK_UN);
        close(lock_fd_);
    }
}

void Scenario::write(const std::string &relative, const std::string &bytes)
{
    WriteFile(path(relative), bytes);
    inputs_.insert(relative);
}

void Scenario::writeProfiles(const Project &project)
{
    write("vemtra.spi", SpiText(project));
    write("vemtra.dpi", DpiBytes(project));
}

std::string Scenario::read(const std::string &relative) const
{
    return ReadFile(path(relative));
}

RunResult Scenario::run(const std::vector<std::string> &args, const std::map<std::string, std::string> &env,
                        int timeout_seconds, int memory_limit_mb) const
{
    ProgramRun program;
    program.program = VEMCOV_BINARY;
    program.argv0 = "vemcov";
    program.args = args;
    program.cwd = dir_;
    program.set_env = env;
    program.timeout_seconds = timeout_seconds;
    program.memory_limit_mb = memory_limit_mb;
    if (env.count("TARSK_PROF_SRC_ROOT") == 0)
        program.unset_env.push_back("TARSK_PROF_SRC_ROOT");
    if (env.count("PATH") == 0)
        program.set_env["PATH"] = "/nonexistent";
    RunResult result = RunProgram(program);
    EXPECT_FALSE(result.timed_out) << "vemcov did not finish in time";
    EXPECT_EQ(result.signal, 0) << "vemcov was killed by signal " << result.signal << "\n" << result.err;
    return result;
}

std::map<std::string, std::string> Scenario::outputs() const
{
    std::map<std::string, std::string> files;
    for (const auto &entry : fs::recursive_directory_iterator(dir_)) {
        if (!entry.is_regular_file())
            continue;
        std::string relative = fs::relative(entry.path(), dir_).string();
        if (inputs_.count(relative) == 0)
            files[relative] = ReadFile(entry.path().string());
    }
    return files;
}

std::string SourcePath(const std::string &relative)
{
    return std::string(VEMCOV_SOURCE_DIR) + "/" + relative;
}

std::string BuildPath(const std::string &relative)
{
    return std::string(VEMCOV_BUILD_DIR) + "/" + relative;
}

void ExpectSameBytes(const std::string &what, const std::string &expected, const std::string &actual)
{
    if (expected == actual)
        return;
    ADD_FAILURE() << what << " differs:\n" << UnifiedDiff(expected, actual);
}

void ExpectSameAsFile(const std::string &name, const std::string &actual)
{
    std::string path = std::string(VEMCOV_SOURCE_DIR) + "/tests/unit/expected/" + name;
    const char *update = getenv("VEMCOV_UPDATE_GOLDEN");
    if (update != nullptr && std::string(update) == "1") {
        WriteFile(path, actual);
        return;
    }
    ASSERT_TRUE(fs::exists(path)) << "no expected file " << path << " (run with VEMCOV_UPDATE_GOLDEN=1 to create it)";
    ExpectSameBytes(name, ReadFile(path), actual);
}

void ExpectGolden(const std::string &golden, const Scenario &scenario, const RunResult &result)
{
    std::string root = std::string(VEMCOV_SOURCE_DIR) + "/tests/e2e/golden/" + golden;
    std::map<std::string, std::string> actual = scenario.outputs();
    const char *update = getenv("VEMCOV_UPDATE_GOLDEN");
    if (update != nullptr && std::string(update) == "1") {
        fs::remove_all(root);
        WriteFile(root + "/status", std::to_string(result.status) + "\n");
        WriteFile(root + "/stdout", result.out);
        WriteFile(root + "/stderr", result.err);
        for (const auto &[relative, bytes] : actual)
            WriteFile(root + "/files/" + relative, bytes);
        return;
    }
    ASSERT_TRUE(fs::exists(root)) << "no golden case " << root << " (run with VEMCOV_UPDATE_GOLDEN=1 to create it)";
    ExpectSameBytes("exit status", ReadFile(root + "/status"), std::to_string(result.status) + "\n");
    ExpectSameBytes("standard output", ReadFile(root + "/stdout"), result.out);
    ExpectSameBytes("standard error", ReadFile(root + "/stderr"), result.err);

    std::map<std::string, std::string> expected;
    if (fs::exists(root + "/files"))
        for (const auto &entry : fs::recursive_directory_iterator(root + "/files"))
            if (entry.is_regular_file())
                expected[fs::relative(entry.path(), root + "/files").string()] = ReadFile(entry.path().string());
    for (const auto &[relative, bytes] : expected) {
        auto found = actual.find(relative);
        if (found == actual.end())
            ADD_FAILURE() << "expected file not written: " << relative;
        else
            ExpectSameBytes(relative, bytes, found->second);
    }
    for (const auto &[relative, bytes] : actual)
        if (expected.count(relative) == 0)
            ADD_FAILURE() << "unexpected file written: " << relative;
}

}  // namespace testsupport
