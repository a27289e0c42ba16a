/* page_jobs.cpp -- a small pool of page-writing threads. */
#include "report/page_jobs.h"

#include "shared/vemtra/tallyfold/exit_threads.h"

PageJobs::PageJobs(int threads) : limit_(static_cast<size_t>(threads) * 2)
{
    vemtra_Exit_Threads_Add(threads);
    for (int i = 0; i < threads; ++i)
        threads_.emplace_back([this] { work(); });
}

PageJobs::~PageJobs()
{
    wait();
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    for (std::thread &thread : threads_)
        thread.join();
    vemtra_Exit_Threads_Add(-static_cast<int>(threads_.size()));
}

void PageJobs::submit(std::function<void()> job)
{
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return queue_.size() < limit_; });
    queue_.push_back(std::move(job));
    changed_.notify_all();
}

void PageJobs::wait()
{
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return queue_.empty() && running_ == 0; });
}

void PageJobs::work()
{
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
        if (queue_.empty())
            return;
        std::function<void()> job = std::move(queue_.front());
        queue_.pop_front();
        ++running_;
        lock.unlock();
        job();
        lock.lock();
        --running_;
        changed_.notify_all();
    }
}
