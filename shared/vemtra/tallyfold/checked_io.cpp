/* checked_io.cpp -- locked opens and reads/writes/seeks that cannot fail
 * silently. */
#include "shared/vemtra/tallyfold/checked_io.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <vector>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include "shared/vemtra/tallyfold/process_exit.h"

/* The first 16 bytes stay outside the lock: the suite's writer keeps its own
 * bookkeeping there. */
static const off_t LOCK_START = 16;

/* Translates an fopen mode into open(2) flags. */
static int vemtra_Open_Flags(const char *mode)
{
    bool has_append = strchr(mode, 'a') != nullptr;
    bool has_write = strchr(mode, 'w') != nullptr;
    bool has_plus = strchr(mode, '+') != nullptr;
    bool has_read = strchr(mode, 'r') != nullptr;

    int flags = 0;
    if (has_append)
        flags |= O_CREAT | O_APPEND;
    else if (has_write)
        flags |= O_CREAT | O_TRUNC;

    if (has_plus)
        flags |= O_RDWR;
    else if (!has_read)
        flags |= O_WRONLY;
    else
        flags |= O_RDONLY;
    return flags;
}

FILE *checked_fopen(const char *path, const char *mode)
{
    bool exclusive = strpbrk(mode, "+aw") != nullptr;
    const char *use = exclusive ? "exclusive" : "shared";

    int fd = open(path, vemtra_Open_Flags(mode), 0666);
    if (fd < 0)
        return nullptr;

    struct flock lock;
    memset(&lock, 0, sizeof lock);
    lock.l_type = exclusive ? F_WRLCK : F_RDLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = LOCK_START;
    lock.l_len = 0; /* to the end, however far the file grows */
    lock.l_pid = getpid();

    if (fcntl(fd, F_SETLKW, &lock) == -1) {
        int error = errno;
        if (error == ENOLCK || error == EACCES) {
            fprintf(stderr,
                    "WARNING: %s lock of %s failed (access denied); I/O on file is unsafe in a parallel build environment\n",
                    use, path);
        } else {
            fprintf(stderr, "ERROR: %s lock of %s failed, code = %d\n\t%s", use, path, error, strerror(error));
            close(fd);
            return nullptr;
        }
    }

    FILE *stream = fdopen(fd, mode);
    if (stream == nullptr) {
        close(fd);
        return nullptr;
    }
    return stream;
}

FILE *VEMTRA_Open_Regular_File(const char *path)
{
    /* Without O_NONBLOCK the open of a FIFO waits for a writer forever. */
    int fd = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return nullptr;
    struct stat status;
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(fd);
        errno = ENOENT;
        return nullptr;
    }
    /* O_NONBLOCK stays: it changes nothing for a regular file. */
    FILE *stream = fdopen(fd, "r");
    if (stream == nullptr)
        close(fd);
    return stream;
}

/* Closes `stream`; a failure of its writes, of the last flush, of the close
 * or `earlier` (an errno value, or 0) ends the run with the message. */
static void vemtra_Close_Output(FILE *stream, const char *file_name, int earlier)
{
    /* A write that already failed left its cause in errno, unless a later
     * call replaced it; then the report can only say EIO. */
    int error = 0;
    if (ferror(stream))
        error = errno != 0 ? errno : EIO;
    if (error == 0)
        error = earlier;
    errno = 0;
    if (fflush(stream) != 0 && error == 0)
        error = errno != 0 ? errno : EIO;
    if (fclose(stream) != 0 && error == 0)
        error = errno != 0 ? errno : EIO;
    if (error == 0)
        return;
    fprintf(stderr, "ERROR: cannot write %s: %s\n", file_name != nullptr ? file_name : "", strerror(error));
    vemtra_Process_Exit(1);
}

void checked_close_output(FILE *stream, const char *file_name)
{
    vemtra_Close_Output(stream, file_name, 0);
}

/* The earlier runs' files that checked_open_rewritable opened and that are
 * not closed yet: they are cut at their new end when the run ends early. */
static std::mutex rewritten_lock;
static std::vector<FILE *> rewritten_files;

/* Cuts the file of `stream` at the end of what has been written to it;
 * errno when a regular file cannot be cut. */
static int vemtra_Cut_At_Written_End(FILE *stream)
{
    if (fflush(stream) != 0)
        return 0; /* the stream keeps the failure for its close */
    /* Everything is in the file now, so its end is where its position
     * stands (a stream does not know of writes made to its file). A file
     * that has no position or cannot be cut (a FIFO, a device) is left. */
    int fd = fileno(stream);
    off_t end = lseek(fd, 0, SEEK_CUR);
    if (end >= 0 && ftruncate(fd, end) != 0 && errno != EINVAL)
        return errno;
    return 0;
}

