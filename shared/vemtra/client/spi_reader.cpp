/* spi_reader.cpp -- the fixed part ("header") of one static-profile line.
 *
 * A line is V3/V4 (five length fields, optional base directories), V1/V2
 * (three size fields) or unversioned (no V token). Every string field is one
 * white-space-free token with its spaces masked as '|'. The reader keeps
 * seven buffers for the whole process and only ever grows them.
 */
#include "shared/vemtra/client/spi_reader.h"

#include <cstdlib>
#include <initializer_list>
#include <cstring>
#include <sys/stat.h>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "shared/vemtra/client/src_root.h"
#include "shared/vemtra/tallyfold/checked_alloc.h"
#include "shared/vemtra/tallyfold/checked_io.h"

static const int32_t SPI_INITIAL_BUFFER = 4096;
static const int32_t SPI_BUFFER_SLACK = 32;

/* A reader-owned text buffer and its capacity in bytes. */
struct spi_buffer {
    char *text;
    int32_t capacity;
};

static spi_buffer bn_buff;               /* file base directory */
static spi_buffer fn_buff;               /* file name */
static spi_buffer bm_buff;               /* module base directory */
static spi_buffer mn_buff;               /* module name */
static spi_buffer rn_buff;               /* routine name */
static spi_buffer full_path_name_buff;   /* resolved source path */
static spi_buffer full_path_module_buff; /* resolved module path */

static void vemtra_Spi_Buffer_Create(spi_buffer *buffer, int32_t capacity)
{
    free(buffer->text);
    buffer->text = static_cast<char *>(VEMTRA_Malloc(static_cast<size_t>(capacity)));
    buffer->text[0] = '\0';
    buffer->capacity = capacity;
}

/* White space as the formatted reads of the C library see it in the "C"
 * locale: space, \t, \n, \v, \f, \r. */
