// The banner's package identifier: compiler drivers searched along PATH and
// the support file two levels above their directory, in a fake install tree.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/banner_text.h"
#include "tests/support/scenario.h"

namespace fs = std::filesystem;
using testsupport::BANNER;
using testsupport::ExpectSameBytes;
using testsupport::Scenario;

namespace {

class Banner : public testing::Test {
protected:
    // Installs a compiler driver `name` in <case>/<suite>/compiler/bin, and
    // optionally its support file in <case>/<suite>/doc.
    std::string Install(const std::string &suite, const std::string &driver, const std::string &support_name = "",
                        const std::string &support = "", bool executable = true)
    {
        std::string bin = suite + "/compiler/bin";
        scenario.write(bin + "/" + driver, "#!/bin/sh\n");
        fs::permissions(scenario.path(bin + "/" + driver),
                        executable ? fs::perms::owner_all : fs::perms::owner_read | fs::perms::owner_write);
        if (!support_name.empty())
            scenario.write(suite + "/doc/" + support_name, support);
        return scenario.path(bin);
    }

    // Expects the banner of a run with PATH set to `path` to name `package`,
    // its info line cut to `limit` bytes.
    void ExpectPackage(const std::string &path, const std::string &package, size_t limit = std::string::npos)
    {
        testsupport::RunResult result = scenario.run({"-h"}, {{"PATH", path}});
        EXPECT_EQ(result.status, 1);
        size_t eol = BANNER.find('\n');
        std::string info = BANNER.substr(0, eol) + package + "\n";
        ExpectSameBytes("banner", info.substr(0, limit) + BANNER.substr(eol + 1), result.err);
    }

    Scenario scenario;
};

TEST_F(Banner, NoPackageInstalled)
{
    ExpectPackage(scenario.path("nowhere") + ":", "");
    // A driver whose support file is missing names no package either.
    ExpectPackage(Install("bare", "tarskfort"), "");
}

TEST_F(Banner, FortranPackageComesFirstThenC)
{
    std::string c_bin = Install("c", "tarskcc", "tarskcc_support.txt", "Product: C\r\nPackage ID: c_9.1.042\r\n");
    std::string f_bin =
        Install("f", "tarskfort", "tarskfort_support.txt", "Product: Fortran\n  Package ID:\tf_2.0 (beta)\r\n");
    ExpectPackage(c_bin, "Package ID: c_9.1.042");
    ExpectPackage(c_bin + ":" + f_bin, "Package ID: f_2.0");
    ExpectPackage(f_bin + ":" + c_bin, "Package ID: f_2.0");
}

TEST_F(Banner, SearchSkipsWhatCannotRun)
{
    // The first tarskcc on PATH is not executable; the second one counts. A
    // support file without the key names nothing.
    std::string locked = Install("locked", "tarskcc", "tarskcc_support.txt", "Package ID: wrong\n", false);
    std::string keyless = Install("keyless", "tarskfort", "tarskfort_support.txt", "Package: nothing\n");
    std::string good = Install("good", "tarskcc", "tarskcc_support.txt", "Package ID: right");
    ExpectPackage(locked + ":" + keyless + ":" + good, "Package ID: right");
}

TEST_F(Banner, LongInfoLineIsCut)
{
    std::string id(400, 'i');
    ExpectPackage(Install("long", "tarskcc", "tarskcc_support.txt", "Package ID: " + id + "\n"), "Package ID: " + id,
                  319);
}

}  // namespace
