// scratch_dir.cpp -- temporary directories for unit tests.
#include "tests/support/scratch_dir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

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

bool ScratchDir::exists(const std::string &relative) const
{
    return std::filesystem::exists(path(relative));
}

std::string ScratchDir::read(const std::string &relative) const
{
    std::ifstream in(path(relative), std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace testsupport
