// fuzz_exit.h -- the fuzz build's process exit: a documented exit (tool
// error, failed checked read, ASSERTX) becomes an exception that the harness
// catches, so the next input can run.
#ifndef VEMCOV_TESTS_FUZZ_FUZZ_EXIT_H
#define VEMCOV_TESTS_FUZZ_FUZZ_EXIT_H

struct FuzzExit {
    int status;
};

#endif
