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

#endif