static inline bool vemtra_Spi_Space(int c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

static inline bool vemtra_Spi_Digit(int c)
{
    return c >= '0' && c <= '9';
}

/* The reader takes its bytes from a stream, or from a whole file held in
 * memory; both give the same bytes, positions and failures. */
struct vemtra_spi_stream_source {
    FILE *stream;
    const char *file_name;

    int get() { return getc_unlocked(stream); }
    void unget(int c) { ungetc(c, stream); }
    /* Up to `max` bytes that are not white space, into `out`; the white
     * space that ends them is left unread. Returns how many. */
    int32_t copyToken(char *out, int32_t max)
    {
        int32_t n = 0;
        while (n < max) {
            int c = get();
            if (c == EOF)
                break;
            if (vemtra_Spi_Space(c)) {
                unget(c);
                break;
            }
            out[n++] = static_cast<char>(c);
        }
        return n;
    }
    int64_t tell() { return checked_ftell(stream, file_name); }
    void seek(int64_t position) { checked_fseek(stream, position, SEEK_SET, file_name); }
    /* Bytes between the position and the end of the file, or -1 when the
     * stream is not a regular file. */
    int64_t bytesLeft()
    {
        struct stat info;
        if (fstat(fileno(stream), &info) != 0 || !S_ISREG(info.st_mode))
            return -1;
        int64_t position = ftello(stream);
        if (position < 0 || position > info.st_size)
            return 0;
        return info.st_size - position;
    }
};

/* Positions are the window's: it only grows while a header is read. */
struct vemtra_spi_text_source {
    VEMTRA_SPI_TEXT *text;

    int get()
    {
        if (text->position == text->size && !VEMTRA_SPI_Text_More(text))
            return EOF;
        return static_cast<unsigned char>(text->bytes[text->position++]);
    }
    void unget(int) { text->position--; }
    /* As the stream's, on the window's bytes in place. */
    int32_t copyToken(char *out, int32_t max)
    {
        int32_t n = 0;
        while (n < max) {
            if (text->position == text->size && !VEMTRA_SPI_Text_More(text))
                break;
            const char *from = text->bytes + text->position;
            size_t available = text->size - text->position;
            size_t limit = available < static_cast<size_t>(max - n) ? available : static_cast<size_t>(max - n);
            size_t taken = 0;
            while (taken < limit && !vemtra_Spi_Space(static_cast<unsigned char>(from[taken])))
                ++taken;
            memcpy(out + n, from, taken);
            n += static_cast<int32_t>(taken);
            text->position += taken;
            if (taken < limit)
                break;
        }
        return n;
    }
    int64_t tell() { return static_cast<int64_t>(text->position); }
    void seek(int64_t position) { text->position = static_cast<size_t>(position); }
    int64_t bytesLeft()
    {
        struct stat info;
        int64_t at = text->window_offset + static_cast<int64_t>(text->position);
        if (fstat(fileno(text->stream), &info) != 0 || !S_ISREG(info.st_mode) || at > info.st_size)
            return static_cast<int64_t>(text->size - text->position);
        return info.st_size - at;
    }
};

/* Makes room for a token of `needed` bytes (terminator included). A token
 * can never be longer than what is left of the file, so an announced size
 * beyond that grows the buffer only as far as the file allows. */
template <typename Source>
static void vemtra_Spi_Buffer_Reserve(spi_buffer *buffer, int64_t needed, Source &in)
{
    if (needed <= buffer->capacity)
        return;
    int64_t left = in.bytesLeft();
    if (left >= 0 && needed > left + 1)
        needed = left + 1;
    if (needed <= buffer->capacity || needed > INT32_MAX - SPI_BUFFER_SLACK)
        return;
    vemtra_Spi_Buffer_Create(buffer, static_cast<int32_t>(needed) + SPI_BUFFER_SLACK);
}

/* Reads one white-space-delimited token into `buffer`, never more than it
 * holds. Returns 1, or 0 when there is no token or it does not fit. */
template <typename Source>
static int vemtra_Spi_Read_Token(Source &in, spi_buffer *buffer)
{
    /* As fscanf(" %<capacity - 1>s") reads it, without the cost of a
     * formatted read per token: white space skipped, then up to the buffer's
     * room of bytes that are not white space (NUL bytes included), the
     * white space after it left unread. */
    int c;
    do
        c = in.get();
    while (c != EOF && vemtra_Spi_Space(c));
    if (c == EOF)
        return 0;
    const int32_t room = buffer->capacity - 1;
    int32_t length = 0;
    buffer->text[length++] = static_cast<char>(c);
    if (length != room)
        length += in.copyToken(buffer->text + length, room - length);
    buffer->text[length] = '\0';
    /* strlen() of the token, which stops at a NUL byte inside it, is the
     * buffer's room only when the token filled it and holds no NUL. */
    if (length == room && memchr(buffer->text, '\0', static_cast<size_t>(length)) == nullptr) {
        int next = in.get();
        if (next != EOF)
            in.unget(next);
        if (next != EOF && !vemtra_Spi_Space(next))
            return 0;
    }
    return 1;
}

/* A decimal number as fscanf's "%d" or "%u" reads it, without the cost of
 * a formatted read: white space skipped, an optional sign, the digits, the
 * byte after them left unread; converted as that read converts it (strtol
 * or strtoul of the text, then narrowed to 32 bits). Returns 1, or 0 when no
 * digit follows. */
template <typename Source>
static int vemtra_Spi_Read_Number(Source &in, int is_unsigned, uint32_t *value)
{
    int c;
    do
        c = in.get();
    while (c != EOF && vemtra_Spi_Space(c));
    bool negative = false;
    if (c == '+' || c == '-') {
        negative = c == '-';
        c = in.get();
    }
    if (c == EOF || !vemtra_Spi_Digit(c)) {
        if (c != EOF)
            in.unget(c);
        return 0;
    }
    /* The digits' value, and whether it passed 64 bits, for the saturation
     * of strtol and strtoul. */
    uint64_t magnitude = 0;
    bool overflow = false;
    while (c != EOF && vemtra_Spi_Digit(c)) {
        uint64_t digit = static_cast<uint64_t>(c - '0');
        /* magnitude * 10 + digit passes UINT64_MAX exactly when this holds. */
        if (magnitude > UINT64_MAX / 10 || (magnitude == UINT64_MAX / 10 && digit > UINT64_MAX % 10))
            overflow = true;
        else
            magnitude = magnitude * 10 + digit;
        c = in.get();
    }
    if (c != EOF)
        in.unget(c);
    if (is_unsigned) {
        /* strtoul: saturates at its maximum; a minus sign negates. */
        uint64_t converted = overflow ? UINT64_MAX : (negative ? 0 - magnitude : magnitude);
        *value = static_cast<uint32_t>(converted);
    } else {
        /* strtol: saturates at either end of the 64-bit range. */
        const uint64_t limit = negative ? uint64_t(INT64_MAX) + 1 : uint64_t(INT64_MAX);
        int64_t converted;
        if (overflow || magnitude >= limit)
            converted = negative ? INT64_MIN : INT64_MAX;
        else
            converted = negative ? -static_cast<int64_t>(magnitude) : static_cast<int64_t>(magnitude);
        *value = static_cast<uint32_t>(static_cast<int32_t>(converted));
    }
    return 1;
}

/* "%d" of vemtra_Spi_Read_Number. */
template <typename Source>
static int vemtra_Spi_Read_Int(Source &in, int32_t *value)
{
    uint32_t bits;
    if (!vemtra_Spi_Read_Number(in, 0, &bits))
        return 0;
    *value = static_cast<int32_t>(bits);
    return 1;
}

/* Reads line, block count, (excluded count,) and linkage. Returns the number
 * of fields read before the first mismatch. */
template <typename Source>
static int vemtra_Spi_Read_Tail(Source &in, SPI_LINE_HEADER_S *record, int with_excluded)
{
    int read = 0;
    uint32_t line;
    int32_t count;
    if (!vemtra_Spi_Read_Number(in, 1, &line))
        return read;
    record->line = line;
    read++;
    if (!vemtra_Spi_Read_Int(in, &count))
        return read;
    record->block_count = count;
    read++;
    if (with_excluded) {
        if (!vemtra_Spi_Read_Int(in, &count))
            return read;
        record->excluded_block_count = count;
        read++;
    }
    /* " %c": the first byte that is not white space. */
    int linkage;
    do
        linkage = in.get();
    while (linkage != EOF && vemtra_Spi_Space(linkage));
    if (linkage == EOF)
        return read;
    record->linkage = static_cast<char>(linkage);
    return read + 1;
}

/* Joins `base` and `name` into `out`: the source root and the name when
 * re-rooting, else the base directory, a '/' when neither side has one, and
 * the name. */
static void vemtra_Spi_Resolve(spi_buffer *out, const char *base, const char *name, int reroot)
{
    const char *prefix = reroot ? VEMTRA_src_root_dir : base;
    size_t prefix_len = strlen(prefix);
    size_t name_len = strlen(name);
    size_t needed = prefix_len + name_len + 2;
    if (needed > static_cast<size_t>(out->capacity))
        vemtra_Spi_Buffer_Create(out, static_cast<int32_t>(needed) + SPI_BUFFER_SLACK);
    memcpy(out->text, prefix, prefix_len);
    size_t at = prefix_len;
    if (!reroot && prefix_len > 0 && prefix[prefix_len - 1] != '/' && name[0] != '/')
        out->text[at++] = '/';
    memcpy(out->text + at, name, name_len + 1);
}

static void vemtra_Spi_Unmask(char *text)
{
    char *end = text + strlen(text);
    while ((text = static_cast<char *>(memchr(text, '|', static_cast<size_t>(end - text)))) != nullptr)
        *text++ = ' ';
}

static void vemtra_Spi_Buffers_Ready()
{
    if (bn_buff.text != nullptr)
        return;
    spi_buffer *all[] = {&bn_buff, &fn_buff, &bm_buff, &mn_buff, &rn_buff, &full_path_name_buff,
                         &full_path_module_buff};
    for (spi_buffer *buffer : all)
        vemtra_Spi_Buffer_Create(buffer, SPI_INITIAL_BUFFER);
}

/* Steps 7 to 9 of a version 3 or 4 line, once its fields are read. */
static int vemtra_Spi_Finish_V3(SPI_LINE_HEADER_S *record, uint32_t use_src_root)
{
    /* 7 and 8. The resolved paths; each re-roots on its own base directory. */
    int root_in_force = use_src_root != 0 && VEMTRA_src_root_dir_len > 0;
    vemtra_Spi_Resolve(&full_path_name_buff, bn_buff.text, fn_buff.text, root_in_force && bn_buff.text[0] != '\0');
    vemtra_Spi_Resolve(&full_path_module_buff, bm_buff.text, mn_buff.text,
                       root_in_force && bm_buff.text[0] != '\0');
    record->full_path_name = full_path_name_buff.text;
    record->full_path_module = full_path_module_buff.text;

    /* 9. Spaces come back everywhere but in the routine name. */
    spi_buffer *masked[] = {&bn_buff, &fn_buff, &bm_buff, &mn_buff, &full_path_name_buff, &full_path_module_buff};
    for (spi_buffer *buffer : masked)
        vemtra_Spi_Unmask(buffer->text);
    return 1;
}

/* Where a token that starts at `p` ends: at white space, a NUL byte or
 * `end`. White space and NUL are all at most ' ', so sixteen bytes at a
 * time are searched for such a byte, then it is looked at. */
static const char *vemtra_Spi_Token_End(const char *p, const char *end)
{
#if defined(__SSE2__)
    const __m128i space = _mm_set1_epi8(' ');
    while (end - p >= 16) {
        __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        unsigned low = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_max_epu8(chunk, space), space)));
        if (low == 0) {
            p += 16;
            continue;
        }
        p += __builtin_ctz(low);
        if (vemtra_Spi_Space(static_cast<unsigned char>(*p)) || *p == '\0')
            return p;
        ++p;
    }