/* Whether the last file opened by checked_open_rewritable was there
 * already: a run over an earlier report finds nearly every file there and
 * a first run none, so the open that fitted the last file is tried first
 * (a system call less per file either way). */
static std::atomic<bool> last_file_existed{false};

FILE *checked_open_rewritable(const char *path)
{
    /* A new file needs nothing more than "w" would do; an existing one is
     * opened for update, which does not empty it, and anything else (a
     * link to nowhere, no right to read it) is left to "w" and its errno.
     * fopen is used rather than open and fdopen, which would cost a
     * system call more per file. */
    if (!last_file_existed) {
        FILE *stream = fopen(path, "wx");
        if (stream != nullptr || errno != EEXIST)
            return stream;
    }
    FILE *stream = fopen(path, "r+");
    if (stream == nullptr) {
        last_file_existed = false;
        return fopen(path, "w");
    }
    last_file_existed = true;
    std::lock_guard<std::mutex> hold(rewritten_lock);
    rewritten_files.push_back(stream);
    return stream;
}

/* Whether `stream` is an earlier run's file (and no longer listed as one). */
static bool vemtra_Forget_Rewritten(FILE *stream)
{
    std::lock_guard<std::mutex> hold(rewritten_lock);
    auto at = std::find(rewritten_files.begin(), rewritten_files.end(), stream);
    if (at == rewritten_files.end())
        return false;
    rewritten_files.erase(at);
    return true;
}

void checked_close_rewritten(FILE *stream, const char *file_name)
{
    int error = vemtra_Forget_Rewritten(stream) && !ferror(stream) ? vemtra_Cut_At_Written_End(stream) : 0;
    vemtra_Close_Output(stream, file_name, error);
}

void checked_close_unfinished(FILE *stream)
{
    if (vemtra_Forget_Rewritten(stream))
        vemtra_Cut_At_Written_End(stream);
    fclose(stream);
}

void vemtra_Cut_Rewritten_Files(void)
{
    std::lock_guard<std::mutex> hold(rewritten_lock);
    for (FILE *stream : rewritten_files)
        vemtra_Cut_At_Written_End(stream);
}

int checked_fclose(FILE *stream)
{
    return fclose(stream);
}

/* The fatal lines of the four wrappers, with and without a file name. */
struct IoFailure {
    const char *with_name;
    const char *without_name;
};
static const IoFailure FREAD_FAILED = {"FATAL ERROR: fread on file %s failed\n", "FATAL ERROR: fread on file failed\n"};
static const IoFailure FWRITE_FAILED = {"FATAL ERROR: fwrite on file %s failed\n", "FATAL ERROR: fwrite on file failed\n"};
static const IoFailure FSEEK_FAILED = {"FATAL ERROR: fseek on file %s failed\n", "FATAL ERROR: fseek on file failed\n"};
static const IoFailure FTELL_FAILED = {"FATAL ERROR: ftell on file %s failed\n", "FATAL ERROR: ftell on file failed\n"};

/* Prints the system error and the wrapper's fatal line, then ends the run. */
[[noreturn]] static void vemtra_Io_Failed(const IoFailure &failure, const char *file_name)
{
    perror(file_name);
    if (file_name != nullptr)
        fprintf(stderr, failure.with_name, file_name);
    else
        fputs(failure.without_name, stderr);
    fflush(stderr);
    vemtra_Process_Exit(1);
}

size_t checked_fread(void *buffer, size_t size, size_t count, FILE *stream, const char *file_name)
{
    /* A read that stops at the end of the file sets no error number: clear
     * it so that the message does not report an older, unrelated one. */
    errno = 0;
    if (fread(buffer, size, count, stream) != count)
        vemtra_Io_Failed(FREAD_FAILED, file_name);
    return count;
}

size_t checked_fwrite(const void *buffer, size_t size, size_t count, FILE *stream, const char *file_name)
{
    if (fwrite(buffer, size, count, stream) != count)
        vemtra_Io_Failed(FWRITE_FAILED, file_name);
    return count;
}

int checked_fseek(FILE *stream, int64_t offset, int whence, const char *file_name)
{
    if (fseeko(stream, static_cast<off_t>(offset), whence) != 0)
        vemtra_Io_Failed(FSEEK_FAILED, file_name);
    return 0;
}

int64_t checked_ftell(FILE *stream, const char *file_name)
{
    off_t position = ftello(stream);
    if (position == -1)
        vemtra_Io_Failed(FTELL_FAILED, file_name);
    return static_cast<int64_t>(position);
}
