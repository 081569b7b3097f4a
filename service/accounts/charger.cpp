#include "service/accounts/charger.h"

#include "support/text.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <utility>

namespace quorvex::service::accounts {
namespace {

// Charges in one transaction: as many as clients wait at a time, so that the speed of the disk does not bound theirs.
// Six values each, below what the databases take in a statement (SQLite 32,766).
constexpr std::size_t kTogether = 512;
constexpr std::chrono::milliseconds kBusyPause(100);

void Complain(const support::Error& error) {
    std::cerr << "quorvex-service: " + support::ToUtf8(error.Description()) + "\n";
}

} // namespace

Charger::Charger(std::string database, std::string node, std::chrono::milliseconds patience)
    : database_(std::move(database)), node_(std::move(node)), patience_(patience), thread_([this] { Run(); }) {}

Charger::~Charger() {
    Stop();
}

void Charger::Take(Charge charge, Done done) {
    {
        const std::lock_guard lock(mutex_);
        if (!stopped_) {
            waiting_.push_back({std::move(charge), std::move(done), std::chrono::steady_clock::now()});
            changed_.notify_one();
            return;
        }
    }
    done(std::nullopt);
}

void Charger::Stop() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
        changed_.notify_all();
    }
    if (thread_.joinable()) thread_.join();
}

void Charger::Run() {
    for (;;) {
        std::vector<Waiting> batch;
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return stopped_ || !waiting_.empty(); });
            if (waiting_.empty()) return;
            const auto end = waiting_.begin() + static_cast<std::ptrdiff_t>(std::min(waiting_.size(), kTogether));
            std::move(waiting_.begin(), end, std::back_inserter(batch));
            waiting_.erase(waiting_.begin(), end);
        }
        Serve(std::move(batch));
    }
}

void Charger::Serve(std::vector<Waiting> batch) {
    std::vector<Charge> charges;
    for (const Waiting& waiting : batch) charges.push_back(waiting.charge);
    const auto charged = TakeAll(charges, batch.front().since + patience_);
    for (std::size_t i = 0; i < batch.size(); ++i)
        batch[i].done(charged ? std::optional<Charged>((*charged)[i]) : std::nullopt);
}

// A transaction whose end was lost with the database may have happened; trying it again does no harm, since no request
// is charged twice.
std::optional<std::vector<Charged>> Charger::TakeAll(const std::vector<Charge>& charges,
                                                     std::chrono::steady_clock::time_point end) {
    for (;;) {
        try {
            if (!store_) store_ = std::make_unique<AccountStore>(database_);
            auto charged = store_->Take(charges, node_);
            reachable_ = true;
            ++transactions_;
            return charged;
        } catch (const DatabaseBusy&) {
        } catch (const support::Error& error) {
            store_.reset();
            if (reachable_.exchange(false)) Complain(error);
            Pause();
        }
        const std::lock_guard lock(mutex_);
        if (stopped_ || std::chrono::steady_clock::now() >= end) return std::nullopt;
    }
}

void Charger::Pause() {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kBusyPause, [this] { return stopped_; });
}

} // namespace quorvex::service::accounts
