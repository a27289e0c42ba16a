/* dpi_stream.h -- positioned reads of an open dynamic profile.
 *
 * Segments are read in file order while the directory is built and on
 * demand afterwards, and every record refers to names elsewhere in the file.
 * The reader holds the whole file in memory (mapped, or read once through
 * the checked wrappers when it is no regular file) and decodes
 * little-endian values byte by byte. A read that the
 * file cannot satisfy ends the run with the checked-read message, exactly as
 * a short read would. The record is open so that the fixed-width reads,
 * several per block of every segment, are inlined; only the failure path
 * is a call.
 */
#ifndef VEMTRA_CLIENT_DPI_STREAM_H
#define VEMTRA_CLIENT_DPI_STREAM_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

struct VEMTRA_DPI_STREAM {
    FILE *fp;                 /* the open file (not owned) */
    const char *file_name;    /* for messages, or null */
    int64_t size;             /* bytes in the file */
    int64_t position;         /* logical read position */
    unsigned char *image;     /* the whole file, then one NUL byte */
    size_t mapped;            /* bytes mapped at image, or 0 when it was read */
};

/* Wraps the open stream `fp` (which stays owned by the caller). Learns the
 * file's size with a checked seek to its end and reads the file whole.
 * `file_name` is used in the checked-I/O messages and may be null. */
VEMTRA_DPI_STREAM *vemtra_Dpi_Stream_Create(FILE *fp, const char *file_name);

/* Releases the file's bytes and the record; does not close the file. */
void vemtra_Dpi_Stream_Free(VEMTRA_DPI_STREAM *stream);

/* The name used in the messages of the following reads (may be null). */
void vemtra_Dpi_Stream_Set_Name(VEMTRA_DPI_STREAM *stream, const char *file_name);

int64_t vemtra_Dpi_Stream_Size(const VEMTRA_DPI_STREAM *stream);
int64_t vemtra_Dpi_Stream_Tell(const VEMTRA_DPI_STREAM *stream);

/* Moves to an absolute offset; a position past the end is allowed (the next
 * read then fails). An offset that is no valid file position ends the run
 * with the checked-seek message. */
void vemtra_Dpi_Stream_Seek(VEMTRA_DPI_STREAM *stream, uint64_t offset);

/* Ends the run with the checked-read message: a read the file cannot
 * satisfy. */
[[noreturn]] void vemtra_Dpi_Stream_Short(VEMTRA_DPI_STREAM *stream);

/* Ends the run with the checked-read message unless `count` bytes remain
 * from the position; lets a reader test an announced array size before it
 * allocates for it. */
inline void vemtra_Dpi_Stream_Need(VEMTRA_DPI_STREAM *stream, uint64_t count)
{
    if (stream->position > stream->size || count > static_cast<uint64_t>(stream->size - stream->position))
        vemtra_Dpi_Stream_Short(stream);
}

/* Tells the processor that the bytes at `offset` will be read soon (a hint
 * only: nothing is read, and an offset past the end is ignored). */
inline void vemtra_Dpi_Stream_Prefetch(const VEMTRA_DPI_STREAM *stream, uint64_t offset)
{
    if (offset < static_cast<uint64_t>(stream->size))
        __builtin_prefetch(stream->image + offset);
}

/* Reads `count` bytes at the position and advances, or ends the run. */
void vemtra_Dpi_Stream_Read(VEMTRA_DPI_STREAM *stream, void *buffer, size_t count);

/* Skips `count` bytes that must be present (else ends the run). */
void vemtra_Dpi_Stream_Skip(VEMTRA_DPI_STREAM *stream, uint64_t count);

/* Decodes a little-endian value of `width` bytes from memory. The two
 * widths the format uses are one load each on a little-endian host. */
inline uint64_t vemtra_Le_Value(const unsigned char *bytes, int width)
{
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    if (width == 4) {
        uint32_t value;
        memcpy(&value, bytes, 4);
        return value;
    }
    if (width == 8) {
        uint64_t value;
        memcpy(&value, bytes, 8);
        return value;
    }
#endif
    uint64_t value = 0;
    for (int i = width - 1; i >= 0; i--)
        value = (value << 8) | bytes[i];
    return value;
}

/* Little-endian unsigned values of 4 and 8 bytes. */
inline uint32_t vemtra_Dpi_Read_U32(VEMTRA_DPI_STREAM *stream)
{
    vemtra_Dpi_Stream_Need(stream, 4);
    uint32_t value = static_cast<uint32_t>(vemtra_Le_Value(stream->image + stream->position, 4));
    stream->position += 4;
    return value;
}

inline uint64_t vemtra_Dpi_Read_U64(VEMTRA_DPI_STREAM *stream)
{
    vemtra_Dpi_Stream_Need(stream, 8);
    uint64_t value = vemtra_Le_Value(stream->image + stream->position, 8);
    stream->position += 8;
    return value;
}

/* The NUL-terminated string at absolute `offset`, up to its NUL or the end
 * of the file, in place: valid while the stream lives. An offset at or past
 * the end gives an empty string. Costs no copy, however long the name, so
 * that many records naming one long string cost its bytes once. */
const char *vemtra_Dpi_String(const VEMTRA_DPI_STREAM *stream, uint64_t offset);

/* The same string as a fresh allocation. The stream position is not
 * changed. */
char *VEMTRA_Read_String(VEMTRA_DPI_STREAM *stream, uint64_t offset);

#endif
