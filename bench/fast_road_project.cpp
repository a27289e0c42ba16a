// fast_road_project.cpp -- a synthetic project for the fast road's
// benchmark: the shared generator's modules, plus call sites for the call
// graph.
//   fast_road_project <dir> [files] [functions-per-file] [lines-per-function]
// Sources go to <dir>/src, the profiles to <dir>.
//
// The first function of every module is external and is called by every
// function of the module before it; each function also calls the next one
// of its own module (a static callee), has one "(indirect)" call site, and
// every fourth function has a value-profile site with an indirect and a
// virtual target.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/project_generator.h"

static void AddCalls(bench::GeneratedProject &project, const bench::ProjectShape &shape)
{
    std::vector<testsupport::FunctionSpec> &functions = project.profile.functions;
    for (size_t i = 0; i < functions.size(); i++) {
        testsupport::FunctionSpec &f = functions[i];
        int file = static_cast<int>(i) / shape.functions_per_file;
        int k = static_cast<int>(i) % shape.functions_per_file;
        int last_block = static_cast<int>(f.blocks.size()) - 1;
        if (k == 0)
            f.linkage = 'E';
        if (k + 1 < shape.functions_per_file)
            f.calls.push_back({last_block, 1, functions[i + 1].name});
        int next_file = (file + 1) % shape.files;
        f.calls.push_back({0, 2, functions[static_cast<size_t>(next_file) * shape.functions_per_file].name + "(E)"});
        f.calls.push_back({last_block, 3, "(indirect)"});
        if (i % 4 == 0) {
            uint64_t target = functions[(i + 7) % functions.size()].address;
            uint64_t virtual_target = functions[(i + 13) % functions.size()].address;
            f.value_sites.push_back({0, {{target, 30, 0}, {virtual_target, 12, 1}}});
        }
    }
}

int main(int argc, char **argv)
{
    if (argc < 2 || argc > 5 || argv[1][0] != '/') {
        fprintf(stderr, "usage: %s <absolute dir> [files] [functions-per-file] [lines-per-function]\n", argv[0]);
        return 1;
    }
    std::string dir = argv[1];
    bench::ProjectShape shape;
    shape.files = argc > 2 ? atoi(argv[2]) : 1000;
    shape.functions_per_file = argc > 3 ? atoi(argv[3]) : 100;
    shape.lines_per_function = argc > 4 ? atoi(argv[4]) : 12;
    bench::GeneratedProject project = bench::GenerateProject(shape, dir + "/src");
    AddCalls(project, shape);
    if (!bench::WriteProject(project, dir)) {
        fprintf(stderr, "%s: cannot write the project below %s\n", argv[0], dir.c_str());
        return 1;
    }
    return 0;
}
