/* dpi_stream.cpp -- a small page cache over a checked, read-only stream. */
#include "shared/vemtra/client/dpi_stream.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "shared/vemtra/tallyfold/checked_io.h"

static const int64_t DPI_PAGE_SIZE = 64 * 1024;
static const int DPI_PAGE_SLOTS = 8; /* any page in any slot; the least recently used goes */

struct VEMTRA_DPI_PAGE {
    int64_t number;        /* page number held, -1 for none */
    int64_t length;        /* valid bytes (the last page of the file is short) */
    uint64_t last_used;    /* value of the stream's use counter at the last hit */
    unsigned char *bytes;  /* DPI_PAGE_SIZE bytes */
};

struct VEMTRA_DPI_STREAM {
    FILE *fp;                              /* the open file (not owned) */
    const char *file_name;                 /* for messages, or null */
    int64_t size;                          /* bytes in the file */
    int64_t position;                      /* logical read position */
    uint64_t uses;                         /* page lookups so far */
    int last_slot;                         /* slot of the most recent hit */
    VEMTRA_DPI_PAGE pages[DPI_PAGE_SLOTS];
};

VEMTRA_DPI_STREAM *vemtra_Dpi_Stream_Create(FILE *fp, const char *file_name)
{
    VEMTRA_DPI_STREAM *stream = static_cast<VEMTRA_DPI_STREAM *>(calloc(1, sizeof(VEMTRA_DPI_STREAM)));
    stream->fp = fp;
    stream->file_name = file_name;
    checked_fseek(fp, 0, SEEK_END, file_name);
    stream->size = checked_ftell(fp, file_name);
    for (VEMTRA_DPI_PAGE &page : stream->pages)
        page.number = -1;
    return stream;
}

void vemtra_Dpi_Stream_Free(VEMTRA_DPI_STREAM *stream)
{
    if (stream == nullptr)
        return;
    for (VEMTRA_DPI_PAGE &page : stream->pages)
        free(page.bytes);
    free(stream);
}

void vemtra_Dpi_Stream_Set_Name(VEMTRA_DPI_STREAM *stream, const char *file_name)
{
    stream->file_name = file_name;
}

int64_t vemtra_Dpi_Stream_Size(const VEMTRA_DPI_STREAM *stream)
{
    return stream->size;
}

int64_t vemtra_Dpi_Stream_Tell(const VEMTRA_DPI_STREAM *stream)
{
    return stream->position;
}

void vemtra_Dpi_Stream_Seek(VEMTRA_DPI_STREAM *stream, uint64_t offset)
{
    if (offset > static_cast<uint64_t>(INT64_MAX)) {
        /* Not a file position: let the checked seek report it. */
        checked_fseek(stream->fp, static_cast<int64_t>(offset), SEEK_SET, stream->file_name);
    }
    stream->position = static_cast<int64_t>(offset);
}

/* The read cannot be satisfied: perform one at the end of the file so that
 * the checked wrapper reports it and ends the run. There is no system error
 * behind an end of file. */
[[noreturn]] static void vemtra_Dpi_Stream_Short(VEMTRA_DPI_STREAM *stream)
{
    unsigned char byte;
    checked_fseek(stream->fp, 0, SEEK_END, stream->file_name);
    errno = 0;
    for (;;) /* the first read fails, unless the file grew since it was measured */
        checked_fread(&byte, 1, 1, stream->fp, stream->file_name);
}

void vemtra_Dpi_Stream_Need(VEMTRA_DPI_STREAM *stream, uint64_t count)
{
    if (stream->position > stream->size || count > static_cast<uint64_t>(stream->size - stream->position))
        vemtra_Dpi_Stream_Short(stream);
}

