// memory_stream.cpp -- an in-memory FILE* for unit tests.
#include "tests/support/memory_stream.h"

#include <cstdlib>

namespace testsupport {

MemoryStream::MemoryStream() : stream_(open_memstream(&data_, &size_)) {}

MemoryStream::~MemoryStream()
{
    if (stream_ != nullptr)
        fclose(stream_);
    free(data_);
}

std::string MemoryStream::text()
{
    fflush(stream_);
    return std::string(data_, size_);
}

}  // namespace testsupport
