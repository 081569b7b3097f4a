#include "service/options.h"

#include "build_constants.h"
#include "support/characters.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quorvex::service {
namespace {

constexpr double kMostCredits = 1e15;

[[noreturn]] void Wrong(const std::string& what) {
    throw support::Error(support::kErrorInvalidCall, support::FromUtf8(what));
}

// The values as the command line gives them, before they become options.
struct Given {
    std::string message, accountPage, mapUrl, directoryUrl;
    std::vector<std::string> keys;
    int port = -1;
    std::int64_t credits = -1;
    double headerSeconds = 10, idleSeconds = 60, writeSeconds = 30;
    double drainSeconds = 10, drainDelay = 0, accountsWait = 10, followMinutes = 10;
    std::string logFormat = "json";
};

CLI::Option* Add(CLI::App& app, const std::string& name, auto& target, const std::string& help) {
    std::string variable = "QUORVEX_" + name.substr(2);
    for (char& c : variable) c = c == '-' ? '_' : support::ToUpper(c);
    return app.add_option(name, target, help)->envname(variable);
}

void AddAddressOptions(CLI::App& app, Options& options, Given& given) {
    Add(app, "--data", options.data, "folder of the data files; update packages lie in its folder \"updates\"");
    Add(app, "--port", given.port, "0 picks a free port; the address is printed when the service answers")
        ->check(CLI::Range(0, 65535));
    Add(app, "--host", options.host, "address to listen on; 0.0.0.0 for all")->capture_default_str();
    Add(app, "--tls-certificate", options.certificateFile, "PEM file with the certificate and its chain");
    Add(app, "--tls-key", options.keyFile, "PEM file with the key of the certificate");
    Add(app, "--base-url", options.baseUrl, "address under which callers know the service");
    Add(app, "--trusted-proxy", options.trustedProxies, "networks of proxies whose X-Forwarded fields count");
}

void AddAccountOptions(CLI::App& app, Options& options, Given& given) {
    Add(app, "--accounts", options.accounts,
        "SQLite file, or postgresql://... when several nodes share the accounts (accounts.db in the data folder)");
    Add(app, "--accounts-wait", given.accountsWait, "seconds that a lookup waits for a lost database")
        ->check(CLI::Range(0.0, 600.0))
        ->capture_default_str();
    Add(app, "--node", options.node, "this node's name in ledger and page (the computer's, and the port)");
    Add(app, "--key", given.keys, "a data key that may ask; can be given several times")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    Add(app, "--keys", options.keysFile,
        "file of data keys, one to a line, with the number of its credits after a blank");
    Add(app, "--credits", given.credits, "credits of a key that is new")->check(CLI::Range(0.0, kMostCredits));
    Add(app, "--admin-password-file", options.adminPasswordFile,
        "file with the password that shows keys and credits on the page at /");
}

void AddPageOptions(CLI::App& app, Options& options, Given& given) {
    Add(app, "--message", given.message, "shown to the user with every lookup");
    Add(app, "--account-page", given.accountPage, "page on which users administer their account");
    Add(app, "--map-url", given.mapUrl,
        "address of a map: {latitude}, {longitude}, {zoom} and {postcode} are filled in");
    Add(app, "--directory-url", given.directoryUrl, "address of a directory: {words} and {postcode} are filled in");
    Add(app, "--follow", options.follow, "address of another service whose update packages are fetched and applied");
    Add(app, "--follow-minutes", given.followMinutes, "minutes between two looks at it")
        ->check(CLI::Range(0.01, 10000.0))
        ->capture_default_str();
    app.add_flag("--test", options.test, "adds /test/..., which makes answers misbehave");
}

void AddLimitOptions(CLI::App& app, Options& options, Given& given) {
    const CLI::Range count(std::size_t{0}, std::size_t{1000000});
    const CLI::Range seconds(0.1, 86400.0);
    Add(app, "--io-threads", options.ioThreads, "threads that serve connections (0: one for each processor)")
        ->check(CLI::Range(0, 64));
    Add(app, "--workers", options.workers, "threads that look up (0: two for each processor)")
        ->check(CLI::Range(0, 1000));
    Add(app, "--queue", options.queue, "requests that may wait; more get status 503")
        ->check(CLI::Range(std::size_t{1}, std::size_t{1000000}))
        ->capture_default_str();
    Add(app, "--max-connections", options.limits.connections, "connections at a time")
        ->check(count)
        ->capture_default_str();
    Add(app, "--max-connections-per-client", options.limits.connectionsPerClient,
        "connections of one address at a time, trusted proxies excepted (0: no limit)")
        ->check(count)
        ->capture_default_str();
    Add(app, "--max-header-bytes", options.limits.headerBytes, "bytes of a request's line and fields")
        ->check(CLI::Range(std::size_t{1024}, std::size_t{1} << 20))
        ->capture_default_str();
    Add(app, "--header-seconds", given.headerSeconds, "time for a request to come")
        ->check(seconds)
        ->capture_default_str();
    Add(app, "--idle-seconds", given.idleSeconds, "time between two requests")->check(seconds)->capture_default_str();
    Add(app, "--write-seconds", given.writeSeconds, "time for a client to take a piece of an answer")
        ->check(seconds)
        ->capture_default_str();
}

void AddOperationOptions(CLI::App& app, Options& options, Given& given) {
    Add(app, "--access-log", options.accessLog, "file of one line for each request; - is the standard output");
    Add(app, "--access-log-format", given.logFormat, "json or combined")
        ->check(CLI::IsMember({"json", "combined"}))
        ->capture_default_str();
    Add(app, "--drain-seconds", given.drainSeconds, "time for answers under way when it is told to end")
        ->check(CLI::Range(0.0, 3600.0))
        ->capture_default_str();
    Add(app, "--drain-delay", given.drainDelay,
        "seconds for which /health says \"draining\" before connections are refused")
        ->check(CLI::Range(0.0, 3600.0))
        ->capture_default_str();
    app.set_config("--config", "", "file of options, name=value in each line")->envname("QUORVEX_CONFIG");
    app.set_version_flag("--version", "quorvex-service " + VersionText());
}

std::chrono::milliseconds Milliseconds(double seconds) {
    return std::chrono::milliseconds(std::llround(seconds * 1000));
}

void Take(Options& options, const Given& given) {
    options.port = given.port;
    for (const std::string& key : given.keys) options.keys.push_back(support::FromUtf8(key));
    if (given.credits >= 0) options.credits = given.credits;
    const auto text = [](std::wstring& target, const std::string& value) {
        if (!value.empty()) target = support::FromUtf8(value);
    };
    text(options.pages.popMessage, given.message);
    text(options.pages.accountPage, given.accountPage);
    text(options.pages.mapUrl, given.mapUrl);
    text(options.pages.directoryUrl, given.directoryUrl);
    options.limits.header = Milliseconds(given.headerSeconds);
    options.limits.idle = Milliseconds(given.idleSeconds);
    options.limits.write = Milliseconds(given.writeSeconds);
    options.drain = Milliseconds(given.drainSeconds);
    options.drainDelay = Milliseconds(given.drainDelay);
    options.accountsPatience = Milliseconds(given.accountsWait);
    options.followEvery = Milliseconds(given.followMinutes * 60);
    options.accessLogFormat = given.logFormat == "json" ? AccessLog::Format::Json : AccessLog::Format::Combined;
}

bool IsWebAddress(const std::string& text) {
    return text.starts_with("http://") || text.starts_with("https://");
}

// What each option allows and their company does not.
void CheckTogether(const Options& options, const Given& given, const CLI::App& app) {
    if (options.data.empty()) Wrong("--data is missing");
    if (given.port < 0) Wrong("--port is missing");
    if (options.credits && options.keys.empty() && options.keysFile.empty()) Wrong("--credits needs --key or --keys");
    if (options.certificateFile.empty() != options.keyFile.empty())
        Wrong("--tls-certificate and --tls-key come together");
    if (!options.baseUrl.empty() && (!IsWebAddress(options.baseUrl) || options.baseUrl.ends_with('/')))
        Wrong("--base-url begins with http:// or https:// and has no / at its end");
    if (!options.follow.empty() && !IsWebAddress(options.follow))
        Wrong("--follow needs an http:// or https:// address");
    if (options.follow.empty() && app.count("--follow-minutes") > 0) Wrong("--follow-minutes needs --follow");
    if (options.accessLog.empty() && app.count("--access-log-format") > 0)
        Wrong("--access-log-format needs --access-log");
    if (options.accessLog == "-" && options.test) Wrong("--access-log - and --test both write to the standard output");
    accounts::Networks(options.trustedProxies); // throws for what it cannot read
}

} // namespace