#endif
    while (p < end && !vemtra_Spi_Space(static_cast<unsigned char>(*p)) && *p != '\0')
        ++p;
    return p;
}

/* A version 3 or 4 line read in place, when all of it is in the window and
 * it has the plain form nearly every line has: no signs, numbers of at
 * most nine digits, no NUL byte, every token within its buffer. Its fields
 * are those the general reader would read, and the position ends where it
 * would. Returns -1, leaving everything as it was, for any other line. */
static int vemtra_Spi_Read_Header_Plain(VEMTRA_SPI_TEXT *text, SPI_LINE_HEADER_S *record, uint32_t use_src_root)
{
    const char *p = text->bytes + text->position;
    const char *end = static_cast<const char *>(memchr(p, '\n', text->size - text->position));
    if (end == nullptr || *p != 'V')
        return -1;
    ++p;
    auto skipBlanks = [&] {
        while (p < end && vemtra_Spi_Space(static_cast<unsigned char>(*p)))
            ++p;
    };
    /* A number of one to nine digits after blanks; -1 for anything else. */
    auto number = [&]() -> int64_t {
        skipBlanks();
        const char *first = p;
        int64_t value = 0;
        while (p < end && vemtra_Spi_Digit(static_cast<unsigned char>(*p)) && p - first < 9)
            value = value * 10 + (*p++ - '0');
        if (p == first || (p < end && vemtra_Spi_Digit(static_cast<unsigned char>(*p))))
            return -1;
        return value;
    };
    int64_t version = number();
    if (version != 3 && version != 4)
        return -1;
    int64_t lengths[5];
    for (int64_t &length : lengths)
        if ((length = number()) < 0)
            return -1;

    /* The reserves the general reader makes (they only grow the buffers),
     * from the position it makes them at: what is left of the file bounds
     * them. */
    vemtra_Spi_Buffers_Ready();
    const size_t start = text->position;
    text->position = static_cast<size_t>(p - text->bytes);
    vemtra_spi_text_source in{text};
    vemtra_Spi_Buffer_Reserve(&bn_buff, lengths[0] + 1, in);
    vemtra_Spi_Buffer_Reserve(&fn_buff, lengths[1], in);
    vemtra_Spi_Buffer_Reserve(&bm_buff, lengths[2] + 1, in);
    vemtra_Spi_Buffer_Reserve(&mn_buff, lengths[3], in);
    vemtra_Spi_Buffer_Reserve(&rn_buff, lengths[4], in);

    /* A token after blanks, copied into `buffer`; false when it does not
     * have the plain form. */
    auto token = [&](spi_buffer *buffer) {
        skipBlanks();
        const char *first = p;
        p = vemtra_Spi_Token_End(p, end);
        size_t length = static_cast<size_t>(p - first);
        if (length == 0 || (p < end && *p == '\0') || length > static_cast<size_t>(buffer->capacity - 1))
            return false;
        memcpy(buffer->text, first, length);
        buffer->text[length] = '\0';
        return true;
    };
    bn_buff.text[0] = '\0';
    bm_buff.text[0] = '\0';
    text->position = start;
    if ((lengths[0] != 0 && !token(&bn_buff)) || !token(&fn_buff) || (lengths[2] != 0 && !token(&bm_buff)) ||
        !token(&mn_buff) || !token(&rn_buff))
        return -1;
    int64_t line = number(), blocks = number(), excluded = number();
    skipBlanks();
    if (line < 0 || blocks < 0 || excluded < 0 || p == end)
        return -1;

    record->version = static_cast<int32_t>(version);
    record->file_base_dir = bn_buff.text;
    record->file_name = fn_buff.text;
    record->module_base_dir = bm_buff.text;
    record->module_name = mn_buff.text;
    record->routine_name = rn_buff.text;
    record->line = static_cast<uint32_t>(line);
    record->block_count = static_cast<int32_t>(blocks);
    record->excluded_block_count = static_cast<int32_t>(excluded);
    record->linkage = *p++;
    text->position = static_cast<size_t>(p - text->bytes);
    return vemtra_Spi_Finish_V3(record, use_src_root);
}

