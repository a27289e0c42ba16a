/* run.cpp -- the run driver. The steps of a run join here, in their fixed
 * order, as the stages that perform them exist. */
#include "driver/run.h"

int vemcov_Run(int argc, char **argv)
{
    (void)argc;
    (void)argv;
    return 0;
}
