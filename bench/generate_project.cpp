// generate_project.cpp -- writes a synthetic project for benchmarks:
//   generate_project <dir> [files] [functions-per-file] [lines-per-function] [seed]
// Sources go to <dir>/src, the profiles to <dir>.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/project_generator.h"

int main(int argc, char **argv)
{
    if (argc < 2 || argc > 6) {
        fprintf(stderr, "usage: %s <dir> [files] [functions-per-file] [lines-per-function] [seed]\n", argv[0]);
        return 1;
    }
    std::string dir = argv[1];
    if (dir[0] != '/') {
        fprintf(stderr, "%s: give <dir> as an absolute path (it is recorded in the profiles)\n", argv[0]);
        return 1;
    }
    bench::ProjectShape shape;
    if (argc > 2)
        shape.files = atoi(argv[2]);
    if (argc > 3)
        shape.functions_per_file = atoi(argv[3]);
    if (argc > 4)
        shape.lines_per_function = atoi(argv[4]);
    if (argc > 5)
        shape.seed = strtoull(argv[5], nullptr, 10);
    if (!bench::WriteProject(bench::GenerateProject(shape, dir + "/src"), dir)) {
        fprintf(stderr, "%s: cannot write the project below %s\n", argv[0], dir.c_str());
        return 1;
    }
    return 0;
}
