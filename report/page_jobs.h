/* page_jobs.h -- threads that make pages while the run goes on (-j). Jobs
 * run in any order, each writing files of its own, so the files come out
 * the same as when they are written one after the other. The queue holds a
 * few jobs per thread at most: a job holds a module's positions, and the
 * analysis must not run far ahead of the writing. */
#ifndef VEMCOV_REPORT_PAGE_JOBS_H
#define VEMCOV_REPORT_PAGE_JOBS_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

class PageJobs {
public:
    explicit PageJobs(int threads);
    /* Waits for every job. */
    ~PageJobs();
    PageJobs(const PageJobs &) = delete;
    PageJobs &operator=(const PageJobs &) = delete;

    /* Queues a job; waits while the queue is full. */
    void submit(std::function<void()> job);
    /* Returns when every job submitted so far has run. */
    void wait();

private:
    void work();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> queue_;
    size_t limit_;
    int running_ = 0;
    bool stopping_ = false;
    std::vector<std::thread> threads_;
};

#endif
