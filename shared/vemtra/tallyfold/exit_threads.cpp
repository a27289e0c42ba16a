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

static std::atomic<void (*)(void)> finish_on_exit{nullptr};

void vemtra_Exit_Threads_On_Exit(void (*finish)(void))
{
    finish_on_exit = finish;
}

void vemtra_Exit_Threads_Finish(void)
{
    void (*finish)(void) = finish_on_exit.load();
    if (finish != nullptr)
        finish();
}
