// capture.cpp -- child processes with captured output for the tests.
#include "tests/support/capture.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <sys/resource.h>
#include <unistd.h>

extern char **environ;

namespace testsupport {
namespace {

// Output goes to unlinked temporary files rather than pipes, so a child that
// writes a lot can never block on a full pipe.
int MakeTempFile()
{
    char name[] = "/tmp/vemcov-capture-XXXXXX";
    int fd = mkstemp(name);
    if (fd < 0) {
        perror("mkstemp");
        std::abort();
    }
    unlink(name);
    return fd;
}

std::string ReadAll(int fd)
{
    std::string text;
    lseek(fd, 0, SEEK_SET);
    char buffer[65536];
    for (;;) {
        ssize_t n = read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        text.append(buffer, static_cast<size_t>(n));
    }
    close(fd);
    return text;
}

Captured WaitFor(pid_t pid, int out_fd, int err_fd, int timeout_seconds)
{
    Captured result;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeout_seconds);
    int wstatus = 0;
    for (;;) {
        pid_t done = waitpid(pid, &wstatus, WNOHANG);
        if (done == pid)
            break;
        if (std::chrono::steady_clock::now() > deadline) {
            kill(pid, SIGKILL);
            waitpid(pid, &wstatus, 0);
            result.timed_out = true;
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    if (WIFEXITED(wstatus))
        result.status = WEXITSTATUS(wstatus);
    else if (WIFSIGNALED(wstatus))
        result.signal = WTERMSIG(wstatus);
    result.out = ReadAll(out_fd);
    result.err = ReadAll(err_fd);
    return result;
}

}  // namespace

Captured CaptureInChild(const std::function<void()> &body, int timeout_seconds)
{
    fflush(stdout);
    fflush(stderr);
    int out_fd = MakeTempFile();
    int err_fd = MakeTempFile();
    pid_t pid = fork();
    if (pid == 0) {
        dup2(out_fd, STDOUT_FILENO);
        dup2(err_fd, STDERR_FILENO);
        body();
        fflush(stdout);
        fflush(stderr);
        _exit(0);
    }
    return WaitFor(pid, out_fd, err_fd, timeout_seconds);
}

Captured CaptureInDir(const std::string &dir, const std::function<bool()> &body)
{
    return CaptureInChild([&] {
        if (chdir(dir.c_str()) != 0 || !body())
            _exit(7);
    });
}

Captured RunProgram(const ProgramRun &run)
{
    std::vector<std::string> env;
    for (char **entry = environ; *entry != nullptr; ++entry) {
        std::string variable(*entry);
        std::string key = variable.substr(0, variable.find('='));
        bool drop = run.set_env.count(key) != 0;
        for (const std::string &name : run.unset_env)
            drop = drop || name == key;
        if (!drop)
            env.push_back(variable);
    }
    for (const auto &[key, value] : run.set_env)
        env.push_back(key + "=" + value);

    std::vector<char *> argv;
    argv.push_back(const_cast<char *>(run.argv0.c_str()));
    for (const std::string &arg : run.args)
        argv.push_back(const_cast<char *>(arg.c_str()));
    argv.push_back(nullptr);
    std::vector<char *> envp;
    for (const std::string &variable : env)
        envp.push_back(const_cast<char *>(variable.c_str()));
    envp.push_back(nullptr);

    fflush(stdout);
    fflush(stderr);
    int out_fd = MakeTempFile();
    int err_fd = MakeTempFile();
    pid_t pid = fork();
    if (pid == 0) {
        dup2(out_fd, STDOUT_FILENO);
        dup2(err_fd, STDERR_FILENO);
        if (!run.cwd.empty() && chdir(run.cwd.c_str()) != 0) {
            perror("chdir");
            _exit(127);
        }
        if (run.memory_limit_mb > 0) {
            struct rlimit limit;
            limit.rlim_cur = limit.rlim_max = static_cast<rlim_t>(run.memory_limit_mb) << 20;
            setrlimit(RLIMIT_AS, &limit);
        }
        execve(run.program.c_str(), argv.data(), envp.data());
        perror("execve");
        _exit(127);
    }
    return WaitFor(pid, out_fd, err_fd, run.timeout_seconds);
}

}  // namespace testsupport
