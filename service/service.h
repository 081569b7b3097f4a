#pragma once

#include "service/accounts.h"
#include "service/address_index.h"
#include "service/local_data.h"
#include "service/options.h"
#include "service/pages.h"
#include "service/test_control.h"
#include "service/update_folder.h"

#include <memory>
#include <string>
#include <thread>

namespace httplib {
class Server;
struct Request;
struct Response;
} // namespace httplib

namespace quorvex::service {

// The running service: reads the data, listens, answers until it is stopped.
class Service {
  public:
    // Reads the data and begins to listen; nobody is answered yet. Throws support::Error when the data cannot be read
    // or the address is not free.
    explicit Service(const Options& options);
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    // Answers from now on, on threads of its own.
    void Start();
    // Ends all answers that wait, then returns when the last thread is done.
    void Stop();

    // "http://host:port", with the port in use.
    const std::string& Address() const { return address_; }

  private:
    void Handle(const httplib::Request& request, httplib::Response& response);
    PageAnswer Answer(const httplib::Request& request);
    void Misbehave(TestControl::Order order, PageAnswer answer, httplib::Response& response);

    LocalData data_;
    AddressIndex index_;
    Accounts accounts_;
    UpdateFolder updates_;
    Pages pages_;
    bool test_;
    TestControl control_;
    std::unique_ptr<httplib::Server> server_;
    std::string address_;
    std::thread thread_;
};

} // namespace quorvex::service
