/* page_writer.h -- the text of a page, built in memory and handed to its
 * stream in large pieces, with the number texts the pages print made by
 * hand (the same bytes as their printf formats, without printf's cost on
 * rows that repeat thousands of times).
 */
#ifndef VEMCOV_REPORT_PAGE_WRITER_H
#define VEMCOV_REPORT_PAGE_WRITER_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "report/page_buffers.h"
#include "report/page_escapes.h"

class PageWriter {
public:
    /* Writes into `stream`, which stays the caller's to close. */
    explicit PageWriter(FILE *stream) : stream_(stream), buffer_(takePageBuffer()) {}
    /* Writes onto the end of `text` (each flush appends what was built):
     * for pieces made once and copied into several pages. */
    explicit PageWriter(std::string *text) : text_(text), buffer_(takePageBuffer()) {}
    ~PageWriter()
    {
        flush();
        givePageBuffer(buffer_);
    }
    PageWriter(const PageWriter &) = delete;
    PageWriter &operator=(const PageWriter &) = delete;

    void put(const char *text) { put(text, strlen(text)); }
    /* A text whose length is known when compiling (a string constant): the
     * copy is a few moves. */
    template <size_t N>
    void putLiteral(const char (&text)[N])
    {
        put(text, N - 1);
    }
    void put(const std::string &text) { put(text.data(), text.size()); }
    void put(const char *text, size_t length)
    {
        if (length > CAPACITY - used_) {
            flush();
            if (length >= CAPACITY) {
                writeOut(text, length);
                return;
            }
        }
        memcpy(buffer_ + used_, text, length);
        used_ += length;
    }
    void put(char c)
    {
        if (used_ == CAPACITY)
            flush();
        buffer_[used_++] = c;
    }

    /* `text` with the bytes of `escapes` replaced. Plain bytes are checked
     * and copied sixteen at a time, straight into the buffer. */
    void putEscaped(const char *text, size_t length, const EscapeSet &escapes)
    {
        if (length <= ESCAPED_PIECE)
            commit(escapeInto(room(length * EscapeSet::LONGEST + 16), text, length, escapes));
        else
            putEscapedLong(text, length, escapes);
    }

    /* Room for `length` bytes at the end of the buffer (length at most
     * ROOM_MOST): the caller writes them and hands back where it stopped. */
    static constexpr size_t ROOM_MOST = 1 << 14;
    /* The longest text escaped in one piece: its worst case fits the room. */
    static constexpr size_t ESCAPED_PIECE = (ROOM_MOST - 16) / EscapeSet::LONGEST;
    char *room(size_t length)
    {
        if (length > CAPACITY - used_)
            flush();
        return buffer_ + used_;
    }
    void commit(const char *end) { used_ = static_cast<size_t>(end - buffer_); }

    /* For a writer onto a text: the text's length once what was written so
     * far is flushed. */
    size_t textSize() const { return (text_ != nullptr ? text_->size() : 0) + used_; }

    /* "%d" and "%u" of the value. */
    void putInt(int64_t value)
    {
        if (value < 0) {
            put('-');
            putUnsigned(0 - static_cast<uint64_t>(value));
        } else {
            putUnsigned(static_cast<uint64_t>(value));
        }
    }
    void putUnsigned(uint64_t value) { commit(digitsInto(room(MOST_DIGITS), value)); }
    /* "%u" of the value at `out`, which has MOST_DIGITS bytes of room; where
     * the digits end. */
    static constexpr size_t MOST_DIGITS = 20;
    static char *digitsInto(char *out, uint64_t value)
    {
        /* The digits are made right-aligned in a buffer with room after
         * them, then moved in one fixed-size copy. */
        char digits[2 * MOST_DIGITS];
        char *end = digits + MOST_DIGITS, *at = end;
        do {
            *--at = static_cast<char>('0' + value % 10);
            value /= 10;
        } while (value != 0);
        memcpy(out, at, MOST_DIGITS);
        return out + (end - at);
    }

    /* What printf would print; for the few texts of a page's head, not
     * for its rows. */
    void putFormatted(const char *format, ...) __attribute__((format(printf, 2, 3)));

    /* "%6.2f" of a percentage already rounded to two decimals (0 to 100,
     * as roundHalfUp2 gives it). */
    void putPercent6(double percent);
    /* "%*.2f" of such a percentage, padded to `width` ("%.2f" with 0). */
    void putPercent(double percent, int width);

    /* Hands everything written so far to the file, after what was written
     * to the stream itself: one write for all of it. */
    void flush();

private:
    void putEscapedLong(const char *text, size_t length, const EscapeSet &escapes);
    void writeOut(const char *bytes, size_t length);

    static constexpr size_t CAPACITY = PAGE_BUFFER_SIZE;
    FILE *stream_ = nullptr;
    std::string *text_ = nullptr;
    char *buffer_;
    size_t used_ = 0;
};

#endif
