#include "service/service.h"

#include "service/file_answer.h"
#include "service/forwarded.h"
#include "service/json_text.h"
#include "service/misbehave.h"
#include "service/openapi.h"
#include "support/characters.h"
#include "support/error.h"
#include "support/files.h"
#include "support/machine_posix.h"
#include "support/text.h"

#include <algorithm>
#include <iostream>
#include <utility>

namespace quorvex::service {
namespace {

constexpr char kPlainText[] = "text/plain; charset=utf-8";
constexpr char kJson[] = "application/json; charset=utf-8";
constexpr std::chrono::milliseconds kTestLists(30000); // tests ask for them at once
constexpr std::chrono::seconds kHouse(1);
constexpr int kAnnounceEvery = 5; // rounds of the house
constexpr std::size_t kMisbehaving = 64;
constexpr wchar_t kBusy[] = L"The service is busy. Please try again in a second.";

std::size_t Processors() {
    return std::max(1U, std::thread::hardware_concurrency());
}

http::ServerOptions ServerOptionsOf(const Options& options, const accounts::Networks& proxies) {
    http::ServerOptions server;
    server.host = options.host;
    server.port = options.port;
    server.certificateFile = options.certificateFile;
    server.keyFile = options.keyFile;
    server.threads = options.ioThreads > 0 ? options.ioThreads : static_cast<int>(Processors());
    server.limits = options.limits;
    server.unlimitedClient = [&proxies](const std::string& client) { return proxies.Hold(client); };
    return server;
}

PageAnswer TextAnswer(int status, std::string body, std::string page, const char* type = kPlainText) {
    PageAnswer answer{status, type, std::move(body)};
    answer.page = std::move(page);
    answer.result = status < 400 ? "ok" : "error";
    return answer;
}

std::string NodeName(const Options& options, int port) {
    if (!options.node.empty()) return options.node;
    const std::wstring computer = support::PosixMachine().ComputerName();
    return (computer.empty() ? "node" : support::ToUtf8(computer)) + "-" + std::to_string(port);
}

} // namespace

// One request on its way through the service.
struct Service::Exchange {
    http::Request request;
    http::Respond respond;
    std::string path;
    PageRequest page;
    TestControl::Order order;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

Service::Service(const Options& options)
    : options_(options), proxies_(options.trustedProxies), data_(options.data),
      accounts_({AccountsDatabase(options), options.node.empty() ? NodeName(options, options.port) : options.node,
                 options.accountsPatience}),
      updates_(options.data / "updates"), pages_(data_, accounts_, updates_, options.pages),
      log_(options.accessLog, options.accessLogFormat), front_(options.adminPasswordFile),
      server_(
          std::make_unique<http::Server>(ServerOptionsOf(options_, proxies_),
                                         http::Server::Handlers{[this](http::Request request, http::Respond respond) {
                                                                    Handle(std::move(request), std::move(respond));
                                                                },
                                                                [this](const std::string& client, int status) {
                                                                    metrics_.NoteRejected(status);
                                                                    AccessEntry entry;
                                                                    entry.client = client;
                                                                    entry.method = "-";
                                                                    entry.page = "other";
                                                                    entry.result = "error";
                                                                    entry.status = status;
                                                                    log_.Write(entry);
                                                                }})),
      queue_(options.workers > 0 ? static_cast<std::size_t>(options.workers) : 2 * Processors(), options.queue) {
    accounts_.Add(KeysOf(options));
    const bool bracketed = options.host.find(':') != std::string::npos;
    address_ = (options.certificateFile.empty() ? "http://" : "https://") +
               (bracketed ? "[" + options.host + "]" : options.host) + ":" + std::to_string(server_->Port());
    node_ = NodeName(options, server_->Port());
    if (options.test) misbehaving_ = std::make_unique<WorkQueue>(kMisbehaving, kMisbehaving);
    if (!options.follow.empty())
        follower_ = std::make_unique<Follower>(options.data, options.follow, options.followEvery);
}

Service::~Service() {
    Stop();
}

void Service::Start() {
    data_.Start();
    if (options_.test) data_.WaitForLists(kTestLists);
    server_->Start();
    house_ = std::thread([this] { KeepHouse(); });
    if (follower_) follower_->Start();
}

void Service::Stop() {
    {
        const std::lock_guard lock(houseMutex_);
        if (stopped_) return;
        stopped_ = true;
        houseChanged_.notify_all();
    }
    if (house_.joinable()) {
        draining_ = true;
        Announce("draining");
        std::this_thread::sleep_for(options_.drainDelay);
    }
    control_.Stop();
    server_->Stop(options_.drain);
    follower_.reset();
    queue_.Stop();
    misbehaving_.reset();
    accounts_.Stop();
    data_.Stop();
    if (house_.joinable()) house_.join();
    log_.Flush();
}

void Service::Reload() {
    data_.Reload();
    for (const auto& reload : {std::function<void()>([this] { server_->ReloadCertificate(); }),
                               std::function<void()>([this] { log_.Reopen(); })}) {
        try {
            reload();
        } catch (const support::Error& error) {
            std::cerr << "quorvex-service: " + support::ToUtf8(error.Description()) + "\n";
        }
    }
}

// Must not block: runs on a thread that serves connections.
void Service::Handle(http::Request request, http::Respond respond) {
    auto exchange = std::make_shared<Exchange>();
    exchange->request = std::move(request);
    exchange->respond = std::move(respond);
    exchange->path = PathOf(exchange->request.target);
    const std::string& method = exchange->request.method;
    if (method != "GET" && method != "HEAD")
        return Finish(exchange, TextAnswer(405, "Pages are asked for with GET.\n", "other"));
    const std::string& path = exchange->path;
    if (path == "/health") return Finish(exchange, Health());
    if (path == "/metrics") return Finish(exchange, MetricsPage());
    if (path == "/openapi.json") return Finish(exchange, TextAnswer(200, kOpenApi, "openapi", kJson));
    if (options_.test && path.starts_with("/test/")) {
        std::string answer;
        const bool done = control_.Page(exchange->request.target, answer);
        return Finish(exchange, TextAnswer(done ? 200 : 400, answer, "test"));
    }
    if (options_.test) exchange->order = control_.Next(exchange->request.target);
    exchange->page = PageRequestOf(exchange->request);
    WorkQueue& queue = exchange->order.mode == TestControl::Mode::None ? queue_ : *misbehaving_;
    if (queue.Add([this, exchange] { LookUp(exchange); })) return;
    ++refused_;
    Finish(exchange, BusyAnswer(kBusy));
}

// On a worker's thread.
void Service::LookUp(const std::shared_ptr<Exchange>& exchange) {
    try {
        if (exchange->path != "/")
            return pages_.Get(exchange->page,
                              [this, exchange](PageAnswer answer) { Finish(exchange, std::move(answer)); });
        const auto set = data_.Current();
        const FrontPage::State state{data_.State(), accounts_, metrics_, node_, address_, draining_};
        front_.Answer(exchange->request, exchange->page, state, pages_,
                      [this, exchange](PageAnswer answer) { Finish(exchange, std::move(answer)); });
    } catch (const support::Error& error) {
        std::cerr << "quorvex-service: " + support::ToUtf8(error.Description()) + "\n";
        Finish(exchange, TextAnswer(500, "The page cannot be shown just now.\n", "other"));
    } catch (const std::exception& error) {
        std::cerr << std::string("quorvex-service: ") + error.what() + "\n";
        Finish(exchange, TextAnswer(500, "The page cannot be shown just now.\n", "other"));
    }
}

void Service::Finish(const std::shared_ptr<Exchange>& exchange, PageAnswer answer) {
    http::Response response;
    if (answer.file) {
        response = FileAnswer(exchange->request, *answer.file, answer.contentType);
    } else {
        response.status = answer.status;
        response.contentType = std::move(answer.contentType);
        response.body = std::move(answer.body);
        response.headers = {{"Cache-Control", "no-store"}};
    }
    if (answer.status == 405) response.headers.emplace_back("Allow", "GET, HEAD");
    if (answer.status == 401) response.headers.emplace_back("WWW-Authenticate", "Basic realm=\"quorvex-service\"");
    if (answer.retry) response.headers.emplace_back("Retry-After", "1");
    AccessEntry entry;
    entry.client = exchange->page.client.empty() ? exchange->request.client : exchange->page.client;
    entry.account = answer.account;
    entry.method = exchange->request.method;
    entry.page = answer.page;
    entry.result = answer.result;
    entry.agent = exchange->request.Header("User-Agent");
    entry.request = exchange->page.id;
    entry.status = response.status;
    entry.bytes = response.file ? static_cast<std::size_t>(response.file->length) : response.body.size();
    entry.credits = answer.credits;
    entry.time =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - exchange->start);
    metrics_.Note(entry.page, entry.status, entry.result, entry.credits, entry.time);
    log_.Write(entry);
    if (exchange->order.mode == TestControl::Mode::None) return exchange->respond(std::move(response));
    exchange->respond(Misbehaved(control_, exchange->order, std::move(response)));
}

PageRequest Service::PageRequestOf(const http::Request& request) {
    const Forwarded forwarded = ForwardedOf(request, proxies_);
    const std::string base =
        !options_.baseUrl.empty() ? options_.baseUrl : (forwarded.base.empty() ? address_ : forwarded.base);
    return {request.target, base, forwarded.client, forwarded.id};
}

PageAnswer Service::Health() const {
    const DataSource::Status state = data_.State();
    const char* const status =
        draining_ ? "draining" : (!state.found ? "no data" : (state.ready ? "ready" : "starting"));
    const bool good = std::string_view(status) == "ready";
    const char* const accounts = !accounts_.Counting() ? "none" : (accounts_.Reachable() ? "ready" : "unreachable");
    const auto flag = [](bool value) { return value ? "true" : "false"; };
    std::string text = std::string("{\"status\":\"") + status + "\",\"node\":\"" + JsonText(node_) +
                       "\",\"version\":\"" + VersionText() + "\",\"lists\":" + flag(state.ready) +
                       ",\"data\":{\"full\":\"" + state.full + "\",\"street\":\"" + state.street + "\",\"postzon\":\"" +
                       state.postZon + "\",\"reloadFailed\":" + flag(!state.problem.empty()) + "},\"accounts\":\"" +
                       accounts + "\"}\n";
    PageAnswer answer = TextAnswer(good ? 200 : 503, std::move(text), "health", kJson);
    answer.retry = !good;
    return answer;
}

PageAnswer Service::MetricsPage() const {
    const http::ServerCounts& counts = server_->Counts();
    const DataSource::Status state = data_.State();
    std::string text = metrics_.Text();
    const auto gauge = [&text](const char* name, const char* help, double value) {
        text += MetricText(name, "gauge", help, value);
    };
    const auto counter = [&text](const char* name, const char* help, std::uint64_t value) {
        text += MetricText(name, "counter", help, static_cast<double>(value));
    };
    gauge("quorvex_ready", "1 if lookups are answered and the lists are there.",
          state.ready && state.found && !draining_);
    gauge("quorvex_draining", "1 while the service ends.", draining_);
    gauge("quorvex_data_found", "1 if the data folder holds data files.", state.found);
    counter("quorvex_data_readings_total", "How often the lists were made.", state.readings);
    gauge("quorvex_data_reading_failed", "1 if the latest reading failed.", !state.problem.empty());
    text +=
        "# HELP quorvex_data_date Date of the last update package, year month day.\n# TYPE quorvex_data_date gauge\n";
    const auto date = [&text](const char* kind, const std::string& day) {
        text += std::string("quorvex_data_date{kind=\"") + kind + "\"} " + (day.empty() ? "0" : day) + "\n";
    };
    date("full", state.full);
    date("street", state.street);
    date("postzon", state.postZon);
    gauge("quorvex_connections", "Open connections.", static_cast<double>(counts.open));
    counter("quorvex_connections_total", "Connections taken.", counts.accepted);
    counter("quorvex_connections_refused_total", "Connections over a limit.", counts.refused);
    counter("quorvex_connections_timed_out_total", "Connections ended for being slow.", counts.timedOut);
    gauge("quorvex_queue", "Requests that wait for a worker.", static_cast<double>(queue_.Waiting()));
    counter("quorvex_queue_refused_total", "Requests refused for a full queue.", refused_);
    gauge("quorvex_accounts_reachable", "0 while the database of the accounts is lost.", accounts_.Reachable());
    counter("quorvex_accounts_transactions_total", "Transactions that took credits.", accounts_.Transactions());
    counter("quorvex_access_log_lost_total", "Lines of the access log that could not be written.", log_.Lost());
    PageAnswer answer = TextAnswer(200, std::move(text), "metrics", "text/plain; version=0.0.4; charset=utf-8");
    return answer;
}

void Service::Announce(const char* state) {
    if (!accounts_.Counting() || !accounts_.Reachable()) return;
    const DataSource::Status data = data_.State();
    try {
        accounts_.Announce({node_, address_, VersionText(), state, data.full, accounts::NowMs()});
    } catch (const support::Error&) { // the charger reports a lost database
    }
}

void Service::KeepHouse() {
    for (int round = 0;; ++round) {
        log_.Flush();
        accounts_.Refresh();
        if (round % kAnnounceEvery == 0) Announce(data_.State().ready ? "ready" : "starting");
        std::unique_lock lock(houseMutex_);
        if (houseChanged_.wait_for(lock, kHouse, [this] { return stopped_; })) return;
    }
}

} // namespace quorvex::service
