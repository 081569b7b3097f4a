#pragma once

#include "service/access_log.h"
#include "service/accounts/accounts.h"
#include "service/data_source.h"
#include "service/follower.h"
#include "service/front_page.h"
#include "service/http/server.h"
#include "service/metrics.h"
#include "service/options.h"
#include "service/pages.h"
#include "service/test_control.h"
#include "service/update_folder.h"
#include "service/work_queue.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace quorvex::service {

// The running service: reads the data, listens, answers until it is stopped.
class Service {
  public:
    // Opens the data and begins to listen; nobody is answered yet. Throws support::Error when the data cannot be read
    // or the address is not free.
    explicit Service(const Options& options);
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    // Answers from now on, on threads of its own. Lists and search words may follow later.
    void Start();
    // Takes no more requests, lets answers under way finish for the time of the options, then returns when the last
    // thread is done.
    void Stop();
    // Reads data, certificate and options that can change while it runs, and opens the access log again.
    void Reload();

    // "http://host:port", with the port in use.
    const std::string& Address() const { return address_; }
    bool WaitForLists(std::chrono::milliseconds longest) const { return data_.WaitForLists(longest); }

  private:
    struct Exchange;
    void Handle(http::Request request, http::Respond respond);
    void AnswerAtOnce(const std::shared_ptr<Exchange>& exchange);
    void LookUp(const std::shared_ptr<Exchange>& exchange);
    void AskPages(const std::shared_ptr<Exchange>& exchange, std::function<void(PageAnswer)> done);
    void Misbehave(const std::shared_ptr<Exchange>& exchange, TestControl::Order order);
    void Finish(const std::shared_ptr<Exchange>& exchange, PageAnswer answer);
    PageRequest PageRequestOf(const http::Request& request);
    PageAnswer Health() const;
    PageAnswer MetricsPage() const;
    void KeepHouse();
    void Announce(const char* state);

    Options options_;
    accounts::Networks proxies_;
    DataSource data_;
    accounts::Accounts accounts_;
    UpdateFolder updates_;
    Pages pages_;
    Metrics metrics_;
    AccessLog log_;
    TestControl control_;
    FrontPage front_;
    std::string address_;
    std::string node_;
    std::atomic<bool> draining_{false};
    std::atomic<std::uint64_t> refused_{0}; // for a full queue
    // Below, what runs: ended in the reverse order.
    std::unique_ptr<http::Server> server_;
    WorkQueue queue_;
    std::unique_ptr<WorkQueue> misbehaving_; // with --test only
    std::unique_ptr<Follower> follower_;
    std::mutex houseMutex_;
    std::condition_variable houseChanged_;
    bool stopped_ = false;
    std::thread house_;
};

} // namespace quorvex::service
