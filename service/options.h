#pragma once

#include "service/access_log.h"
#include "service/accounts/accounts.h"
#include "service/http/server.h"
#include "service/pages.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::service {

struct Options {
    std::filesystem::path data; // folder of the data files; packages lie in its folder "updates"
    std::string host = "127.0.0.1";
    int port = 0; // 0: any free one
    std::string certificateFile;
    std::string keyFile;
    std::string baseUrl;        // under which callers know the service; empty: what the request says
    std::string trustedProxies; // networks whose X-Forwarded-* and X-Request-ID fields count

    std::string accounts; // PostgreSQL address or SQLite file; empty: "accounts.db" in the data folder
    std::string node;     // this node's name; empty: the computer's and the port
    std::chrono::milliseconds accountsPatience{10000};
    std::vector<std::wstring> keys;
    std::filesystem::path keysFile;
    std::optional<std::int64_t> credits; // of each key that has none of its own
    std::string adminPasswordFile;

    PageSettings pages;

    http::Limits limits;
    int ioThreads = 0; // 0: one for each processor
    int workers = 0;   // 0: twice as many
    std::size_t queue = 2048;
    std::chrono::milliseconds drainDelay{0};
    std::chrono::milliseconds drain{10000};

    std::string accessLog;
    AccessLog::Format accessLogFormat = AccessLog::Format::Json;

    std::string follow; // address of a service whose packages are applied here
    std::chrono::milliseconds followEvery{600000};

    bool test = false;
    std::string text; // not empty: to be printed in the place of running (help, version)
};

// Reads the arguments behind the program's name, the file of --config, and the environment. Throws support::Error
// saying what is wrong.
Options ParseOptions(const std::vector<std::string>& arguments);
// The keys of the options and of their file. Throws support::Error.
std::vector<accounts::Accounts::Key> KeysOf(const Options& options);
std::string VersionText();
// The database of the accounts.
std::string AccountsDatabase(const Options& options);

} // namespace quorvex::service
