/* dpi_stream.cpp -- positioned reads of a dynamic profile held in memory. */
#include "shared/vemtra/client/dpi_stream.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "shared/vemtra/tallyfold/checked_alloc.h"
#include "shared/vemtra/tallyfold/checked_io.h"

/* The mapped profiles, for the bus error a mapping raises when its file
 * is cut short while the run reads it. */
struct vemtra_mapped_image {
    const unsigned char *bytes;
    size_t size;
    const char *file_name;
};
static const int MAPPED_MOST = 8;
static vemtra_mapped_image mapped_images[MAPPED_MOST];

static void vemtra_Write_Text(const char *text)
{
    size_t length = strlen(text);
    while (length > 0) {
        ssize_t written = write(STDERR_FILENO, text, length);
        if (written <= 0)
            return;
        text += written;
        length -= static_cast<size_t>(written);
    }
}

/* A read from a mapped profile that no longer holds the byte: the file
 * changed under the run. It ends as a failed read of that file would. */
static void vemtra_Mapped_Read_Failed(int, siginfo_t *info, void *)
{
    const vemtra_mapped_image *found = nullptr;
    const unsigned char *at = static_cast<const unsigned char *>(info->si_addr);
    for (const vemtra_mapped_image &image : mapped_images)
        if (image.bytes != nullptr && at >= image.bytes && at < image.bytes + image.size)
            found = &image;
    if (found == nullptr) {
        /* Not a profile's bytes: the default action. */
        signal(SIGBUS, SIG_DFL);
        raise(SIGBUS);
        return;
    }
    fflush(stdout);
    if (found->file_name != nullptr) {
        vemtra_Write_Text(found->file_name);
        vemtra_Write_Text(": the file was cut short while it was read\nFATAL ERROR: fread on file ");
        vemtra_Write_Text(found->file_name);
        vemtra_Write_Text(" failed\n");
    } else {
        vemtra_Write_Text("FATAL ERROR: fread on file failed\n");
    }
    _exit(1);
}

static void vemtra_Note_Mapping(const unsigned char *bytes, size_t size, const char *file_name)
{
    static bool handler_installed = false;
    if (!handler_installed) {
        struct sigaction action;
        memset(&action, 0, sizeof action);
        action.sa_sigaction = vemtra_Mapped_Read_Failed;
        action.sa_flags = SA_SIGINFO;
        sigemptyset(&action.sa_mask);
        sigaction(SIGBUS, &action, nullptr);
        handler_installed = true;
    }
    for (vemtra_mapped_image &image : mapped_images) {
        if (image.bytes == nullptr || image.bytes == bytes) {
            image = {bytes, size, file_name};
            return;
        }
    }
}

static void vemtra_Forget_Mapping(const unsigned char *bytes)
{
    for (vemtra_mapped_image &image : mapped_images)
        if (image.bytes == bytes)
            image = {};
}

/* The bytes of a regular file mapped read-only, followed by at least one
 * NUL byte: the rest of the last page reads as zeros, and when the file
 * fills its last page exactly an anonymous zero page is placed behind it.
 * Returns null when the file cannot be mapped (it is then read). */
static unsigned char *vemtra_Map_Image(FILE *fp, int64_t size, size_t *mapped)
{
    struct stat info;
    if (size <= 0 || fstat(fileno(fp), &info) != 0 || !S_ISREG(info.st_mode) || info.st_size != size)
        return nullptr;
    size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    size_t bytes = (static_cast<size_t>(size) / page + 1) * page;
    void *area = mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (area == MAP_FAILED)
        return nullptr;
    /* The file's pages are filled in now, in one go, rather than one fault
     * at a time. */
    if (mmap(area, static_cast<size_t>(size), PROT_READ, MAP_PRIVATE | MAP_FIXED | MAP_POPULATE, fileno(fp), 0) ==
        MAP_FAILED) {
        munmap(area, bytes);
        return nullptr;
    }
    *mapped = bytes;
    return static_cast<unsigned char *>(area);
}

/* How many profiles may be mapped at once; beyond, they are read. */
static bool vemtra_Mapping_Room()
{
    for (const vemtra_mapped_image &image : mapped_images)
        if (image.bytes == nullptr)
            return true;
    return false;
}

VEMTRA_DPI_STREAM *vemtra_Dpi_Stream_Create(FILE *fp, const char *file_name)
{
    VEMTRA_DPI_STREAM *stream = static_cast<VEMTRA_DPI_STREAM *>(VEMTRA_Calloc(1, sizeof(VEMTRA_DPI_STREAM)));
    stream->fp = fp;
    stream->file_name = file_name;
    checked_fseek(fp, 0, SEEK_END, file_name);
    stream->size = checked_ftell(fp, file_name);
    /* The whole file at once: records point at names anywhere in it, and a
     * fetch in name order jumps about, so any window of it would be read
     * again and again. The NUL after the last byte ends a name that runs
     * to the end of the file, so names can be used in place. A regular file
     * is mapped (no copy); anything else is read. */
    stream->image = vemtra_Mapping_Room() ? vemtra_Map_Image(fp, stream->size, &stream->mapped) : nullptr;
    checked_fseek(fp, 0, SEEK_SET, file_name);
    if (stream->image != nullptr) {
        vemtra_Note_Mapping(stream->image, stream->mapped, file_name);
        return stream;
    }
    stream->image = static_cast<unsigned char *>(VEMTRA_Malloc(static_cast<size_t>(stream->size) + 1));
    if (stream->size > 0)
        checked_fread(stream->image, 1, static_cast<size_t>(stream->size), fp, file_name);
    stream->image[stream->size] = '\0';
    return stream;
}

void vemtra_Dpi_Stream_Free(VEMTRA_DPI_STREAM *stream)
{
    if (stream == nullptr)
        return;
    if (stream->mapped != 0) {
        vemtra_Forget_Mapping(stream->image);
        munmap(stream->image, stream->mapped);
    }
    else
        free(stream->image);
    free(stream);
}

void vemtra_Dpi_Stream_Set_Name(VEMTRA_DPI_STREAM *stream, const char *file_name)
{
    stream->file_name = file_name;
    if (stream->mapped != 0 && file_name != nullptr)
        vemtra_Note_Mapping(stream->image, stream->mapped, file_name);
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
