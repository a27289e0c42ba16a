/* source_reader.cpp -- line-by-line reading of a source file for the
 * listing. */
#include "report/source_reader.h"

#include <cstring>

SourceLineReader::SourceLineReader(FILE *stream_, std::vector<char> &buffer_) : stream(stream_), buffer(&buffer_)
{
    if (buffer->size() < SOURCE_READ_CHUNK)
        buffer->resize(SOURCE_READ_CHUNK);
    data = buffer->data();
}

SourceLineReader::SourceLineReader(const char *bytes, size_t size) : data(bytes), finished(true)
{
    const void *stop = memchr(bytes, 0xFF, size);
    end = stop != nullptr ? static_cast<size_t>(static_cast<const char *>(stop) - bytes) : size;
}

bool SourceLineReader::fill()
{
    if (finished)
        return false;
    /* Keep the unread bytes at the front; a line longer than the buffer
     * doubles it. */
    if (start > 0) {
        memmove(buffer->data(), buffer->data() + start, end - start);
        end -= start;
        start = 0;
    }
    if (end == buffer->size()) {
        buffer->resize(buffer->size() * 2);
        data = buffer->data();
    }

    size_t got = fread(buffer->data() + end, 1, buffer->size() - end, stream);
    if (got == 0) {
        finished = true;
        return false;
    }
    const void *stop = memchr(buffer->data() + end, 0xFF, got);
    if (stop != nullptr) {
        got = static_cast<const char *>(stop) - (buffer->data() + end);
        finished = true;
    }
    end += got;
    return got > 0;
}

bool SourceLineReader::nextLine(const char **text, size_t *length)
{
    for (;;) {
        const char *from = data + start;
        const void *newline = memchr(from + scanned, '\n', end - start - scanned);
        if (newline != nullptr) {
            size_t size = static_cast<const char *>(newline) - from + 1;
            *text = from;
            *length = size;
            start += size;
            scanned = 0;
            return true;
        }
        scanned = end - start;
        if (!fill()) {
            if (start == end)
                return false;
            /* The last line, without a line feed. */
            *text = data + start;
            *length = end - start;
            start = end;
            scanned = 0;
            return true;
        }
    }
}
