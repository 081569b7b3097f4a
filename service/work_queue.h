#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quorvex::service {

// Threads that do jobs in the order in which they came. Full means full: a queue that grows only makes everybody wait.
class WorkQueue {
  public:
    using Job = std::function<void()>;
    WorkQueue(std::size_t threads, std::size_t capacity);
    ~WorkQueue();
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;

    // False, and the job is not done, if too many wait.
    bool Add(Job job);
    // Ends when the jobs under way are done; those that wait are dropped.
    void Stop();

    std::size_t Waiting() const;
    std::size_t Capacity() const { return capacity_; }

  private:
    void Run();

    std::size_t capacity_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Job> jobs_;
    bool stopped_ = false;
    std::vector<std::thread> threads_;
};

} // namespace quorvex::service
