// scenario.h -- end-to-end test cases: a fresh directory, input files, one or
// more runs of build/vemcov in it, and byte-for-byte checks of what it wrote.
//
// The directory is /tmp/vemcov-e2e/<case name>: a fixed path, because paths
// reach the tool's output (page names, titles), and golden files must not
// depend on a random name. A lock file serialises runs of the same case from
// several build trees.
#ifndef VEMCOV_TESTS_SUPPORT_SCENARIO_H
#define VEMCOV_TESTS_SUPPORT_SCENARIO_H

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/support/capture.h"
#include "tests/support/profile_writer.h"

namespace testsupport {

using RunResult = Captured;

class Scenario {
public:
    // Creates (or empties) the case directory. `name` must be unique across
    // the suite; by default it is the running gtest's "Suite.Test" name.
    explicit Scenario(const std::string &name = "");
    ~Scenario();
    Scenario(const Scenario &) = delete;
    Scenario &operator=(const Scenario &) = delete;

    const std::string &dir() const { return dir_; }
    std::string path(const std::string &relative) const { return dir_ + "/" + relative; }

    // Writes an input file (directories are created); remembered as input.
    void write(const std::string &relative, const std::string &bytes);
    // Writes the project's profiles as vemtra.spi and vemtra.dpi.
    void writeProfiles(const Project &project);
    std::string read(const std::string &relative) const;

    // Runs build/vemcov with argv[0] "vemcov" in the case directory.
    // TARSK_PROF_SRC_ROOT is removed from the environment unless `env` sets
    // it, and PATH holds no compiler package (see banner_text.h) unless `env`
    // sets it. A run still going after `timeout_seconds` is killed; a
    // `memory_limit_mb` above 0 limits its address space.
    RunResult run(const std::vector<std::string> &args,
                  const std::map<std::string, std::string> &env = {}, int timeout_seconds = 120,
                  int memory_limit_mb = 0) const;

    // Every regular file below the case directory that is not an input,
    // relative path -> contents.
    std::map<std::string, std::string> outputs() const;

private:
    std::string dir_;
    int lock_fd_ = -1;
    std::set<std::string> inputs_;
};

// Paths in the source tree and in the build tree of the suite.
std::string SourcePath(const std::string &relative);
std::string BuildPath(const std::string &relative);

// Compares two texts; on difference fails the current test with a unified
// diff labelled `what`.
void ExpectSameBytes(const std::string &what, const std::string &expected, const std::string &actual);

// Compares a run and everything it wrote with the golden case directory
// tests/e2e/golden/<golden> (files "status", "stdout", "stderr" and the tree
// "files/"). With VEMCOV_UPDATE_GOLDEN=1 in the environment the golden files
// are rewritten instead; review such a change like code.
void ExpectGolden(const std::string &golden, const Scenario &scenario, const RunResult &result);

// Compares `actual` with the expected-output file tests/unit/expected/<name>,
// for unit tests whose expected text is long; VEMCOV_UPDATE_GOLDEN=1 rewrites
// the file instead.
void ExpectSameAsFile(const std::string &name, const std::string &actual);

}  // namespace testsupport

#endif