/* The page that holds byte `offset` (which lies inside the file). */
static const VEMTRA_DPI_PAGE *vemtra_Dpi_Page(VEMTRA_DPI_STREAM *stream, int64_t offset)
{
    int64_t number = offset / DPI_PAGE_SIZE;
    VEMTRA_DPI_PAGE *page = &stream->pages[stream->last_slot];
    if (page->number != number) {
        int victim = 0;
        for (int slot = 0; slot < DPI_PAGE_SLOTS; slot++) {
            if (stream->pages[slot].number == number) {
                victim = slot;
                break;
            }
            if (stream->pages[slot].last_used < stream->pages[victim].last_used)
                victim = slot;
        }
        stream->last_slot = victim;
        page = &stream->pages[victim];
    }
    page->last_used = ++stream->uses;
    if (page->number != number) {
        if (page->bytes == nullptr)
            page->bytes = static_cast<unsigned char *>(malloc(DPI_PAGE_SIZE));
        int64_t start = number * DPI_PAGE_SIZE;
        int64_t length = stream->size - start < DPI_PAGE_SIZE ? stream->size - start : DPI_PAGE_SIZE;
        page->number = -1;
        checked_fseek(stream->fp, start, SEEK_SET, stream->file_name);
        checked_fread(page->bytes, 1, static_cast<size_t>(length), stream->fp, stream->file_name);
        page->number = number;
        page->length = length;
    }
    return page;
}

void vemtra_Dpi_Stream_Read(VEMTRA_DPI_STREAM *stream, void *buffer, size_t count)
{
    vemtra_Dpi_Stream_Need(stream, count);
    unsigned char *out = static_cast<unsigned char *>(buffer);
    while (count > 0) {
        const VEMTRA_DPI_PAGE *page = vemtra_Dpi_Page(stream, stream->position);
        int64_t within = stream->position - page->number * DPI_PAGE_SIZE;
        size_t take = static_cast<size_t>(page->length - within);
        if (take > count)
            take = count;
        memcpy(out, page->bytes + within, take);
        out += take;
        count -= take;
        stream->position += static_cast<int64_t>(take);
    }
}

void vemtra_Dpi_Stream_Skip(VEMTRA_DPI_STREAM *stream, uint64_t count)
{
    vemtra_Dpi_Stream_Need(stream, count);
    stream->position += static_cast<int64_t>(count);
}

uint64_t vemtra_Le_Value(const unsigned char *bytes, int width)
{
    uint64_t value = 0;
    for (int i = width - 1; i >= 0; i--)
        value = (value << 8) | bytes[i];
    return value;
}

uint32_t vemtra_Dpi_Read_U32(VEMTRA_DPI_STREAM *stream)
{
    unsigned char bytes[4];
    vemtra_Dpi_Stream_Read(stream, bytes, sizeof bytes);
    return static_cast<uint32_t>(vemtra_Le_Value(bytes, 4));
}

uint64_t vemtra_Dpi_Read_U64(VEMTRA_DPI_STREAM *stream)
{
    unsigned char bytes[8];
    vemtra_Dpi_Stream_Read(stream, bytes, sizeof bytes);
    return vemtra_Le_Value(bytes, 8);
}

char *VEMTRA_Read_String(VEMTRA_DPI_STREAM *stream, uint64_t offset)
{
    if (offset >= static_cast<uint64_t>(stream->size)) {
        char *empty = static_cast<char *>(malloc(1));
        empty[0] = '\0';
        return empty;
    }
    /* Count up to the NUL or the end of the file, then copy. */
    int64_t start = static_cast<int64_t>(offset);
    int64_t end = start;
    while (end < stream->size) {
        const VEMTRA_DPI_PAGE *page = vemtra_Dpi_Page(stream, end);
        int64_t within = end - page->number * DPI_PAGE_SIZE;
        const void *nul = memchr(page->bytes + within, '\0', static_cast<size_t>(page->length - within));
        if (nul != nullptr) {
            end += static_cast<const unsigned char *>(nul) - (page->bytes + within);
            break;
        }
        end += page->length - within;
    }
    size_t length = static_cast<size_t>(end - start);
    char *text = static_cast<char *>(malloc(length + 1));
    int64_t saved = stream->position;
    stream->position = start;
    vemtra_Dpi_Stream_Read(stream, text, length);
    stream->position = saved;
    text[length] = '\0';
    return text;
}