template <typename Source>
static int vemtra_Spi_Read_Header(Source &in, SPI_LINE_HEADER_S *record, uint32_t use_src_root)
{
    /* 1. Where the line starts, to come back for an unversioned line. */
    int64_t start = in.tell();

    /* 2. The version mark and the length fields. */
    int32_t version = 0;
    int has_number = 0;
    int first = in.get();
    if (first == 'V')
        has_number = vemtra_Spi_Read_Int(in, &version);
    else if (first != EOF)
        in.unget(first);
    int32_t bn_len = 0, fn_len = 0, bm_len = 0, mn_len = 0, rn_len = 0;
    int form; /* 3: V3/V4; 2: V2; 1: V1 and unversioned */
    if (has_number && (version == 3 || version == 4)) {
        for (int32_t *length : {&bn_len, &fn_len, &bm_len, &mn_len, &rn_len})
            if (!vemtra_Spi_Read_Int(in, length))
                return 0;
        form = 3;
    } else if (has_number && (version == 1 || version == 2)) {
        for (int32_t *length : {&fn_len, &mn_len, &rn_len})
            if (!vemtra_Spi_Read_Int(in, length))
                return 0;
        form = version;
    } else {
        fn_len = mn_len = rn_len = SPI_INITIAL_BUFFER;
        in.seek(start);
        form = 1;
    }
    record->version = has_number ? version : 1;

    /* 3. The buffers, created on the first call. */
    vemtra_Spi_Buffers_Ready();

    /* 4. Grow a buffer that cannot hold its announced field. The two base
     * directory lengths leave out the terminator; the other three count it. */
    vemtra_Spi_Buffer_Reserve(&bn_buff, int64_t(bn_len) + 1, in);
    vemtra_Spi_Buffer_Reserve(&fn_buff, fn_len, in);
    vemtra_Spi_Buffer_Reserve(&bm_buff, int64_t(bm_len) + 1, in);
    vemtra_Spi_Buffer_Reserve(&mn_buff, mn_len, in);
    vemtra_Spi_Buffer_Reserve(&rn_buff, rn_len, in);

    record->excluded_block_count = 0;
    bn_buff.text[0] = '\0';
    bm_buff.text[0] = '\0';
    record->file_base_dir = bn_buff.text;
    record->file_name = fn_buff.text;
    record->module_base_dir = bm_buff.text;
    record->module_name = mn_buff.text;
    record->routine_name = rn_buff.text;

    if (form != 3) {
        /* 5. Version 1 and 2 and unversioned lines: no base directories. */
        if (!vemtra_Spi_Read_Token(in, &fn_buff) || !vemtra_Spi_Read_Token(in, &mn_buff) ||
            !vemtra_Spi_Read_Token(in, &rn_buff))
            return 0;
        int wanted = form == 2 ? 4 : 3;
        if (vemtra_Spi_Read_Tail(in, record, form == 2) != wanted)
            return 0;
        record->full_path_name = fn_buff.text;
        record->full_path_module = mn_buff.text;
        vemtra_Spi_Unmask(fn_buff.text);
        vemtra_Spi_Unmask(mn_buff.text);
        return 1;
    }

    /* 6. Version 3 and 4 lines. */
    if (bn_len != 0 && !vemtra_Spi_Read_Token(in, &bn_buff))
        return 0;
    if (!vemtra_Spi_Read_Token(in, &fn_buff))
        return 0;
    if (bm_len != 0 && !vemtra_Spi_Read_Token(in, &bm_buff))
        return 0;
    if (!vemtra_Spi_Read_Token(in, &mn_buff) || !vemtra_Spi_Read_Token(in, &rn_buff))
        return 0;
    if (vemtra_Spi_Read_Tail(in, record, 1) != 4)
        return 0;

    return vemtra_Spi_Finish_V3(record, use_src_root);
}

