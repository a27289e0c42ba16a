// create_files.cpp -- how much a second thread helps in creating a report's
// files: n files of a given size in one directory, written by 1 or more
// threads, as -j does with the report's pages.
//
//   create_files <threads> <empty directory> [files] [bytes per file]
//
// Defaults: 20,000 files of 16,000 bytes (the documented report of the
// 2.65-million-line benchmark project: 20,014 files, 331 MB).
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

int main(int argc, char **argv)
{
    if (argc < 3) {
        fprintf(stderr, "usage: %s <threads> <empty directory> [files] [bytes per file]\n", argv[0]);
        return 1;
    }
    int threads = atoi(argv[1]);
    std::string dir = argv[2];
    int files = argc > 3 ? atoi(argv[3]) : 20000;
    std::string bytes(argc > 4 ? static_cast<size_t>(atol(argv[4])) : 16000, 'x');
    auto start = std::chrono::steady_clock::now();
    std::vector<std::thread> workers;
    bool failed = false;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([&, t] {
            for (int i = t; i < files; i += threads) {
                std::string path = dir + "/file" + std::to_string(i) + ".html";
                int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
                if (fd < 0 || write(fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
                    failed = true;
                if (fd >= 0)
                    close(fd);
            }
        });
    }
    for (std::thread &worker : workers)
        worker.join();
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    printf("%d thread%s: %d files of %zu bytes in %.2f s\n", threads, threads == 1 ? "" : "s", files, bytes.size(),
           seconds);
    return failed ? 1 : 0;
}
