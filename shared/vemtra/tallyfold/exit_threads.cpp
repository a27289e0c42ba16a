/* exit_threads.cpp -- the count of threads at work beside the run's own. */
#include "shared/vemtra/tallyfold/exit_threads.h"

#include <atomic>

static std::atomic<int> threads_at_work{0};

void vemtra_Exit_Threads_Add(int count)
{
    threads_at_work += count;
}

int vemtra_Exit_Threads(void)
{
    return threads_at_work.load();
}
