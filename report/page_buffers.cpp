/* page_buffers.cpp -- the kept page buffers. */
#include "report/page_buffers.h"

#include <mutex>
#include <new>
#include <vector>

#include "shared/vemtra/tallyfold/checked_alloc.h"

namespace {

std::mutex lock;
/* Buffers given back, taken again last in, first out: the last one given
 * back is the likeliest to be in the processor's cache still. Never
 * destroyed: a page thread may give one back while the run exits, and the
 * buffers stay reachable for the leak checker. */
std::vector<char *> &spare = *new std::vector<char *>;

} // namespace

char *takePageBuffer()
{
    {
        std::lock_guard<std::mutex> hold(lock);
        if (!spare.empty()) {
            char *buffer = spare.back();
            spare.pop_back();
            return buffer;
        }
    }
    char *buffer = new (std::nothrow) char[PAGE_BUFFER_SIZE];
    if (buffer == nullptr)
        VEMTRA_Out_Of_Memory();
    return buffer;
}

void givePageBuffer(char *buffer)
{
    if (buffer == nullptr)
        return;
    std::lock_guard<std::mutex> hold(lock);
    spare.push_back(buffer);
}
