// warm_memory.cpp -- touches and frees memory before a timed run, so that
// the run finds free memory the host backs.
//
//   warm_memory <MiB>
//
// On a virtual machine whose kernel hands freed memory back to the host
// (free-page reporting), memory that has been free for a few seconds costs
// the host's backing again when it is next touched: about 2.3 ms per MiB
// here, so that creating a report's 331 MB of cache pages took 0.6 s at one
// moment and 1.8 s at another. Memory freed the moment before is still
// backed, and the kernel hands it out first. The benchmarks run this
// before every timed run, the floor's included, so that each starts alike.
#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    if (argc != 2 || atol(argv[1]) <= 0) {
        fprintf(stderr, "usage: %s <MiB>\n", argv[0]);
        return 1;
    }
    const size_t bytes = static_cast<size_t>(atol(argv[1])) << 20;
    void *area = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (area == MAP_FAILED) {
        perror("warm_memory: mmap");
        return 1;
    }
    /* Large pages where the kernel offers them: the touching itself is
     * then cheap, and only the host's backing is paid. */
    madvise(area, bytes, MADV_HUGEPAGE);
    for (size_t at = 0; at < bytes; at += 4096)
        static_cast<volatile char *>(area)[at] = 1;
    munmap(area, bytes);
    return 0;
}
