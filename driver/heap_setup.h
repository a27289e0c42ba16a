/* heap_setup.h -- how the process's heap is set up before the run. */
#ifndef VEMCOV_DRIVER_HEAP_SETUP_H
#define VEMCOV_DRIVER_HEAP_SETUP_H

/* The run builds its tables once (the profile's directory, the function
 * list, the module's positions) and keeps them: tens of megabytes written
 * for the first time. The heap is grown once, in one piece that the kernel
 * may back with large pages, and is not given back and taken again: one
 * page fault per 2 MiB instead of one per 4 KiB. Does nothing where the
 * system offers no such pages. */
void prepareHeap();

#endif
