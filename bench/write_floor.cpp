// write_floor.cpp -- the floor under the full report's cost: read every
// source file once and write a tree of the same files with the same bytes.
//
//   write_floor <source dir> <report dir> <scratch dir> [label]
//
// The report's bytes are loaded into memory first (not timed), and then the
// start is made like a measured run's (bench/large_project.sh, settle):
// dirty pages written out, the sources read once, 1 GiB of memory touched
// and freed by a child process (warm.h). Then, timed, every file below
// <source dir> is read whole and every file of <report dir> is written
// below <scratch dir> (same relative paths) in one call, as vemcov writes its
// files: opened without being emptied and cut to the new length, so that a
// new <scratch dir> is created and the scratch dir of an earlier call is
// written over in place. Prints wall, user and system time of the timed
// part after the label ("read sources + write same report" unless given).
#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/warm.h"

namespace {

void listFiles(const std::string &dir, const std::string &relative, std::vector<std::string> &out)
{
    DIR *d = opendir((dir + "/" + relative).c_str());
    if (d == nullptr)
        return;
    while (dirent *entry = readdir(d)) {
        std::string name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        std::string path = relative.empty() ? name : relative + "/" + name;
        struct stat st;
        if (stat((dir + "/" + path).c_str(), &st) != 0)
            continue;
        if (S_ISDIR(st.st_mode))
            listFiles(dir, path, out);
        else if (S_ISREG(st.st_mode))
            out.push_back(path);
    }
    closedir(d);
}

std::string readWhole(const std::string &path)
{
    std::string bytes;
    int fd = open(path.c_str(), O_RDONLY);
    if (fd < 0)
        return bytes;
    struct stat st;
    if (fstat(fd, &st) == 0) {
        bytes.resize(static_cast<size_t>(st.st_size));
        size_t done = 0;
        while (done < bytes.size()) {
            ssize_t got = read(fd, &bytes[done], bytes.size() - done);
            if (got <= 0)
                break;
            done += static_cast<size_t>(got);
        }
        bytes.resize(done);
    }
    close(fd);
    return bytes;
}

double seconds(const timeval &t)
{
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 4 && argc != 5) {
        fprintf(stderr, "usage: %s <source dir> <report dir> <scratch dir> [label]\n", argv[0]);
        return 1;
    }
    std::string sources = argv[1], report = argv[2], scratch = argv[3];
    const char *label = argc == 5 ? argv[4] : "read sources + write same report";
    std::vector<std::string> sourceFiles, reportFiles;
    listFiles(sources, "", sourceFiles);
    listFiles(report, "", reportFiles);
    std::vector<std::string> reportBytes;
    size_t total = 0;
    for (const std::string &file : reportFiles) {
        reportBytes.push_back(readWhole(report + "/" + file));
        total += reportBytes.back().size();
    }

    sync();
    for (const std::string &file : sourceFiles)
        readWhole(sources + "/" + file);
    /* As bench/large_project.sh does before a measured run, here after the
     * loading, which would outlast the warmth of memory warmed before it. */
    warmMemoryInChild(1024);

    rusage before, after;
    getrusage(RUSAGE_SELF, &before);
    auto start = std::chrono::steady_clock::now();
    size_t read_bytes = 0;
    for (const std::string &file : sourceFiles)
        read_bytes += readWhole(sources + "/" + file).size();
    mkdir(scratch.c_str(), 0777);
    for (size_t i = 0; i < reportFiles.size(); i++) {
        const std::string &file = reportFiles[i];
        for (size_t slash = file.find('/'); slash != std::string::npos; slash = file.find('/', slash + 1))
            mkdir((scratch + "/" + file.substr(0, slash)).c_str(), 0777);
        const std::string &bytes = reportBytes[i];
        int fd = open((scratch + "/" + file).c_str(), O_WRONLY | O_CREAT, 0644);
        if (fd < 0 || write(fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()) ||
            ftruncate(fd, static_cast<off_t>(bytes.size())) != 0) {
            fprintf(stderr, "write_floor: cannot write %s\n", file.c_str());
            return 1;
        }
        close(fd);
    }
    double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    getrusage(RUSAGE_SELF, &after);
    printf("%-34s wall %6.2f s  user %5.2f s  system %5.2f s  (%zu sources, %zu MB read; %zu files, %zu MB written)\n",
           label, wall, seconds(after.ru_utime) - seconds(before.ru_utime),
           seconds(after.ru_stime) - seconds(before.ru_stime), sourceFiles.size(), read_bytes >> 20,
           reportFiles.size(), total >> 20);
    return 0;
}