int VEMTRA_SPI_Read_Line_Header(FILE *stream, const char *spi_file_name, SPI_LINE_HEADER_S *record,
                                uint32_t use_src_root)
{
    vemtra_spi_stream_source in{stream, spi_file_name};
    return vemtra_Spi_Read_Header(in, record, use_src_root);
}

int VEMTRA_SPI_Read_Line_Header_Text(VEMTRA_SPI_TEXT *text, SPI_LINE_HEADER_S *record, uint32_t use_src_root)
{
    int plain = vemtra_Spi_Read_Header_Plain(text, record, use_src_root);
    if (plain >= 0)
        return plain;
    vemtra_spi_text_source in{text};
    return vemtra_Spi_Read_Header(in, record, use_src_root);
}

/* Bytes asked of the stream at a time, and how far the window may have
 * moved on before its consumed part is dropped. */
static const size_t SPI_TEXT_PIECE = 1 << 18;

int VEMTRA_SPI_Text_More(VEMTRA_SPI_TEXT *text)
{
    if (text->at_end)
        return 0;
    if (text->size + SPI_TEXT_PIECE + 1 > text->capacity) {
        text->capacity = text->size + SPI_TEXT_PIECE + 1 > 2 * text->capacity ? text->size + SPI_TEXT_PIECE + 1
                                                                              : 2 * text->capacity;
        text->bytes = static_cast<char *>(VEMTRA_Realloc(text->bytes, text->capacity));
    }
    size_t got = fread(text->bytes + text->size, 1, SPI_TEXT_PIECE, text->stream);
    text->size += got;
    text->bytes[text->size] = '\0';
    if (got == 0) {
        text->at_end = 1;
        return 0;
    }
    return 1;
}

