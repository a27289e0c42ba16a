// scratch_dir.h -- a private temporary directory for a unit test that writes
// files, removed with everything in it when the test ends.
#ifndef VEMCOV_TESTS_SUPPORT_SCRATCH_DIR_H
#define VEMCOV_TESTS_SUPPORT_SCRATCH_DIR_H

#include <string>

namespace testsupport {

// The whole content of a file; empty when it cannot be read.
std::string ReadFile(const std::string &path);

class ScratchDir {
public:
    ScratchDir();
    ~ScratchDir();
    ScratchDir(const ScratchDir &) = delete;
    ScratchDir &operator=(const ScratchDir &) = delete;

    const std::string &path() const { return path_; }
    std::string path(const std::string &relative) const { return path_ + "/" + relative; }
    // Writes a file (its directory must exist) and returns its path.
    std::string write(const std::string &relative, const std::string &bytes) const;
    bool exists(const std::string &relative) const;
    std::string read(const std::string &relative) const;

private:
    std::string path_;
};

}  // namespace testsupport

#endif
