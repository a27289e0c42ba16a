/* main.cpp -- entry point of vemcov. */
#include "driver/heap_setup.h"
#include "driver/run.h"

int main(int argc, char **argv)
{
    prepareHeap();
    return vemcov_Run(argc, argv);
}
