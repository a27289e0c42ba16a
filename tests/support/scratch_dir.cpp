// scratch_dir.cpp -- temporary directories for unit tests.
#include "tests/support/scratch_dir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/support/profile_writer.h"

namespace testsupport {

ScratchDir::ScratchDir()
{
    char name[] = "/tmp/vemcov-unit-XXXXXX";
    if (mkdtemp(name) == nullptr)
        abort();
    path_ = name;
}

ScratchDir::~ScratchDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string ScratchDir::write(const std::string &relative, const std::string &bytes) const
{
    if (!WriteBytes(path(relative), bytes))
        abort();
    return path(relative);
}

bool ScratchDir::exists(const std::string &relative) const
{
    return std::filesystem::exists(path(relative));
}

std::string ScratchDir::read(const std::string &relative) const
{
    return ReadFile(path(relative));
}

std::string ReadFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace testsupport
