#pragma once

#include "service/http/server.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>

#include <chrono>
#include <mutex>
#include <unordered_map>
#include <unordered_set>

// How the server is made inside; for its own files.

namespace quorvex::service::http {

using Clock = std::chrono::steady_clock;

// Counts the connections of each client's address.
class ClientCounts {
  public:
    bool Enter(const std::string& client, std::size_t limit);
    void Leave(const std::string& client);

  private:
    std::mutex mutex_;
    std::unordered_map<std::string, std::size_t> counts_;
};

// What all connections share.
struct Shared {
    Limits limits;
    Server::Handlers handlers;
    ServerCounts counts;
    ClientCounts clients;
    std::atomic<bool> draining{false};
};

class AnyConnection;

// One thread that serves its connections in turn; all but the constructor is for that thread alone.
struct Loop {
    Loop() : context(1), work(boost::asio::make_work_guard(context)) {}

    std::unordered_set<AnyConnection*> connections; // before the context, which destroys the last of them
    boost::asio::io_context context;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work;
};

// A connection as its loop sees it.
class AnyConnection {
  public:
    AnyConnection() = default;
    AnyConnection(const AnyConnection&) = delete;
    AnyConnection& operator=(const AnyConnection&) = delete;
    virtual ~AnyConnection() = default;

    virtual void Close() = 0;
    virtual void CloseIfLate(Clock::time_point now) = 0;
    virtual void CloseIfIdle() = 0;
};

// Serves the connection until it ends; counted says that it holds a place in shared.clients. tls: null for plain HTTP.
// Call it on the loop's thread.
void Serve(boost::asio::ip::tcp::socket socket, std::string client, bool counted, Loop& loop,
           std::shared_ptr<Shared> shared, std::shared_ptr<boost::asio::ssl::context> tls);

} // namespace quorvex::service::http
