#include "service/http/server.h"

#include "service/http/connection.h"
#include "support/error.h"
#include "support/text.h"

#include <boost/asio/steady_timer.hpp>

#include <array>
#include <cerrno>
#include <cstring>
#include <thread>
#include <utility>

namespace quorvex::service::http {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using ErrorCode = boost::system::error_code;

constexpr int kBacklog = 4096; // the system lowers it to net.core.somaxconn
constexpr std::chrono::milliseconds kSweep(200);
constexpr std::chrono::milliseconds kAcceptPause(50); // when no descriptor is left

std::shared_ptr<asio::ssl::context> LoadCertificate(const ServerOptions& options) {
    if (options.certificateFile.empty()) return nullptr;
    auto context = std::make_shared<asio::ssl::context>(asio::ssl::context::tls_server);
    context->set_options(asio::ssl::context::default_workarounds | asio::ssl::context::no_tlsv1 |
                         asio::ssl::context::no_tlsv1_1 | asio::ssl::context::no_compression);
    ErrorCode error;
    context->use_certificate_chain_file(options.certificateFile, error);
    if (error) {
        throw support::Error(support::kErrorBadFile, support::FromUtf8("the certificate " + options.certificateFile +
                                                                       " cannot be used: " + error.message()));
    }
    context->use_private_key_file(options.keyFile, asio::ssl::context::pem, error);
    if (error) {
        throw support::Error(support::kErrorBadFile,
                             support::FromUtf8("the key " + options.keyFile + " cannot be used: " + error.message()));
    }
    return context;
}

std::string WhyNotBound(const ErrorCode& error, int port) {
    if (error == asio::error::access_denied && port < 1024)
        return "no right to bind a port below 1024; use a higher one or grant CAP_NET_BIND_SERVICE";
    if (error == asio::error::address_in_use) return "address in use";
    return error.message();
}

tcp::acceptor Listen(asio::io_context& context, const ServerOptions& options) {
    const bool bracketed = options.host.find(':') != std::string::npos;
    const std::string name = (bracketed ? "[" + options.host + "]" : options.host) + ":" + std::to_string(options.port);
    const auto fail = [&name](const std::string& why) -> support::Error {
        return support::Error(support::kErrorPermissionDenied,
                              support::FromUtf8("cannot listen on http://" + name + ": " + why));
    };
    ErrorCode error;
    tcp::resolver resolver(context);
    const auto found = resolver.resolve(options.host, std::to_string(options.port), tcp::resolver::passive, error);
    if (error || found.empty()) throw fail("unknown host name");
    const tcp::endpoint endpoint = *found.begin();
    tcp::acceptor acceptor(context);
    acceptor.open(endpoint.protocol(), error);
    if (!error) acceptor.set_option(tcp::acceptor::reuse_address(true), error);
    if (!error) acceptor.bind(endpoint, error);
    if (!error) acceptor.listen(kBacklog, error);
    if (error) throw fail(WhyNotBound(error, options.port));
    return acceptor;
}

void RefuseBusy(tcp::socket& socket) {
    static constexpr std::string_view kAnswer =
        "HTTP/1.1 503 Service Unavailable\r\nRetry-After: 1\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
    ErrorCode ignored;
    socket.non_blocking(true, ignored);
    socket.write_some(asio::buffer(kAnswer.data(), kAnswer.size()), ignored);
}

} // namespace

struct Server::State {
    State(ServerOptions given, Handlers handlers)
        : options(std::move(given)), shared(std::make_shared<Shared>()), tls(LoadCertificate(options)) {
        shared->limits = options.limits;
        shared->handlers = std::move(handlers);
        for (int i = 0; i < std::max(1, options.threads); ++i) loops.push_back(std::make_unique<Loop>());
        acceptor.emplace(Listen(loops[0]->context, options));
        port = acceptor->local_endpoint().port();
        for (const auto& loop : loops) sweepers.emplace_back(loop->context);
        pause.emplace(loops[0]->context);
    }

    void Accept() {
        Loop& loop = *loops[next++ % loops.size()];
        acceptor->async_accept(loop.context, [this, &loop](ErrorCode error, tcp::socket socket) {
            if (error == asio::error::operation_aborted) return;
            if (error) return AcceptLater();
            Admit(std::move(socket), loop);
            Accept();
        });
    }

    void AcceptLater() {
        pause->expires_after(kAcceptPause);
        pause->async_wait([this](ErrorCode error) {
            if (!error) Accept();
        });
    }

