// Source root: path simplification with its give-up rules, the stored root,
// and the physical-directory mapping.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "shared/vemtra/client/src_root.h"
#include "tests/support/capture.h"
#include "tests/support/scratch_dir.h"

namespace fs = std::filesystem;

TEST(SimplifyPath, FoldsDotSegmentsOrGivesUp)
{
    const std::pair<const char *, const char *> folded[] = {
        {"/a/b/../c", "/a/c"}, {"./a", "a"},   {"/a/./b/./c.cpp", "/a/b/c.cpp"}, {"/a/b/..", "/a/"},
        {"/a/b/.", "/a/b/"},   {"/x/y/z/../../w", "/x/w"}, {"/a/../b", "/b"}, {"x./y", "x./y"},
        {"/..", "/.."},        {"file.c", "file.c"},
    };
    for (const auto &[path, expected] : folded)
        EXPECT_STREQ(vemtra_Simplify_Path(path), expected) << path;
    // Otherwise the input itself comes back.
    const char *kept[] = {
        "../a",        // nothing to remove
        "a/b/../c",    // the output would be exactly two characters
        "a/..",        // no directory before the trailing ".."
        "x../y",       // ".." glued to a name
        "/plain/path",
    };
    for (const char *path : kept)
        EXPECT_EQ(vemtra_Simplify_Path(path), path) << path;
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
    testsupport::ScratchDir dir;
    fs::path base = dir.path();
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
}

TEST(SrcRoot, OverLongRootIsRefused)
{
    // Without expansion; the end-to-end cases show the expanded root's
    // warning.
    std::string long_root = "/" + std::string(5000, 'r');
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
