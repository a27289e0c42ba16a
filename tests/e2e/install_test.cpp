// Installation as a user or a packager does it: cmake --install into a
// prefix, and cpack's Debian package installed by dpkg into a scratch root.
// Both trees hold a working vemcov and vemcov-import, their manual pages and
// the documents.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/scenario.h"

using testsupport::ProgramRun;
using testsupport::RunProgram;
using testsupport::RunResult;
using testsupport::Scenario;

namespace {

RunResult RunTool(const Scenario &scenario, const std::string &program, const std::vector<std::string> &args)
{
    return RunProgram(ProgramRun{program, program, args, scenario.dir(), {}, {}, 300, 0});
}

// The files an installed tree must hold below `prefix`, and a run of its
// vemcov.
void ExpectInstalledTree(const Scenario &scenario, const std::string &prefix)
{
    namespace fs = std::filesystem;
    for (const char *file : {"bin/vemcov", "bin/vemcov-import", "share/man/man1/vemcov.1",
                             "share/man/man1/vemcov-import.1", "share/doc/vemcov/README.md",
                             "share/doc/vemcov/formats.md", "share/doc/vemcov/choices.md", "share/doc/vemcov/import.md"})
        EXPECT_TRUE(fs::is_regular_file(prefix + "/" + file)) << prefix << "/" << file;
    for (const char *tool : {"vemcov", "vemcov-import"}) {
        RunResult version = RunTool(scenario, prefix + "/bin/" + tool, {"--version"});
        EXPECT_EQ(0, version.status);
        EXPECT_EQ(0u, version.out.rfind(std::string(tool) + " ", 0)) << version.out;
    }
}

TEST(Install, CmakeInstallIntoAPrefix)
{
    Scenario scenario;
    RunResult install =
        RunTool(scenario, "/usr/bin/cmake", {"--install", testsupport::BuildPath(""), "--prefix", scenario.path("prefix")});
    ASSERT_EQ(0, install.status) << install.out << install.err;
    ExpectInstalledTree(scenario, scenario.path("prefix"));
}

TEST(Install, DebianPackageThatDpkgInstalls)
{
    Scenario scenario;
    RunResult pack = RunTool(scenario, "/usr/bin/cpack",
                         {"-G", "DEB", "--config", testsupport::BuildPath("CPackConfig.cmake"), "-B", scenario.dir()});
    ASSERT_EQ(0, pack.status) << pack.out << pack.err;
    std::string package;
    for (const auto &entry : std::filesystem::directory_iterator(scenario.dir()))
        if (entry.path().extension() == ".deb")
            package = entry.path().string();
    ASSERT_FALSE(package.empty()) << pack.out;

    // A scratch root with an empty package database: dpkg installs the
    // package there as on a machine (its libraries are the host's).
    const std::string root = scenario.path("root");
    std::filesystem::create_directories(root + "/var/lib/dpkg/info");
    std::filesystem::create_directories(root + "/var/lib/dpkg/updates");
    scenario.write("root/var/lib/dpkg/status", "");
    RunResult dpkg = RunTool(scenario, "/usr/bin/dpkg",
                         {"--root=" + root, "--log=/dev/null", "--force-depends", "--force-not-root",
                          "--force-script-chrootless", "-i", package});
    ASSERT_EQ(0, dpkg.status) << dpkg.out << dpkg.err;
    ExpectInstalledTree(scenario, root + "/usr");
}

}  // namespace
