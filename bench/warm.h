// warm.h -- touching and freeing memory before a timed run, so that the run
// finds free memory the host backs.
//
// On a virtual machine whose kernel hands freed memory back to the host
// (free-page reporting), memory that has been free for a few seconds costs
// the host's backing again when it is next touched: about 2.3 ms per MiB
// here, so that creating a report's 331 MB of cache pages took 0.6 s at one
// moment and 1.8 s at another. Memory freed the moment before is still
// backed, and the kernel hands it out first.
#ifndef VEMCOV_BENCH_WARM_H
#define VEMCOV_BENCH_WARM_H

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>

// Touches `mib` MiB of fresh memory and frees it; false when it cannot be
// had.
inline bool warmMemory(size_t mib)
{
    const size_t bytes = mib << 20;
    void *area = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (area == MAP_FAILED)
        return false;
    // Large pages where the kernel offers them: the touching itself is then
    // cheap, and only the host's backing is paid.
    madvise(area, bytes, MADV_HUGEPAGE);
    for (size_t at = 0; at < bytes; at += 4096)
        static_cast<volatile char *>(area)[at] = 1;
    munmap(area, bytes);
    return true;
}

// warmMemory in a child process, as the benchmarks' separate warm_memory
// runs it before vemcov: warmed and freed in the process that then runs
// timed, the floor's writes over existing files that followed took up to
// four times as long (0.10 to 0.46 s against 0.08 to 0.13 s).
inline void warmMemoryInChild(size_t mib)
{
    pid_t child = fork();
    if (child == 0)
        _exit(warmMemory(mib) ? 0 : 1);
    if (child > 0)
        waitpid(child, nullptr, 0);
}

#endif
