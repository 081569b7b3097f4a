#include "service/work_queue.h"

#include <utility>

namespace quorvex::service {

WorkQueue::WorkQueue(std::size_t threads, std::size_t capacity) : capacity_(capacity) {
    for (std::size_t i = 0; i < threads; ++i) threads_.emplace_back([this] { Run(); });
}

WorkQueue::~WorkQueue() {
    Stop();
}

bool WorkQueue::Add(Job job) {
    const std::lock_guard lock(mutex_);
    if (stopped_ || jobs_.size() >= capacity_) return false;
    jobs_.push_back(std::move(job));
    changed_.notify_one();
    return true;
}

void WorkQueue::Stop() {
    std::deque<Job> dropped;
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
        dropped.swap(jobs_);
        changed_.notify_all();
    }
    for (std::thread& thread : threads_) {
        if (thread.joinable()) thread.join();
    }
}

std::size_t WorkQueue::Waiting() const {
    const std::lock_guard lock(mutex_);
    return jobs_.size();
}

void WorkQueue::Run() {
    for (;;) {
        Job job;
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return stopped_ || !jobs_.empty(); });
            if (stopped_) return;
            job = std::move(jobs_.front());
            jobs_.pop_front();
        }
        job();
    }
}

} // namespace quorvex::service