    void Admit(tcp::socket socket, Loop& loop) {
        ErrorCode error;
        const tcp::endpoint peer = socket.remote_endpoint(error);
        if (error) return; // gone already
        std::string client = peer.address().to_string();
        if (client.starts_with("::ffff:")) client.erase(0, 7);
        const Limits& limits = options.limits;
        const bool counted =
            limits.connectionsPerClient > 0 && !(options.unlimitedClient && options.unlimitedClient(client));
        ++shared->counts.accepted;
        if (shared->counts.open >= static_cast<std::int64_t>(limits.connections) ||
            (counted && !shared->clients.Enter(client, limits.connectionsPerClient))) {
            ++shared->counts.refused;
            return RefuseBusy(socket);
        }
        socket.set_option(tcp::no_delay(true), error);
        std::shared_ptr<asio::ssl::context> current;
        {
            const std::lock_guard lock(tlsMutex);
            current = tls;
        }
        asio::post(loop.context,
                   [this, &loop, current, counted, client = std::move(client), socket = std::move(socket)]() mutable {
                       Serve(std::move(socket), std::move(client), counted, loop, shared, std::move(current));
                   });
    }

    void Sweep(std::size_t i) {
        sweepers[i].expires_after(kSweep);
        sweepers[i].async_wait([this, i](ErrorCode error) {
            if (error) return;
            const Clock::time_point now = Clock::now();
            const std::vector<AnyConnection*> all(loops[i]->connections.begin(), loops[i]->connections.end());
            for (AnyConnection* const connection : all) connection->CloseIfLate(now);
            Sweep(i);
        });
    }

    // Calls something for each connection, on its thread.
    void Each(void (AnyConnection::*what)()) {
        for (const auto& loop : loops) {
            asio::post(loop->context, [what, &loop = *loop] {
                const std::vector<AnyConnection*> all(loop.connections.begin(), loop.connections.end());
                for (AnyConnection* const connection : all) (connection->*what)();
            });
        }
    }

    void WaitForConnections(std::chrono::milliseconds patience) const {
        const Clock::time_point end = Clock::now() + patience;
        while (shared->counts.open > 0 && Clock::now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }

    ServerOptions options;
    std::shared_ptr<Shared> shared;
    std::mutex tlsMutex;
    std::shared_ptr<asio::ssl::context> tls;
    std::vector<std::unique_ptr<Loop>> loops;
    std::optional<tcp::acceptor> acceptor; // of the first loop, as the pause
    std::vector<asio::steady_timer> sweepers;
    std::optional<asio::steady_timer> pause;
    std::size_t next = 0;
    int port = 0;
    std::vector<std::thread> threads;
};

Server::Server(ServerOptions options, Handlers handlers)
    : state_(std::make_unique<State>(std::move(options), std::move(handlers))) {}

Server::~Server() {
    Stop(std::chrono::milliseconds(0));
}

void Server::Start() {
    asio::post(state_->loops[0]->context, [this] { state_->Accept(); });
    for (std::size_t i = 0; i < state_->loops.size(); ++i) {
        asio::post(state_->loops[i]->context, [this, i] { state_->Sweep(i); });
        state_->threads.emplace_back([this, i] { state_->loops[i]->context.run(); });
    }
}

void Server::Stop(std::chrono::milliseconds patience) {
    if (state_->threads.empty()) return;
    state_->shared->draining = true;
    asio::post(state_->loops[0]->context, [this] {
        ErrorCode ignored;
        state_->acceptor->close(ignored);
        state_->pause->cancel();
    });
    state_->Each(&AnyConnection::CloseIfIdle);
    state_->WaitForConnections(patience);
    state_->Each(&AnyConnection::Close);
    for (std::size_t i = 0; i < state_->loops.size(); ++i) {
        asio::post(state_->loops[i]->context, [this, i] {
            state_->sweepers[i].cancel();
            state_->loops[i]->work.reset();
            state_->loops[i]->context.stop();
        });
    }
    for (std::thread& thread : state_->threads) thread.join();
    state_->threads.clear();
}

void Server::ReloadCertificate() {
    auto fresh = LoadCertificate(state_->options);
    const std::lock_guard lock(state_->tlsMutex);
    state_->tls = std::move(fresh);
}

int Server::Port() const {
    return state_->port;
}

const ServerCounts& Server::Counts() const {
    return state_->shared->counts;
}

} // namespace quorvex::service::http
