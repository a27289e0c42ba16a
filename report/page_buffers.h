/* page_buffers.h -- the large buffers pages are built in, kept for the
 * next page rather than freed. A report makes tens of thousands of pages;
 * allocating and freeing a buffer of this size for each one made the
 * allocator gather its free memory at every free.
 */
#ifndef VEMCOV_REPORT_PAGE_BUFFERS_H
#define VEMCOV_REPORT_PAGE_BUFFERS_H

#include <cstddef>

/* The size of every buffer: larger than nearly every page, so that a page
 * reaches its file in one write, which also lets the kernel keep it in
 * large pages of its cache (a page written in small pieces is cached in
 * 4 KiB ones). */
const size_t PAGE_BUFFER_SIZE = size_t(1) << 18;

/* A buffer of PAGE_BUFFER_SIZE bytes, one given back before when there is
 * one; any thread may take one. Ends the run through the library's
 * out-of-memory routine when none can be allocated. */
char *takePageBuffer();

/* Gives `buffer` (from takePageBuffer) back for a later page. */
void givePageBuffer(char *buffer);

#endif
