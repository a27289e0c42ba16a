/* console.h -- process exit, the out-of-memory end, and the progress meter. */
#ifndef VEMCOV_DRIVER_CONSOLE_H
#define VEMCOV_DRIVER_CONSOLE_H

/* Ends the process with `status` (0 a completed run, 1 any reported error,
 * the usage or -helpx text, 2 out of memory). Standard I/O is flushed by the
 * normal process exit. Never returns. */
[[noreturn]] void tvx_Exit(int status);

/* Prints "FATAL ERROR: Out of memory.\n" to standard error and ends the run
 * with status 2. Also installed as the allocation failure handler. */
[[noreturn]] void vemcov_Out_Of_Memory();

/* Progress meter state: ticks expected, ticks between two reports, ticks so
 * far, and the tick count at which the next report is due. */
extern int tickTotal;
extern int tickQuantum;
extern int tickTicks;
extern int tickNextTick;

/* Starts the meter for `total` ticks (one per component); a report is due
 * every tenth of them, rounded to nearest. Does nothing when the meter is
 * off (-nopmeter). */
void startProgressMeter(int total);

/* Counts one tick and, when a report is due, prints "Progress: " before the
 * first report and "<n>% .. " (at 100%: "100%") to standard output, without
 * flushing. With fewer than five components every tick reports and the
 * "Progress: " prefix never appears. Does nothing when the meter is off. */
void tickProgressMeter();

/* Ends the meter's line: "\n" to standard output when the meter is on. */
void endProgressMeter();

#endif
