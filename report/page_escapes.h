/* page_escapes.h -- text escaped for one context of a page (markup,
 * attribute values, source listings): a few bytes replaced by entities,
 * every other byte copied. Text is mostly plain, so it is checked and
 * copied sixteen bytes at a time.
 */
#ifndef VEMCOV_REPORT_PAGE_ESCAPES_H
#define VEMCOV_REPORT_PAGE_ESCAPES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <utility>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/* The bytes one context escapes (at most five) and what each becomes (at
 * most eight bytes). */
class EscapeSet {
public:
    EscapeSet(std::initializer_list<std::pair<char, const char *>> escapes);

    static const int MOST = 5;
    static const size_t LONGEST = 8;
    int count = 0;
    unsigned char bytes[MOST] = {};
    /* Each replacement in an eight-byte slot, so that it is copied whole. */
    char replacement[MOST][LONGEST] = {};
    unsigned char length[MOST] = {};
    /* 1 + the slot of a byte to escape, else 0. */
    unsigned char slot[256] = {};
    /* Each byte to escape sixteen times, for comparing a chunk at once
     * (unused places repeat the first byte). */
    alignas(16) unsigned char lanes[MOST][16] = {};
};

#if defined(__SSE2__)
#if defined(__SANITIZE_ADDRESS__)
#define VEMCOV_EXACT_READS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEMCOV_EXACT_READS 1
#endif
#endif

/* The last `left` (< 16) bytes of a text as a chunk; the bytes after them
 * are not looked at. Sixteen bytes that lie within one memory page can all
 * be read when the first can, so the chunk is loaded in place then; across
 * a page end (and under the address checker, which knows only the text's
 * own bytes) the bytes are copied first. */
inline __m128i tailChunk(const char *p, size_t left)
{
#if !defined(VEMCOV_EXACT_READS)
    if ((reinterpret_cast<uintptr_t>(p) & 4095) <= 4096 - 16)
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
#endif
    alignas(16) char tail[16] = {};
    memcpy(tail, p, left);
    return _mm_load_si128(reinterpret_cast<const __m128i *>(tail));
}

/* The places of the bytes to escape in a chunk of sixteen, as bits. */
inline unsigned escapesIn(__m128i chunk, const EscapeSet &escapes)
{
    auto lane = [&](int i) { return _mm_load_si128(reinterpret_cast<const __m128i *>(escapes.lanes[i])); };
    __m128i hits = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(chunk, lane(0)), _mm_cmpeq_epi8(chunk, lane(1))),
                                _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(chunk, lane(2)), _mm_cmpeq_epi8(chunk, lane(3))),
                                             _mm_cmpeq_epi8(chunk, lane(4))));
    return static_cast<unsigned>(_mm_movemask_epi8(hits));
}
#endif

/* Copies `text` to `out` with its escapes replaced; `out` has room for
 * LONGEST bytes per input byte plus sixteen. With `StopAtLineFeed`, the
 * copy ends at the first line feed, which is taken but not copied. Returns
 * the end of the copy; `*taken` is the number of bytes of `text` taken
 * (all of them unless a line feed stopped the copy). */
template <bool StopAtLineFeed>
inline char *escapeUntil(char *out, const char *text, size_t length, const EscapeSet &escapes, size_t *taken)
{
    const char *p = text;
    const char *end = text + length;
#if defined(__SSE2__)
    if (escapes.count > 0) {
        const __m128i lineFeed = _mm_set1_epi8('\n');
        for (;;) {
            size_t left = static_cast<size_t>(end - p);
            if (left == 0)
                break;
            __m128i chunk;
            unsigned valid = 0xFFFF;
            if (left >= 16) {
                chunk = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
            } else {
                chunk = tailChunk(p, left);
                valid = (1u << left) - 1;
            }
            /* The chunk is stored whole; only the bytes before the first
             * escape (or line feed) count. */
            _mm_storeu_si128(reinterpret_cast<__m128i *>(out), chunk);
            unsigned mask = escapesIn(chunk, escapes);
            if (StopAtLineFeed)
                mask |= static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(chunk, lineFeed)));
            mask &= valid;
            if (mask == 0) {
                size_t plain = left < 16 ? left : 16;
                p += plain;
                out += plain;
                continue;
            }
            unsigned plain = static_cast<unsigned>(__builtin_ctz(mask));
            p += plain;
            out += plain;
            if (StopAtLineFeed && *p == '\n') {
                *taken = static_cast<size_t>(p + 1 - text);
                return out;
            }
            int which = escapes.slot[static_cast<unsigned char>(*p++)] - 1;
            memcpy(out, escapes.replacement[which], EscapeSet::LONGEST);
            out += escapes.length[which];
        }
        *taken = length;
        return out;
    }
#endif
    for (; p < end; ++p) {
        if (StopAtLineFeed && *p == '\n') {
            *taken = static_cast<size_t>(p + 1 - text);
            return out;
        }
        int which = escapes.slot[static_cast<unsigned char>(*p)];
        if (which == 0) {
            *out++ = *p;
            continue;
        }
        memcpy(out, escapes.replacement[which - 1], EscapeSet::LONGEST);
        out += escapes.length[which - 1];
    }
    *taken = length;
    return out;
}

/* Copies `text` to `out` with its escapes replaced (as escapeUntil, to the
 * end of `text`). */
inline char *escapeInto(char *out, const char *text, size_t length, const EscapeSet &escapes)
{
    size_t taken;
    return escapeUntil<false>(out, text, length, escapes, &taken);
}

#endif
