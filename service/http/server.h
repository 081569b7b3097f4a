#pragma once

#include "service/http/message.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quorvex::service::http {

struct Limits {
    std::size_t headerBytes = 16 * 1024; // request line and fields
    std::size_t targetBytes = 8 * 1024;
    std::size_t connections = 20000;
    std::size_t connectionsPerClient = 0;    // 0: no limit
    std::chrono::milliseconds header{10000}; // from the first byte to the last of the head
    std::chrono::milliseconds idle{60000};
    std::chrono::milliseconds write{30000}; // for each piece of an answer
};

struct ServerOptions {
    std::string host = "127.0.0.1";
    int port = 0;
    std::string certificateFile; // PEM, with the chain; empty: no TLS
    std::string keyFile;
    int threads = 1;
    Limits limits;
    // Clients to which connectionsPerClient does not apply.
    std::function<bool(const std::string& client)> unlimitedClient;
};

// What happened so far.
struct ServerCounts {
    std::atomic<std::uint64_t> accepted{0};
    std::atomic<std::uint64_t> refused{0}; // over a limit of connections
    std::atomic<std::uint64_t> timedOut{0};
    std::atomic<std::int64_t> open{0};
};

// An event-driven HTTP/1.1 server. It knows requests and answers; what stands at an address is the handler's business.
class Server {
  public:
    struct Handlers {
        // Called on a thread that serves other connections too: must not block.
        std::function<void(Request, Respond)> request;
        // A request that was answered with an error status before anybody could read it.
        std::function<void(const std::string& client, int status)> rejected;
    };

    // Begins to listen; nobody is answered before Start. Throws support::Error saying why the address or the
    // certificate cannot be used.
    Server(ServerOptions options, Handlers handlers);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    void Start();
    // Takes no more connections, ends idle ones, and waits for answers under way, at most that long; then ends
    // everything. May be called again.
    void Stop(std::chrono::milliseconds patience);
    // Reads the certificate and the key again, for new connections. Throws support::Error and keeps the old ones if
    // they cannot be used.
    void ReloadCertificate();

    int Port() const;
    const ServerCounts& Counts() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace quorvex::service::http
