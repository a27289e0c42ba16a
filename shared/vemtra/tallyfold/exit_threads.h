/* exit_threads.h -- how many threads besides the run's own are at work
 * (page-writing threads of -j). While any are, ending the process must not
 * run its static destructors under them: the exit flushes the standard
 * streams and leaves at once instead. */
#ifndef VEMTRA_TALLYFOLD_EXIT_THREADS_H
#define VEMTRA_TALLYFOLD_EXIT_THREADS_H

/* Adds `count` (negative: removes) to the threads at work. */
void vemtra_Exit_Threads_Add(int count);

/* The threads at work now. */
int vemtra_Exit_Threads(void);

#endif
