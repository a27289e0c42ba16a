/* console.cpp -- process exit, the out-of-memory end, and the progress
 * meter. */
#include "driver/console.h"

#include <cstdio>

#include "driver/settings.h"
#include "shared/vemtra/tallyfold/process_exit.h"

int tickTotal = 0;
int tickQuantum = 0;
int tickTicks = 0;
int tickNextTick = 0;

void tvx_Exit(int status)
{
    vemtra_Process_Exit(status);
}

void vemcov_Out_Of_Memory()
{
    fputs("FATAL ERROR: Out of memory.\n", stderr);
    tvx_Exit(2);
}

void startProgressMeter(int total)
{
    if (!bProgressMeter)
        return;
    tickTotal = total;
    tickTicks = 0;
    tickQuantum = static_cast<int>(total * 10.0 / 100.0 + 0.5);
    tickNextTick = tickQuantum;
}

void tickProgressMeter()
{
    if (!bProgressMeter)
        return;
    ++tickTicks;
    if (tickTicks < tickNextTick || tickTotal <= 0)
        return;

    /* 1. The percentage, rounded to nearest. */
    int percentage = static_cast<int>(tickTicks * 100.0 / tickTotal + 0.5);

    /* 2. The next report: one quantum on, but never past the last tick
     * while the run is not complete. */
    int next = tickNextTick + tickQuantum;
    if (next <= tickTotal)
        tickNextTick = next;
    else
        tickNextTick = percentage < 100 ? tickTotal : next;

    /* 3. and 4. The report. */
    if (tickTicks <= tickQuantum)
        fputs("Progress: ", stdout);
    if (percentage < 100)
        printf("%d%% .. ", percentage);
    else
        printf("%d%%", percentage);
}

void endProgressMeter()
{
    if (bProgressMeter)
        fputs("\n", stdout);
}
