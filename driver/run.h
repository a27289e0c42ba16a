/* run.h -- the run driver: every step of a run, in its fixed order. */
#ifndef VEMCOV_DRIVER_RUN_H
#define VEMCOV_DRIVER_RUN_H

/* Runs the tool on the command line; returns the exit status of a completed
 * run (errors end the process directly). */
int vemcov_Run(int argc, char **argv);

#endif
