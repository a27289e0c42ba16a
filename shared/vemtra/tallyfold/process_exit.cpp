/* process_exit.cpp -- ends the process through exit(), flushing stdio. */
#include "shared/vemtra/tallyfold/process_exit.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "shared/vemtra/tallyfold/checked_io.h"
#include "shared/vemtra/tallyfold/exit_threads.h"

void vemtra_Process_Exit(int status)
{
    vemtra_Exit_Threads_Finish();
    vemtra_Cut_Rewritten_Files();
    /* With page threads at work, exit() would destroy what they still use;
     * the streams are flushed and the process leaves at once, by the first
     * thread that ends it (a second one waits for that). */
    if (vemtra_Exit_Threads() > 0) {
        static std::mutex leaving;
        leaving.lock();
        fflush(nullptr);
        _exit(status);
    }
    std::exit(status);
}
