/* dpi_stream.cpp -- positioned reads of a dynamic profile held in memory. */
#include "shared/vemtra/client/dpi_stream.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "shared/vemtra/tallyfold/checked_alloc.h"
#include "shared/vemtra/tallyfold/checked_io.h"

VEMTRA_DPI_STREAM *vemtra_Dpi_Stream_Create(FILE *fp, const char *file_name)
{
    VEMTRA_DPI_STREAM *stream = static_cast<VEMTRA_DPI_STREAM *>(VEMTRA_Calloc(1, sizeof(VEMTRA_DPI_STREAM)));
    stream->fp = fp;
    stream->file_name = file_name;
    checked_fseek(fp, 0, SEEK_END, file_name);
    stream->size = checked_ftell(fp, file_name);
    /* One read of the whole file: records point at names anywhere in it,
     * and a fetch in name order jumps about, so any window of it would be
     * read again and again. The NUL after the last byte ends a name that
     * runs to the end of the file, so names can be used in place. */
    stream->image = static_cast<unsigned char *>(VEMTRA_Malloc(static_cast<size_t>(stream->size) + 1));
    checked_fseek(fp, 0, SEEK_SET, file_name);
    if (stream->size > 0)
        checked_fread(stream->image, 1, static_cast<size_t>(stream->size), fp, file_name);
    stream->image[stream->size] = '\0';
    return stream;
}

void vemtra_Dpi_Stream_Free(VEMTRA_DPI_STREAM *stream)
{
    if (stream == nullptr)
        return;
    free(stream->image);
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
void vemtra_Dpi_Stream_Short(VEMTRA_DPI_STREAM *stream)
{
    unsigned char byte;
    checked_fseek(stream->fp, 0, SEEK_END, stream->file_name);
    errno = 0;
    for (;;) /* the first read fails, unless the file grew since it was measured */
        checked_fread(&byte, 1, 1, stream->fp, stream->file_name);
}

void vemtra_Dpi_Stream_Read(VEMTRA_DPI_STREAM *stream, void *buffer, size_t count)
{
    vemtra_Dpi_Stream_Need(stream, count);
    memcpy(buffer, stream->image + stream->position, count);
    stream->position += static_cast<int64_t>(count);
}

void vemtra_Dpi_Stream_Skip(VEMTRA_DPI_STREAM *stream, uint64_t count)
{
    vemtra_Dpi_Stream_Need(stream, count);
    stream->position += static_cast<int64_t>(count);
}

const char *vemtra_Dpi_String(const VEMTRA_DPI_STREAM *stream, uint64_t offset)
{
    if (offset >= static_cast<uint64_t>(stream->size))
        return "";
    return reinterpret_cast<const char *>(stream->image + offset);
}

char *VEMTRA_Read_String(VEMTRA_DPI_STREAM *stream, uint64_t offset)
{
    return VEMTRA_Strdup(vemtra_Dpi_String(stream, offset));
}
