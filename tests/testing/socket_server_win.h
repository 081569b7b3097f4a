#pragma once

#include <winsock2.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace quorvex::testing {

// One accepted connection, as a test's script sees it.
class Connection {
  public:
    Connection(SOCKET socket, const std::atomic<bool>& stopping) : socket_(socket), stopping_(stopping) {}
    ~Connection() { Close(); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool Send(std::string_view bytes); // false when the other side is gone
    // A complete reply with the stated body; extra header lines end in CR LF.
    bool Reply(std::string_view body, std::string_view status = "200 OK", std::string_view headers = {});
    void Close();
    void Reset(); // drops the connection so that the other side sees an error
    // Says nothing until the client leaves, the server stops or the time is over; true when the client left.
    bool StaySilent(int milliseconds = 60000);
    bool Open() const { return socket_ != INVALID_SOCKET; }
    bool ServerStopping() const { return stopping_; }

  private:
    friend class SocketServer;
    // The next request's head; empty at the end.
    std::string ReadHead();

    SOCKET socket_;
    const std::atomic<bool>& stopping_;
    std::string read_;
};

// What a test does with a request: its path and query, as they came over the wire.
using Script = std::function<void(Connection&, const std::string& target)>;

// A small HTTP server on a free port of this machine, with a thread per connection; connections are kept alive.
class SocketServer {
  public:
    explicit SocketServer(Script script, int family = AF_INET);
    ~SocketServer();
    SocketServer(const SocketServer&) = delete;
    SocketServer& operator=(const SocketServer&) = delete;

    bool Listening() const { return listener_ != INVALID_SOCKET; }
    int Port() const { return port_; }
    std::wstring Url(const std::wstring& target) const; // by address
    // Whole heads of the requests so far.
    std::vector<std::string> Heads() const;
    std::string LastHead() const;
    int Connections() const { return connections_; }

  private:
    void Accept();
    void Serve(SOCKET socket);

    Script script_;
    int family_;
    SOCKET listener_ = INVALID_SOCKET;
    int port_ = 0;
    std::atomic<bool> stopping_{false};
    std::atomic<int> connections_{0};
    mutable std::mutex mutex_;
    std::vector<std::string> heads_;
    std::vector<std::thread> threads_; // touched by the accepting thread, and after its end
    std::thread acceptor_;
};

// A port on which nobody listens.
int ClosedPort();

} // namespace quorvex::testing
