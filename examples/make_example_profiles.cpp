// make_example_profiles.cpp -- writes the static and dynamic profiles that a
// build of examples/src for profile-guided optimisation would leave after
// two runs of the program, so that the example needs no compiler suite.
//
// Usage: make_example_profiles <absolute source dir> <output dir>
#include <cstdio>
#include <string>

#include "tests/support/profile_writer.h"

int main(int argc, char **argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: %s <absolute source dir> <output dir>\n", argv[0]);
        return 1;
    }
    const std::string src = argv[1];
    const std::string out = argv[2];

    testsupport::Project project;
    project.runs = 2;
    // Block counts are totals over both runs: {count, line, column}.
    project.Add(src + "/main.c", "main", 5).Blocks({{2, 7, 5}, {0, 10, 9}, {2, 13, 5}, {2, 15, 5}});
    project.Add(src + "/stats.c", "mean", 4)
        .Blocks({{2, 6, 5}, {14, 7, 21}, {12, 8, 9}, {2, 9, 5}, {0, 10, 9}, {2, 11, 5}});
    project.Add(src + "/stats.c", "maximum", 14).Blocks({{2, 16, 5}, {12, 17, 21}, {10, 18, 9}, {10, 19, 13}, {2, 20, 5}});
    project.Add(src + "/stats.c", "minimum", 23).Blocks({{0, 25, 5}, {0, 26, 21}, {0, 27, 9}, {0, 28, 13}, {0, 29, 5}});

    if (!testsupport::WriteBytes(out + "/vemtra.spi", testsupport::SpiText(project)) ||
        !testsupport::WriteBytes(out + "/vemtra.dpi", testsupport::DpiBytes(project))) {
        fprintf(stderr, "%s: cannot write the profiles into %s\n", argv[0], out.c_str());
        return 1;
    }
    return 0;
}
