/* line_count.cpp -- counting a source file's lines. */
#include "analysis/line_count.h"

#include <sys/stat.h>

#include <cstdlib>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/* The newlines among `size` bytes, sixteen at a time. */
uint32_t countNewlines(const char *bytes, size_t size)
{
    uint32_t count = 0;
    size_t at = 0;
#if defined(__SSE2__)
    /* Each lane counts its newlines in a byte (a match compares as -1),
     * summed before it could pass 255. */
    const __m128i newline = _mm_set1_epi8('\n');
    const __m128i zero = _mm_setzero_si128();
    while (at + 16 <= size) {
        __m128i lanes = zero;
        for (int round = 0; round < 255 && at + 16 <= size; ++round, at += 16) {
            __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes + at));
            lanes = _mm_sub_epi8(lanes, _mm_cmpeq_epi8(chunk, newline));
        }
        __m128i sums = _mm_sad_epu8(lanes, zero);
        count += static_cast<uint32_t>(_mm_cvtsi128_si32(sums) + _mm_extract_epi16(sums, 4));
    }
#endif
    for (; at < size; ++at)
        count += bytes[at] == '\n';
    return count;
}

/* A last line without a newline still counts: one for a last byte (EOF
 * when there is none) that is not a newline. */
static uint32_t unfinishedLine(int last)
{
    return last != EOF && last != '\n' ? 1 : 0;
}

/* Counts the lines of an open stream: its newlines, plus one when the last
 * byte is not a newline. An empty file has no lines. */
uint32_t countLines(FILE *stream)
{
    uint32_t lines = 0;
    int last = EOF;
    char buffer[65536];
    size_t got;
    while ((got = fread(buffer, 1, sizeof buffer, stream)) > 0) {
        /* Newlines are dense (one every few dozen bytes): a counting pass
         * over the bytes beats a search per line. */
        lines += countNewlines(buffer, got);
        last = static_cast<unsigned char>(buffer[got - 1]);
    }
    return lines + unfinishedLine(last);
}

uint32_t countLinesKeeping(FILE *stream, size_t keepBelow, char **kept, size_t *size)
{
    *kept = nullptr;
    *size = 0;
    struct stat info;
    if (fstat(fileno(stream), &info) != 0 || !S_ISREG(info.st_mode) || info.st_size < 0 ||
        static_cast<uint64_t>(info.st_size) >= keepBelow)
        return countLines(stream);
    /* One byte more than the file holds: a read that fills it all means the
     * file grew, and the rest is counted as it comes. */
    size_t room = static_cast<size_t>(info.st_size) + 1;
    char *bytes = static_cast<char *>(malloc(room));
    if (bytes == nullptr)
        return countLines(stream);
    size_t got = fread(bytes, 1, room, stream);
    uint32_t lines = countNewlines(bytes, got);
    int last = got > 0 ? static_cast<unsigned char>(bytes[got - 1]) : EOF;
    if (got < room && !ferror(stream)) {
        *kept = bytes;
        *size = got;
        return lines + unfinishedLine(last);
    }
    free(bytes);
    /* A read error ends the count as in countLines; a file that grew has
     * the rest counted as it comes (the rest's own last line included). */
    uint32_t rest = ferror(stream) ? 0 : countLines(stream);
    return rest > 0 ? lines + rest : lines + unfinishedLine(last);
}
