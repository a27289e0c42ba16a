// capture.h -- run code or a program in a child process and capture its exit
// status, standard output and standard error byte for byte.
#ifndef VEMCOV_TESTS_SUPPORT_CAPTURE_H
#define VEMCOV_TESTS_SUPPORT_CAPTURE_H

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace testsupport {

struct Captured {
    int status = -1;        // exit status; -1 when the child did not exit normally
    int signal = 0;         // terminating signal, 0 when it exited
    bool timed_out = false; // killed after the time limit
    std::string out;        // everything written to standard output
    std::string err;        // everything written to standard error
};

// Runs `body` in a forked child whose standard output and error are captured;
// the child exits with 0 when `body` returns. Use it for code paths that end
// the process.
Captured CaptureInChild(const std::function<void()> &body, int timeout_seconds = 60);

// Runs `body` in a child whose working directory is `dir`; the child exits
// with 7 when `body` returns false.
Captured CaptureInDir(const std::string &dir, const std::function<bool()> &body);

struct ProgramRun {
    std::string program;                     // path of the executable
    std::string argv0;                       // argv[0] as the program sees it
    std::vector<std::string> args;           // arguments after argv[0]
    std::string cwd;                         // working directory of the child
    std::map<std::string, std::string> set_env;  // variables to set
    std::vector<std::string> unset_env;      // variables to remove
    int timeout_seconds = 120;
    int memory_limit_mb = 0;                 // address-space limit of the child; 0: none
};

// Runs a program and captures what it prints.
Captured RunProgram(const ProgramRun &run);

}  // namespace testsupport

#endif
