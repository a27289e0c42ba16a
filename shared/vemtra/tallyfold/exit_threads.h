/* exit_threads.h -- how many threads besides the run's own are at work
 * (the page and file threads of -j). While any are, ending the process must not
 * run its static destructors under them: the exit flushes the standard
 * streams and leaves at once instead. */
#ifndef VEMTRA_TALLYFOLD_EXIT_THREADS_H
#define VEMTRA_TALLYFOLD_EXIT_THREADS_H

/* Adds `count` (negative: removes) to the threads at work. */
void vemtra_Exit_Threads_Add(int count);

/* The threads at work now. */
int vemtra_Exit_Threads(void);

/* `finish` (null: none) is called first when the run ends early, to let
 * threads end what must not be cut short: the file thread writes out what
 * was handed to it, as the run would have written it before ending. */
void vemtra_Exit_Threads_On_Exit(void (*finish)(void));

/* Calls what vemtra_Exit_Threads_On_Exit set, if anything. */
void vemtra_Exit_Threads_Finish(void);

#endif
