/* heap_setup.cpp -- the heap grown once, in large pages. */
#include "driver/heap_setup.h"

#include <cstdint>
#include <cstdlib>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

void prepareHeap()
{
#if defined(MADV_HUGEPAGE) && defined(M_TOP_PAD) && defined(M_MMAP_THRESHOLD) && defined(M_TRIM_THRESHOLD)
    /* Enough for the tables of a few million source lines; more is taken
     * as usual when needed. */
    const size_t HEAP = size_t(96) << 20;
    const uintptr_t LARGE_PAGE = uintptr_t(2) << 20;
    /* Large tables from the heap rather than a mapping each, and the heap
     * kept once grown. */
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, static_cast<int>(4 * HEAP));
    /* A request larger than what is left makes the heap grow, by the request
     * and the pad; freed, it stays with the heap. */
    mallopt(M_TOP_PAD, static_cast<int>(HEAP));
    char *probe = static_cast<char *>(malloc(size_t(8) << 20));
    if (probe == nullptr)
        return;
    uintptr_t start = (reinterpret_cast<uintptr_t>(probe) + LARGE_PAGE - 1) & ~(LARGE_PAGE - 1);
    uintptr_t end = reinterpret_cast<uintptr_t>(sbrk(0));
    free(probe);
    mallopt(M_TOP_PAD, 16 << 20);
    if (end != static_cast<uintptr_t>(-1) && start < end)
        madvise(reinterpret_cast<void *>(start), end - start, MADV_HUGEPAGE);
#endif
}
