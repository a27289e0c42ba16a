// dpi_open_bench.cpp -- how long opening a large dynamic profile takes:
//   dpi_open_bench [functions] [repetitions]   (default 100000 and 5)
// Writes the profile to /tmp, then times VEMTRA_Open_Dpi_File (header,
// directory, address tables) and, separately, fetching every segment.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

#include "bench/project_generator.h"
#include "shared/vemtra/client/dpi_file.h"
#include "shared/vemtra/client/dpi_segment.h"

static double Seconds(std::chrono::steady_clock::time_point since)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

int main(int argc, char **argv)
{
    int functions = argc > 1 ? atoi(argv[1]) : 100000;
    int repetitions = argc > 2 ? atoi(argv[2]) : 5;
    bench::ProjectShape shape;
    shape.functions_per_file = 20;
    shape.files = (functions + shape.functions_per_file - 1) / shape.functions_per_file;
    shape.lines_per_function = 24;
    bench::GeneratedProject project = bench::GenerateProject(shape, "/nonexistent/bench/src");
    std::string path = "/tmp/vemcov-bench-" + std::to_string(getpid()) + ".dpi";
    std::string bytes = testsupport::DpiBytes(project.profile);
    testsupport::WriteBytes(path, bytes);
    printf("profile: %zu functions, %.1f MB\n", project.profile.functions.size(), bytes.size() / 1e6);

    double best = 1e9;
    for (int r = 0; r < repetitions; r++) {
        auto start = std::chrono::steady_clock::now();
        DPI_FILE *dpi = VEMTRA_Open_Dpi_File(path.c_str());
        double took = Seconds(start);
        if (dpi == nullptr) {
            fprintf(stderr, "open failed\n");
            return 1;
        }
        if (took < best)
            best = took;
        if (r + 1 == repetitions) {
            start = std::chrono::steady_clock::now();
            char *file = nullptr, *function = nullptr;
            uint64_t blocks = 0;
            for (VEMTRA_Get_First_File_Function_Pair(dpi, &file, &function); file != nullptr;
                 VEMTRA_Get_Next_File_Function_Pair(dpi, &file, &function)) {
                DPI_SEGMENT *segment = VEMTRA_Get_Segment(dpi, nullptr, file, function);
                blocks += segment->segment->block_cnt;
                VEMTRA_Free_Segment(segment);
            }
            printf("fetch every segment: %.3f s (%llu blocks)\n", Seconds(start),
                   static_cast<unsigned long long>(blocks));
        }
        VEMTRA_Close_Dpi_File(dpi);
    }
    printf("open: best of %d: %.3f s\n", repetitions, best);
    unlink(path.c_str());
    return 0;
}
