#pragma once

#include "service/accounts/store.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quorvex::service::accounts {

// Takes credits on a thread of its own: what comes while a transaction is under way goes into the next one together.
class Charger {
  public:
    // patience: how long a database that is lost may take to come back.
    Charger(std::string database, std::string node, std::chrono::milliseconds patience);
    ~Charger();
    Charger(const Charger&) = delete;
    Charger& operator=(const Charger&) = delete;

    // done gets nothing if the database could not be reached in time. It is called on the charger's thread.
    using Done = std::function<void(std::optional<Charged>)>;
    void Take(Charge charge, Done done);
    // Charges that wait are made, but a lost database is not waited for.
    void Stop();

    // Whether the last transaction found its database.
    bool Reachable() const { return reachable_; }
    std::uint64_t Transactions() const { return transactions_; }

  private:
    struct Waiting {
        Charge charge;
        Done done;
        std::chrono::steady_clock::time_point since;
    };
    void Run();
    void Serve(std::vector<Waiting> batch);
    std::optional<std::vector<Charged>> TakeAll(const std::vector<Charge>& charges,
                                                std::chrono::steady_clock::time_point end);
    void Pause();

    std::string database_;
    std::string node_;
    std::chrono::milliseconds patience_;
    std::unique_ptr<AccountStore> store_; // null after a loss; for the thread alone
    std::atomic<bool> reachable_{true};
    std::atomic<std::uint64_t> transactions_{0};
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Waiting> waiting_;
    bool stopped_ = false;
    std::thread thread_;
};

} // namespace quorvex::service::accounts
