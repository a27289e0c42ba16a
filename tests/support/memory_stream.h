// memory_stream.h -- a FILE* that writes into memory, for unit tests of
// writers that take a stream.
#ifndef VEMCOV_TESTS_SUPPORT_MEMORY_STREAM_H
#define VEMCOV_TESTS_SUPPORT_MEMORY_STREAM_H

#include <cstdio>
#include <cstdlib>
#include <string>

namespace testsupport {

class MemoryStream {
public:
    MemoryStream() : stream_(open_memstream(&data_, &size_)) {}
    ~MemoryStream()
    {
        fclose(stream_);
        free(data_);
    }
    MemoryStream(const MemoryStream &) = delete;
    MemoryStream &operator=(const MemoryStream &) = delete;

    FILE *stream() { return stream_; }
    // Everything written so far.
    std::string text()
    {
        fflush(stream_);
        return std::string(data_, size_);
    }

private:
    char *data_ = nullptr;
    size_t size_ = 0;
    FILE *stream_;
};

}  // namespace testsupport

#endif
