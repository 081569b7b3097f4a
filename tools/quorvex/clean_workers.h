#pragma once

#include "quorvex/row_cleaner.h"

#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

namespace quorvex::cli {

// Cleans batches on several threads and gives the results back in the order in which the batches came.
class CleanWorkers {
  public:
    CleanWorkers(unsigned threads, const CleanColumns& columns, const AddressSourceFactory& makeSource);
    CleanWorkers(const CleanWorkers&) = delete;
    CleanWorkers& operator=(const CleanWorkers&) = delete;
    // Batches that no thread has begun are dropped.
    ~CleanWorkers();

    void Submit(CsvBatch batch);
    std::size_t Pending() const { return results_.size(); }
    // Waits for the oldest batch. Throws what its cleaning threw.
    CleanedRows Take();

  private:
    struct Job {
        CsvBatch batch;
        std::promise<CleanedRows> result;
    };
    void Run(RowCleaner& cleaner);

    std::deque<std::future<CleanedRows>> results_;
    std::mutex mutex_; // guards what follows
    std::condition_variable changed_;
    std::deque<Job> jobs_;
    bool stopping_ = false;
    std::vector<std::unique_ptr<RowCleaner>> cleaners_;
    std::vector<std::thread> threads_;
};

} // namespace quorvex::cli
