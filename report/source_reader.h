/* source_reader.h -- reads a source file line by line through one large
 * buffer, for the annotated listing.
 *
 * Reading ends at the end of the file, at a read error, and also at the
 * first byte 0xFF: the listing holds characters as signed bytes, where that
 * byte compares equal to end of file, so nothing after it is listed.
 */
#ifndef VEMCOV_REPORT_SOURCE_READER_H
#define VEMCOV_REPORT_SOURCE_READER_H

#include <cstddef>
#include <cstdio>
#include <vector>

/* Bytes read from the file at a time (the buffer grows beyond this only
 * for a longer line). */
const size_t SOURCE_READ_CHUNK = 1 << 20;

class SourceLineReader {
public:
    /* Reads `stream` through `buffer`, which the caller keeps between files
     * so that it is allocated once per run. */
    SourceLineReader(FILE *stream, std::vector<char> &buffer);
    /* Reads the `size` bytes of a file read whole before, which stay the
     * caller's and valid while the reader is used. */
    SourceLineReader(const char *bytes, size_t size);

    /* The next line: its bytes, the line feed included when it has one (only
     * the last line can lack it). False when nothing is left. The bytes stay
     * valid until the next call. */
    bool nextLine(const char **text, size_t *length);

    /* The bytes read and not yet taken, reading more when none are left;
     * false when nothing is left. For a reader that finds the line's end
     * itself while copying. */
    bool available(const char **text, size_t *length)
    {
        if (start == end && !fill() && start == end)
            return false;
        *text = data + start;
        *length = end - start;
        return true;
    }
    /* Takes the first `length` bytes of those available. */
    void take(size_t length)
    {
        start += length;
        scanned = 0;
    }

private:
    /* Reads more of the file behind the unread bytes; false when nothing
     * more can come. */
    bool fill();

    FILE *stream = nullptr;
    std::vector<char> *buffer = nullptr; /* the reading buffer, null for bytes read before */
    const char *data;     /* the bytes: the buffer's, or those read before */
    size_t start = 0;     /* first unread byte */
    size_t end = 0;       /* end of the bytes read */
    size_t scanned = 0;   /* bytes from start already searched for a line feed */
    bool finished = false;
};

#endif
