#include "testing/socket_server_win.h"

#include <ws2tcpip.h>

#include <array>
#include <chrono>
#include <cstring>

namespace quorvex::testing {
namespace {

struct Sockets {
    Sockets() {
        WSADATA data;
        WSAStartup(MAKEWORD(2, 2), &data);
    }
    ~Sockets() { WSACleanup(); }
};

void StartSockets() {
    static const Sockets sockets;
}

// True when something can be read (the end of the stream, too).
bool Readable(SOCKET socket, int milliseconds) {
    fd_set set;
    FD_ZERO(&set);
    FD_SET(socket, &set);
    timeval time{milliseconds / 1000, (milliseconds % 1000) * 1000};
    return select(0, &set, nullptr, nullptr, &time) > 0;
}

// Binds to a free port of the loopback address; 0 when that is not possible.
int BindLoopback(SOCKET socket, int family) {
    sockaddr_storage address{};
    address.ss_family = static_cast<decltype(address.ss_family)>(family);
    int size = sizeof(sockaddr_in);
    if (family == AF_INET6) {
        reinterpret_cast<sockaddr_in6*>(&address)->sin6_addr.s6_addr[15] = 1;
        size = sizeof(sockaddr_in6);
    } else {
        reinterpret_cast<sockaddr_in*>(&address)->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    }
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    if (bind(socket, plain, size) != 0 || getsockname(socket, plain, &size) != 0) return 0;
    return ntohs(family == AF_INET6 ? reinterpret_cast<sockaddr_in6*>(&address)->sin6_port
                                    : reinterpret_cast<sockaddr_in*>(&address)->sin_port);
}

} // namespace

bool Connection::Send(std::string_view bytes) {
    while (!bytes.empty() && Open()) {
        const int sent = send(socket_, bytes.data(), static_cast<int>(bytes.size()), 0);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return bytes.empty();
}

bool Connection::Reply(std::string_view body, std::string_view status, std::string_view headers) {
    std::string reply = "HTTP/1.1 ";
    reply.append(status).append("\r\nContent-Length: ").append(std::to_string(body.size())).append("\r\n");
    return Send(reply.append(headers).append("\r\n").append(body));
}

void Connection::Close() {
    if (!Open()) return;
    shutdown(socket_, SD_BOTH);
    closesocket(socket_);
    socket_ = INVALID_SOCKET;
}

void Connection::Reset() {
    if (!Open()) return;
    const linger hard{1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&hard), sizeof hard);
    closesocket(socket_);
    socket_ = INVALID_SOCKET;
}

bool Connection::StaySilent(int milliseconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (Open() && !stopping_ && std::chrono::steady_clock::now() < end) {
        if (!Readable(socket_, 20)) continue;
        char byte;
        if (recv(socket_, &byte, 1, MSG_PEEK) <= 0) return true;
    }
    return false;
}

std::string Connection::ReadHead() {
    for (;;) {
        const std::size_t end = read_.find("\r\n\r\n");
        if (end != std::string::npos) {
            const std::string head = read_.substr(0, end + 2);
            read_.erase(0, end + 4);
            return head;
        }
        while (!Readable(socket_, 50)) {
            if (stopping_) return {};
        }
        std::array<char, 4096> buffer;
        const int got = recv(socket_, buffer.data(), static_cast<int>(buffer.size()), 0);
        if (got <= 0) return {};
        read_.append(buffer.data(), static_cast<std::size_t>(got));
    }
}

SocketServer::SocketServer(Script script, int family) : script_(std::move(script)), family_(family) {
    StartSockets();
    const SOCKET socket = ::socket(family, SOCK_STREAM, IPPROTO_TCP);
    if (socket == INVALID_SOCKET) return;
    port_ = BindLoopback(socket, family);
    if (port_ == 0 || listen(socket, SOMAXCONN) != 0) {
        closesocket(socket);
        return;
    }
    listener_ = socket;
    acceptor_ = std::thread([this] { Accept(); });
}

SocketServer::~SocketServer() {
    stopping_ = true;
    if (acceptor_.joinable()) acceptor_.join();
    for (std::thread& thread : threads_) thread.join();
    if (listener_ != INVALID_SOCKET) closesocket(listener_);
}

void SocketServer::Accept() {
    while (!stopping_) {
        if (!Readable(listener_, 20)) continue;
        const SOCKET socket = accept(listener_, nullptr, nullptr);
        if (socket == INVALID_SOCKET) continue;
        ++connections_;
        threads_.emplace_back([this, socket] { Serve(socket); });
    }
}

void SocketServer::Serve(SOCKET socket) {
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
    Connection connection(socket, stopping_);
    while (connection.Open() && !stopping_) {
        const std::string head = connection.ReadHead();
        if (head.empty()) return;
        {
            const std::lock_guard lock(mutex_);
            heads_.push_back(head);
        }
        // "GET target HTTP/1.1": the target may hold anything but a line end.
        const std::string line = head.substr(0, head.find("\r\n"));
        const std::size_t start = line.find(' ') + 1;
        script_(connection, line.substr(start, line.rfind(' ') - start));
    }
}

std::wstring SocketServer::Url(const std::wstring& target) const {
    const std::wstring host = family_ == AF_INET6 ? L"[::1]" : L"127.0.0.1";
    return L"http://" + host + L":" + std::to_wstring(port_) + target;
}

std::vector<std::string> SocketServer::Heads() const {
    const std::lock_guard lock(mutex_);
    return heads_;
}

std::string SocketServer::LastHead() const {
    const std::lock_guard lock(mutex_);
    return heads_.empty() ? std::string() : heads_.back();
}

int ClosedPort() {
    StartSockets();
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    const int port = BindLoopback(socket, AF_INET);
    closesocket(socket);
    return port;
}

} // namespace quorvex::testing
