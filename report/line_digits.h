/* line_digits.h -- a page's line numbers as text, one after the other. */
#ifndef VEMCOV_REPORT_LINE_DIGITS_H
#define VEMCOV_REPORT_LINE_DIGITS_H

#include <cstddef>

/* The current line's number as decimal text, counted up in place as the
 * page moves on (no division per line). The digits end at `END` and
 * are followed by room, so that they can be copied in one fixed-size move. */
struct LineDigits {
    static const size_t END = 16;
    char text[END + 16] = {};
    char *first = text + END;
    size_t length() const { return static_cast<size_t>(text + END - first); }
    /* From "" (line 0) to "1", from "129" to "130", from "99" to "100". */
    void next()
    {
        char *digit = text + END - 1;
        while (digit >= first && *digit == '9')
            *digit-- = '0';
        if (digit < first)
            *--first = '1';
        else
            ++*digit;
    }
};

#endif
