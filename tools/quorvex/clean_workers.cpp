#include "quorvex/clean_workers.h"

namespace quorvex::cli {

CleanWorkers::CleanWorkers(unsigned threads, const CleanColumns& columns, const AddressSourceFactory& makeSource) {
    // All sources first: one that cannot be made must not leave threads behind.
    for (unsigned i = 0; i < threads; ++i) cleaners_.push_back(std::make_unique<RowCleaner>(columns, makeSource()));
    for (const auto& cleaner : cleaners_) threads_.emplace_back([this, &cleaner] { Run(*cleaner); });
}

CleanWorkers::~CleanWorkers() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        jobs_.clear();
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) thread.join();
}

void CleanWorkers::Submit(CsvBatch batch) {
    Job job{std::move(batch), {}};
    results_.push_back(job.result.get_future());
    {
        const std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
    }
    changed_.notify_one();
}

CleanedRows CleanWorkers::Take() {
    std::future<CleanedRows> result = std::move(results_.front());
    results_.pop_front();
    return result.get();
}

void CleanWorkers::Run(RowCleaner& cleaner) {
    for (;;) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
        if (stopping_) return;
        Job job = std::move(jobs_.front());
        jobs_.pop_front();
        lock.unlock();
        try {
            job.result.set_value(cleaner.Clean(job.batch));
        } catch (...) {
            job.result.set_exception(std::current_exception());
        }
    }
}

} // namespace quorvex::cli
