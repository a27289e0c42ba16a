// The banner's package identifier: compiler drivers searched along PATH and
// the support file two levels above their directory, in a fake install tree.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/scenario.h"

namespace fs = std::filesystem;
using testsupport::ExpectSameBytes;
using testsupport::RunResult;
using testsupport::Scenario;

namespace {

const std::string INFO_HEAD =
    "Tarsk(R) Compilers code-coverage tool for C, C++ and Fortran applications running on x86-64, "
    "Version 1.0 Build 20250107 ";
const std::string PROTECTION = "Copyright (C) 2025 Tarsk Compilers. All rights reserved.\n";

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

    // The banner line printed with PATH set to `path`.
    std::string InfoLine(const std::string &path)
    {
        RunResult result = scenario.run({"-h"}, {{"PATH", path}});
        EXPECT_EQ(result.status, 1);
        size_t end = result.err.find(PROTECTION);
        EXPECT_NE(end, std::string::npos) << result.err;
        EXPECT_EQ(result.err.substr(end), PROTECTION + "\n");
        return result.err.substr(0, end);
    }

    Scenario scenario;
};

TEST_F(Banner, NoPackageInstalled)
{
    EXPECT_EQ(InfoLine(scenario.path("nowhere") + ":"), INFO_HEAD + "\n");
    // A driver whose support file is missing names no package either.
    EXPECT_EQ(InfoLine(Install("bare", "tarskfort")), INFO_HEAD + "\n");
}

TEST_F(Banner, FortranPackageComesFirstThenC)
{
    std::string c_bin = Install("c", "tarskcc", "tarskcc_support.txt", "Product: C\nPackage ID: c_9.1.042\n");
    std::string f_bin =
        Install("f", "tarskfort", "tarskfort_support.txt", "Product: Fortran\n  Package ID:\tf_2.0 (beta)\r\n");

    EXPECT_EQ(InfoLine(c_bin), INFO_HEAD + "Package ID: c_9.1.042\n");
    EXPECT_EQ(InfoLine(c_bin + ":" + f_bin), INFO_HEAD + "Package ID: f_2.0\n");
    EXPECT_EQ(InfoLine(f_bin + ":" + c_bin), INFO_HEAD + "Package ID: f_2.0\n");
}

TEST_F(Banner, SearchSkipsWhatCannotRun)
{
    // The first tarskcc on PATH is not executable; the second one counts. A
    // support file without the key names nothing.
    std::string locked = Install("locked", "tarskcc", "tarskcc_support.txt", "Package ID: wrong\n", false);
    std::string keyless = Install("keyless", "tarskfort", "tarskfort_support.txt", "Package: nothing\n");
    std::string good = Install("good", "tarskcc", "tarskcc_support.txt", "Package ID: right");
    EXPECT_EQ(InfoLine(locked + ":" + keyless + ":" + good), INFO_HEAD + "Package ID: right\n");
}

TEST_F(Banner, LongInfoLineIsCut)
{
    std::string id(400, 'i');
    std::string bin = Install("long", "tarskcc", "tarskcc_support.txt", "Package ID: " + id + "\n");
    std::string full = INFO_HEAD + "Package ID: " + id + "\n";
    ExpectSameBytes("info line", full.substr(0, 319), InfoLine(bin));
}

}  // namespace
