/* page_writer.cpp -- the page buffer and its number texts. */
#include "report/page_writer.h"

#include <cmath>

void PageWriter::putEscapedLong(const char *text, size_t length, const EscapeSet &escapes)
{
    while (length > 0) {
        size_t piece = length < ESCAPED_PIECE ? length : ESCAPED_PIECE;
        commit(escapeInto(room(piece * EscapeSet::LONGEST + 16), text, piece, escapes));
        text += piece;
        length -= piece;
    }
}

void PageWriter::flush()
{
    if (used_ != 0)
        fwrite(buffer_.get(), 1, used_, stream_);
    used_ = 0;
}

void PageWriter::putPercent6(double percent)
{
    putPercent(percent, 6);
}

void PageWriter::putPercent(double percent, int width)
{
    /* A value rounded to hundredths is within an ulp of n / 100, so the
     * nearest whole number of hundredths is what "%*.2f" prints. */
    if (!(percent >= 0.0 && percent < 1e15)) {
        char text[64];
        int length = snprintf(text, sizeof text, "%*.2f", width, percent);
        put(text, static_cast<size_t>(length));
        return;
    }
    uint64_t hundredths = static_cast<uint64_t>(std::llround(percent * 100.0));
    char text[32];
    char *end = text + sizeof text, *at = end;
    *--at = static_cast<char>('0' + hundredths % 10);
    *--at = static_cast<char>('0' + hundredths / 10 % 10);
    *--at = '.';
    uint64_t whole = hundredths / 100;
    do {
        *--at = static_cast<char>('0' + whole % 10);
        whole /= 10;
    } while (whole != 0);
    while (end - at < width)
        *--at = ' ';
    put(at, static_cast<size_t>(end - at));
}
