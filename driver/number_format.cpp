/* number_format.cpp -- decimal texts with and without thousands
 * separators. */
#include "driver/number_format.h"

/* Writes the digits of `value` into `out` (grouped when `grouped`) and
 * terminates it; returns the position of the terminator. */
static char *writeDigits(char *out, uint64_t value, bool grouped)
{
    char reversed[NUMBER_TEXT_MAX];
    int n = 0;
    int digits = 0;
    do {
        if (grouped && digits > 0 && digits % 3 == 0)
            reversed[n++] = ',';
        reversed[n++] = static_cast<char>('0' + value % 10);
        value /= 10;
        ++digits;
    } while (value != 0);
    while (n > 0)
        *out++ = reversed[--n];
    *out = '\0';
    return out;
}

char *u64_to_ascii(char *buffer, uint64_t value)
{
    writeDigits(buffer, value, true);
    return buffer;
}

char *i64_to_ascii(char *buffer, int64_t value)
{
    char *out = buffer;
    uint64_t magnitude = static_cast<uint64_t>(value);
    if (value < 0) {
        *out++ = '-';
        /* Negate as unsigned: also right for the most negative value. */
        magnitude = 0 - magnitude;
    }
    writeDigits(out, magnitude, true);
    return buffer;
}

char *u64_to_ascii_no_sep(char *buffer, uint64_t value)
{
    writeDigits(buffer, value, false);
    return buffer;
}
