/* main.cpp -- entry point of vemcov. */
#include "driver/run.h"

int main(int argc, char **argv)
{
    return vemcov_Run(argc, argv);
}