void VEMTRA_SPI_Text_Open(FILE *stream, const char *spi_file_name, VEMTRA_SPI_TEXT *text)
{
    *text = VEMTRA_SPI_TEXT{};
    text->stream = stream;
    text->file_name = spi_file_name;
    text->capacity = SPI_TEXT_PIECE + 1;
    text->bytes = static_cast<char *>(VEMTRA_Malloc(text->capacity));
    text->bytes[0] = '\0';
    if (VEMTRA_SPI_Text_More(text)) {
        /* The line reader notes where each line starts; a stream that has
         * no position fails here as it would on the first line. */
        text->window_offset = checked_ftell(stream, spi_file_name) - static_cast<int64_t>(text->size);
    }
}

int VEMTRA_SPI_Text_Empty(VEMTRA_SPI_TEXT *text)
{
    return text->position == text->size && !VEMTRA_SPI_Text_More(text);
}

int VEMTRA_SPI_Text_Next_Line(VEMTRA_SPI_TEXT *text)
{
    for (;;) {
        const char *newline = static_cast<const char *>(
            memchr(text->bytes + text->position, '\n', text->size - text->position));
        if (newline != nullptr) {
            text->position = static_cast<size_t>(newline - text->bytes) + 1;
            break;
        }
        text->position = text->size;
        if (!VEMTRA_SPI_Text_More(text))
            return 0;
    }
    /* Between lines the consumed part of the window is dropped. */
    if (text->position >= SPI_TEXT_PIECE) {
        memmove(text->bytes, text->bytes + text->position, text->size - text->position + 1);
        text->window_offset += static_cast<int64_t>(text->position);
        text->size -= text->position;
        text->position = 0;
    }
    return !VEMTRA_SPI_Text_Empty(text);
}

void VEMTRA_SPI_Text_Close(VEMTRA_SPI_TEXT *text)
{
    free(text->bytes);
    *text = VEMTRA_SPI_TEXT{};
}
