// warm_memory.cpp -- touches and frees memory before a timed run (see
// warm.h); the benchmarks run it before every timed run of vemcov.
//
//   warm_memory <MiB>
#include <cstdio>
#include <cstdlib>

#include "bench/warm.h"

int main(int argc, char **argv)
{
    if (argc != 2 || atol(argv[1]) <= 0) {
        fprintf(stderr, "usage: %s <MiB>\n", argv[0]);
        return 1;
    }
    if (!warmMemory(static_cast<size_t>(atol(argv[1])))) {
        perror("warm_memory");
        return 1;
    }
    return 0;
}
