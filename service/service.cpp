#include "service/service.h"

#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <httplib.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <utility>

namespace quorvex::service {
namespace {

constexpr std::size_t kThreads = 32; // one waits for each open connection
constexpr std::size_t kRequestsPerConnection = 1000;
constexpr int kKeepAliveSeconds = 2; // a stop waits as long for idle connections
constexpr char kPlainText[] = "text/plain; charset=utf-8";

std::string AddressText(const std::string& host, int port) {
    const bool bracketed = host.find(':') != std::string::npos;
    return "http://" + (bracketed ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

// A host name as a request gave it, fit to be written into an address.
bool IsHostText(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '.' || c == '-' ||
               c == ':' || c == '[' || c == ']' || c == '_';
    });
}

// Sends a file piece by piece: packages are large.
void SendFile(const std::filesystem::path& path, const std::string& type, httplib::Response& response) {
    auto file = std::make_shared<std::ifstream>(path, std::ios::binary);
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error || !*file) {
        response.status = 404;
        return;
    }
    if (size == 0) {
        response.set_content("", 0, type);
        return;
    }
    response.set_content_provider(size, type, [file](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
        std::array<char, 65536> piece;
        file->clear();
        file->seekg(static_cast<std::streamoff>(offset));
        file->read(piece.data(), static_cast<std::streamsize>(std::min(length, piece.size())));
        const auto read = static_cast<std::size_t>(file->gcount());
        return read > 0 && sink.write(piece.data(), read);
    });
}

} // namespace

Service::Service(const Options& options)
    : data_(options.data), index_(data_), updates_(options.data / "updates"),
      pages_(data_, index_, accounts_, updates_, options.pages), test_(options.test),
      server_(std::make_unique<httplib::Server>()) {
    AddKeys(accounts_, options);
    server_->new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
    server_->set_keep_alive_max_count(kRequestsPerConnection);
    server_->set_keep_alive_timeout(kKeepAliveSeconds);
    server_->set_tcp_nodelay(true);
    // The library's own choice would let two services share one port without a word.
    server_->set_socket_options([](socket_t socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
    });
    // All requests are routed here: the library's patterns are regular expressions, too deep for long paths.
    server_->set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
        Handle(request, response);
        return httplib::Server::HandlerResponse::Handled;
    });
    int port = options.port;
    if (port == 0) {
        port = server_->bind_to_any_port(options.host);
    } else if (!server_->bind_to_port(options.host, port)) {
        port = -1;
    }
    if (port <= 0) {
        throw support::Error(support::kErrorPermissionDenied,
                             L"cannot listen on " + support::FromUtf8(AddressText(options.host, options.port)));
    }
    address_ = AddressText(options.host, port);
}

Service::~Service() {
    Stop();
}

void Service::Start() {
    thread_ = std::thread([this] { server_->listen_after_bind(); });
    while (!server_->is_running()) std::this_thread::yield(); // before that a stop would not be heard
}

void Service::Stop() {
    control_.Stop();
    server_->stop();
    if (thread_.joinable()) thread_.join();
}

void Service::Handle(const httplib::Request& request, httplib::Response& response) {
    response.set_header("Cache-Control", "no-store");
    if (request.method != "GET" && request.method != "HEAD") {
        response.status = 405;
        response.set_header("Allow", "GET, HEAD");
        response.set_content("Pages are asked for with GET.\n", kPlainText);
        return;
    }
    if (test_ && PathOf(request.target).starts_with("/test/")) {
        std::string answer;
        response.status = control_.Page(request.target, answer) ? 200 : 400;
        response.set_content(answer, kPlainText);
        return;
    }
    const TestControl::Order order = test_ ? control_.Next(request.target) : TestControl::Order();
    PageAnswer answer = Answer(request);
    if (order.mode != TestControl::Mode::None) {
        Misbehave(order, std::move(answer), response);
        return;
    }
    response.status = answer.status;
    if (answer.file) {
        SendFile(*answer.file, answer.contentType, response);
    } else {
        response.set_content(answer.body, answer.contentType);
    }
}

PageAnswer Service::Answer(const httplib::Request& request) {
    const std::string host = request.get_header_value("Host");
    return pages_.Get(request.target, IsHostText(host) ? "http://" + host : address_);
}

} // namespace quorvex::service
