// Source root: path simplification with its give-up rules, the stored root,
// and the physical-directory mapping.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "shared/vemtra/client/src_root.h"
#include "tests/support/capture.h"

namespace fs = std::filesystem;

static std::string Simplify(const char *path)
{
    return vemtra_Simplify_Path(path);
}

TEST(SimplifyPath, FoldsDotAndDotDotSegments)
{
    EXPECT_EQ(Simplify("/a/b/../c"), "/a/c");
    EXPECT_EQ(Simplify("./a"), "a");
    EXPECT_EQ(Simplify("/a/./b/./c.cpp"), "/a/b/c.cpp");
    EXPECT_EQ(Simplify("/a/b/.."), "/a/");
    EXPECT_EQ(Simplify("/a/b/."), "/a/b/");
    EXPECT_EQ(Simplify("/x/y/z/../../w"), "/x/w");
    EXPECT_EQ(Simplify("/a/../b"), "/b");
    EXPECT_EQ(Simplify("x./y"), "x./y");
    EXPECT_EQ(Simplify("file.c"), "file.c");
}

TEST(SimplifyPath, GivesUpAndReturnsTheInput)
{
    const char *cases[] = {
        "../a",        // nothing to remove
        "a/b/../c",    // the output would be exactly two characters
        "a/..",        // no directory before the trailing ".."
        "x../y",       // ".." glued to a name
    };
    for (const char *path : cases)
        EXPECT_EQ(vemtra_Simplify_Path(path), path) << path;
    EXPECT_EQ(Simplify("/.."), "/..");
    const char *no_dot = "/plain/path";
    EXPECT_EQ(vemtra_Simplify_Path(no_dot), no_dot);
}

TEST(SrcRoot, StoredWithOneTrailingSlash)
{
    VEMTRA_Src_Root_Dir_Set("/home/x", 0);
    EXPECT_STREQ(VEMTRA_src_root_dir, "/home/x/");
    EXPECT_EQ(VEMTRA_src_root_dir_len, 8);
    VEMTRA_Src_Root_Dir_Set("/home/x/", 0);
    EXPECT_STREQ(VEMTRA_src_root_dir, "/home/x/");
    VEMTRA_Src_Root_Dir_Set("/home/y/../x/./src", 0);
    EXPECT_STREQ(VEMTRA_src_root_dir, "/home/x/src/");
    VEMTRA_Src_Root_Dir_Set("./", 1);  // simplifies to nothing
    EXPECT_STREQ(VEMTRA_src_root_dir, "/");
    VEMTRA_Src_Root_Dir_Set("", 1);
    EXPECT_STREQ(VEMTRA_src_root_dir, "");
    EXPECT_EQ(VEMTRA_src_root_dir_len, 0);
}

TEST(SrcRoot, LinkedRootIsStoredPhysically)
{
    fs::path base = fs::temp_directory_path() / "vemcov-srcroot-link";
    fs::remove_all(base);
    fs::create_directories(base / "real" / "src");
    fs::create_directory_symlink(base / "real", base / "alias");
    std::string physical = fs::canonical(base / "real" / "src").string();

    VEMTRA_Src_Root_Dir_Set((base / "alias" / "src").c_str(), 1);
    EXPECT_EQ(std::string(VEMTRA_src_root_dir), physical + "/");
    // Without expansion the name is kept as written.
    VEMTRA_Src_Root_Dir_Set((base / "alias" / "src").c_str(), 0);
    EXPECT_EQ(std::string(VEMTRA_src_root_dir), (base / "alias" / "src").string() + "/");

    EXPECT_EQ(std::string(vemtra_Physical_File_Name((base / "alias" / "src" / "a.c").c_str())), physical + "/a.c");
    EXPECT_EQ(std::string(vemtra_Physical_File_Name("bare.c")), "/bare.c");
    EXPECT_EQ(std::string(vemtra_Physical_File_Name("/no/such/dir/x.c")), "/no/such/dir/x.c");
    fs::remove_all(base);
}

TEST(SrcRoot, OverLongRootsAreRefused)
{
    std::string long_root = "/" + std::string(5000, 'r');
    testsupport::Captured expanded = testsupport::CaptureInChild([&] {
        VEMTRA_Src_Root_Dir_Set("", 0);
        VEMTRA_Src_Root_Dir_Set(long_root.c_str(), 1);
        printf("[%s]", VEMTRA_src_root_dir);
    });
    EXPECT_EQ(expanded.out, "[]");
    EXPECT_EQ(expanded.err, "WARNING: new name for prof_src_root_dir, " + long_root +
                                ", is too long. Will not set src_root dir \n");

    testsupport::Captured plain = testsupport::CaptureInChild([&] {
        VEMTRA_Src_Root_Dir_Set("/kept", 0);
        VEMTRA_Src_Root_Dir_Set(long_root.c_str(), 0);
        printf("[%s]", VEMTRA_src_root_dir);
    });
    EXPECT_EQ(plain.out, "[/kept/]");
    EXPECT_EQ(plain.err, "WARNING: new name for prof_src_root_dir, " + long_root +
                             ", is too long. Will not set base dir \n");
}

TEST(SrcRoot, EnvironmentValueIsSimplified)
{
    setenv("TARSK_PROF_SRC_ROOT", "/p/q/../r", 1);
    char *value = VEMTRA_Get_Src_Root_Env();
    ASSERT_NE(value, nullptr);
    EXPECT_STREQ(value, "/p/r");
    free(value);
    unsetenv("TARSK_PROF_SRC_ROOT");
    EXPECT_EQ(VEMTRA_Get_Src_Root_Env(), nullptr);
}
