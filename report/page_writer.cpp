/* page_writer.cpp -- the page buffer and its number texts. */
#include "report/page_writer.h"

#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <string>
#include <unistd.h>

#include "report/file_handoff.h"

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
    if (used_ == 0)
        return;
    /* A page the file thread writes goes straight into its queue. */
    if (stream_ == nullptr || !handOffPageBytes(stream_, buffer_, used_))
        writeOut(buffer_, used_);
    used_ = 0;
}

void PageWriter::writeOut(const char *bytes, size_t length)
{
    if (text_ != nullptr) {
        text_->append(bytes, length);
        return;
    }
    /* Straight to the file, past the stream's small buffer, which would cut
     * the bytes into its own pieces; what the stream holds goes first. */
    int file = fileno(stream_);
    if (file >= 0 && fflush(stream_) == 0) {
        while (length > 0) {
            ssize_t written = write(file, bytes, length);
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0)
                break;
            bytes += written;
            length -= static_cast<size_t>(written);
        }
    }
    /* What could not be written goes through the stream, which then fails
     * alike and keeps the failure and its cause for the check when the
     * file is closed (a stream without a file, in memory, takes it all). */
    if (length > 0)
        fwrite(bytes, 1, length, stream_);
}

void PageWriter::putFormatted(const char *format, ...)
{
    va_list args, again;
    va_start(args, format);
    va_copy(again, args);
    char *out = room(ROOM_MOST);
    int length = vsnprintf(out, ROOM_MOST, format, args);
    if (length >= 0 && static_cast<size_t>(length) < ROOM_MOST) {
        commit(out + length);
    } else if (length > 0) {
        std::string text(static_cast<size_t>(length) + 1, '\0');
        vsnprintf(&text[0], text.size(), format, again);
        put(text.data(), static_cast<size_t>(length));
    }
    va_end(again);
    va_end(args);
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
