// project_generator.h -- deterministic synthetic projects for benchmarks:
// C source files that look like real code (comments of both kinds, strings,
// branches and loops), with the matching static and dynamic profiles.
//
//     bench::ProjectShape shape;
//     shape.files = 1000;
//     shape.functions_per_file = 20;
//     shape.lines_per_function = 30;
//     bench::WriteProject(bench::GenerateProject(shape, "/tmp/big/src"), "/tmp/big");
//
// The same shape always gives the same bytes.
#ifndef VEMCOV_BENCH_PROJECT_GENERATOR_H
#define VEMCOV_BENCH_PROJECT_GENERATOR_H

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/profile_writer.h"

namespace bench {

struct ProjectShape {
    int files = 10;               // source files
    int functions_per_file = 10;  // functions in each file
    int lines_per_function = 20;  // body lines of each function (at least 4)
    int runs = 3;                 // runs recorded in the dynamic profile
    int uncovered_percent = 30;   // share of blocks that never ran
    uint64_t seed = 1;            // varies counts and code shapes
};

struct SourceFile {
    std::string path;  // absolute path, as the profiles record it
    std::string text;
};

struct GeneratedProject {
    std::vector<SourceFile> sources;
    testsupport::Project profile;  // both profiles; write with SpiText/DpiBytes
};

// Builds the project with its sources below `source_dir` (an absolute path;
// nothing is written).
GeneratedProject GenerateProject(const ProjectShape &shape, const std::string &source_dir);

// Writes the sources, then `profile_dir`/vemtra.spi and vemtra.dpi.
// Directories are created. Returns false when a file cannot be written.
bool WriteProject(const GeneratedProject &project, const std::string &profile_dir);

}  // namespace bench

#endif
