// fuzz_input.h -- an input of a fuzz target as a file that the code under
// test opens by its path like any other: a memory file, reached through
// /proc/self/fd, so that no input touches the disk.
#ifndef VEMCOV_TESTS_FUZZ_FUZZ_INPUT_H
#define VEMCOV_TESTS_FUZZ_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

class FuzzInputFile {
public:
    explicit FuzzInputFile(const char *name)
        : fd_(memfd_create(name, 0)), path_("/proc/self/fd/" + std::to_string(fd_))
    {
    }
    // Replaces the file's bytes; false when that fails.
    bool set(const uint8_t *data, size_t size)
    {
        return ftruncate(fd_, 0) == 0 && pwrite(fd_, data, size, 0) == static_cast<ssize_t>(size);
    }
    const char *path() const { return path_.c_str(); }

private:
    int fd_;
    std::string path_;
};

#endif
