/* process_exit.h -- the one way the program ends early.
 *
 * Every fatal path of the library and of the tool (tool errors, failed
 * checked I/O, ASSERTX, tvx_Exit) ends here. The normal build calls exit(),
 * which flushes standard I/O; while page threads are at work it flushes
 * the streams and leaves without running static destructors. A fuzzing build links a different definition
 * that turns a documented exit into an ordinary return to the harness.
 */
#ifndef VEMTRA_TALLYFOLD_PROCESS_EXIT_H
#define VEMTRA_TALLYFOLD_PROCESS_EXIT_H

/* Ends the process with `status`. Never returns. */
[[noreturn]] void vemtra_Process_Exit(int status);

#endif