Options ParseOptions(const std::vector<std::string>& arguments) {
    Options options;
    Given given;
    CLI::App app(
        "Answers the pages of the address service from a folder of local data files.\n"
        "Every option can be given in a file (--config) or in the environment (--tls-key is QUORVEX_TLS_KEY).\n"
        "Accounts are managed with \"quorvex-service accounts --help\".",
        "quorvex-service");
    AddAddressOptions(app, options, given);
    AddAccountOptions(app, options, given);
    AddPageOptions(app, options, given);
    AddLimitOptions(app, options, given);
    AddOperationOptions(app, options, given);
    try {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        app.parse(std::move(reversed));
    } catch (const CLI::CallForHelp&) {
        options.text = app.help();
        return options;
    } catch (const CLI::CallForVersion& version) {
        options.text = std::string(version.what()) + "\n";
        return options;
    } catch (const CLI::ParseError& error) {
        Wrong(error.what());
    }
    Take(options, given);
    CheckTogether(options, given, app);
    return options;
}

std::vector<accounts::Accounts::Key> KeysOf(const Options& options) {
    std::vector<accounts::Accounts::Key> keys;
    for (const std::wstring& key : options.keys) keys.push_back({key, options.credits});
    if (options.keysFile.empty()) return keys;
    const std::wstring text = support::FromUtf8(support::ReadFileBytes(support::FromPath(options.keysFile)));
    std::wstring rest = support::ReplaceAll(support::ReplaceAll(text, L"\r", L""), L"\t", L" ");
    for (int number = 1; !rest.empty(); ++number) {
        const std::wstring line = support::NextField(rest, L"\n", true);
        std::wstring entry(support::Trim(line.substr(0, line.find(L'#'))));
        if (entry.empty()) continue;
        const std::wstring key = support::NextField(entry, L" ", true);
        const std::wstring_view own = support::Trim(entry);
        const double credits = support::IsNumber(own) ? support::ParseNumber(own) : -1;
        if (!own.empty() && (credits < 0 || credits > kMostCredits || credits != std::floor(credits))) {
            throw support::Error(support::kErrorBadFile, L"keys file, line " + std::to_wstring(number) +
                                                             L": a key and, after a blank, a whole number of credits");
        }
        keys.push_back({key, own.empty() ? options.credits : static_cast<std::int64_t>(credits)});
    }
    return keys;
}

std::string VersionText() {
    return std::to_string(kVersionMajor) + "." + std::to_string(kVersionMinor) + "." + std::to_string(kVersionRevision);
}

std::string AccountsDatabase(const Options& options) {
    return options.accounts.empty() ? (options.data / "accounts.db").string() : options.accounts;
}

} // namespace quorvex::service
