/* page_escapes.cpp -- the tables of one escaping context. */
#include "report/page_escapes.h"

EscapeSet::EscapeSet(std::initializer_list<std::pair<char, const char *>> escapes)
{
    for (const auto &escape : escapes) {
        if (count == MOST)
            break;
        unsigned char byte = static_cast<unsigned char>(escape.first);
        size_t size = strlen(escape.second);
        if (size > LONGEST)
            size = LONGEST;
        bytes[count] = byte;
        memcpy(replacement[count], escape.second, size);
        length[count] = static_cast<unsigned char>(size);
        slot[byte] = static_cast<unsigned char>(++count);
    }
    /* Unused places repeat the first byte, so a search may test all five. */
    for (int i = count; i < MOST; ++i)
        bytes[i] = bytes[0];
    for (int i = 0; i < MOST; ++i)
        memset(lanes[i], bytes[i], sizeof lanes[i]);
}

