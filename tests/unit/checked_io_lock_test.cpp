// checked_fopen's record lock: the region and kind it asks for, the warning
// when the lock cannot be had that lets the open go on, and the error that
// refuses it. The lock failures that a local file system never produces are
// simulated by a stand-in for fcntl that notes every lock request, fails
// them while `fail_lock_errno` is set and otherwise passes every call on to
// the C library.
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "shared/vemtra/tallyfold/checked_io.h"
#include "shared/vemtra/tallyfold/tool_message.h"
#include "tests/support/capture.h"

using testsupport::CaptureInChild;
using testsupport::Captured;

static int fail_lock_errno = 0;
static int last_lock_cmd = 0;
static struct flock last_lock = {};

extern "C" int fcntl(int fd, int cmd, ...)
{
    va_list args;
    va_start(args, cmd);
    void *arg = va_arg(args, void *);
    va_end(args);
    if (cmd == F_SETLKW || cmd == F_SETLK || cmd == F_GETLK) {
        last_lock_cmd = cmd;
        last_lock = *static_cast<struct flock *>(arg);
    }
    if (fail_lock_errno != 0 && (cmd == F_SETLKW || cmd == F_SETLK)) {
        errno = fail_lock_errno;
        return -1;
    }
    using Fcntl = int (*)(int, int, ...);
    static Fcntl real = reinterpret_cast<Fcntl>(dlsym(RTLD_NEXT, "fcntl"));
    return real(fd, cmd, arg);
}

namespace {

class CheckedOpenLock : public testing::Test {
protected:
    void SetUp() override
    {
        int fd = mkstemp(path_);
        ASSERT_GE(fd, 0);
        ASSERT_EQ(write(fd, "0123456789abcdefDATA", 20), 20);
        close(fd);
    }
    void TearDown() override { unlink(path_); }

    char path_[32] = "/tmp/vemcov-lock-XXXXXX";
};

// The first 16 bytes stay unlocked; the region runs to the end of the file
// however far it grows, and the request waits for the lock.
TEST_F(CheckedOpenLock, RegionFromByte16ToTheEnd)
{
    for (const char *mode : {"rb", "r+", "wb", "ab"}) {
        last_lock_cmd = 0;
        FILE *stream = checked_fopen(path_, mode);
        ASSERT_NE(stream, nullptr) << mode;
        EXPECT_EQ(last_lock_cmd, F_SETLKW) << mode;
        EXPECT_EQ(last_lock.l_type, mode[0] == 'r' && mode[1] != '+' ? F_RDLCK : F_WRLCK) << mode;
        EXPECT_EQ(last_lock.l_whence, SEEK_SET) << mode;
        EXPECT_EQ(last_lock.l_start, 16) << mode;
        EXPECT_EQ(last_lock.l_len, 0) << mode;
        EXPECT_EQ(last_lock.l_pid, getpid()) << mode;
        checked_fclose(stream);
    }
}

TEST_F(CheckedOpenLock, UnavailableLockWarnsAndOpensAllTheSame)
{
    const std::string path = path_;
    struct Case {
        int error;
        const char *mode;
        const char *use;
    };
    for (const Case &c : {Case{ENOLCK, "rb", "shared"}, Case{EACCES, "r+", "exclusive"}, Case{ENOLCK, "ab", "exclusive"}}) {
        Captured run = CaptureInChild([&] {
            VEMTRA_Tool_Set_Name("vemcov");
            fail_lock_errno = c.error;
            FILE *stream = checked_fopen(path.c_str(), c.mode);
            fail_lock_errno = 0;
            if (stream == nullptr)
                return;
            char head[5] = {0};
            size_t got = fread(head, 1, 4, stream);
            printf("opened %zu %s", got, head);
            checked_fclose(stream);
        });
        // Appending streams cannot be read; the others read the head.
        EXPECT_EQ(run.out, c.mode[0] == 'a' ? "opened 0 " : "opened 4 0123") << c.mode;
        EXPECT_EQ(run.err, std::string("WARNING: ") + c.use + " lock of " + path +
                               " failed (access denied); I/O on file is unsafe in a parallel build environment\n");
    }
}

TEST_F(CheckedOpenLock, OtherLockFailuresRefuseTheFile)
{
    const std::string path = path_;
    Captured simulated = CaptureInChild([&] {
        fail_lock_errno = EDEADLK;
        printf("%s", checked_fopen(path.c_str(), "wb") == nullptr ? "null" : "stream");
    });
    EXPECT_EQ(simulated.out, "null");
    EXPECT_EQ(simulated.err, "ERROR: exclusive lock of " + path + " failed, code = " + std::to_string(EDEADLK) +
                                 "\n\t" + strerror(EDEADLK));

    // A mode with neither 'r', 'w', 'a' nor '+' opens write-only but asks
    // for a shared lock, which the system refuses for real.
    Captured real = CaptureInChild([&] { printf("%s", checked_fopen(path.c_str(), "b") == nullptr ? "null" : "x"); });
    EXPECT_EQ(real.out, "null");
    EXPECT_EQ(real.err, "ERROR: shared lock of " + path + " failed, code = " + std::to_string(EBADF) + "\n\t" +
                            strerror(EBADF));
}

}  // namespace
