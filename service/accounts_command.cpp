#include "service/accounts_command.h"

#include "service/accounts/networks.h"
#include "service/accounts/store.h"
#include "service/json_text.h"
#include "support/error.h"
#include "support/text.h"

#include <CLI/CLI.hpp>

#include <ctime>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <utility>

namespace quorvex::service {
namespace {

constexpr char kNode[] = "command";

struct Given {
    std::string database, data, name, key, from, to, before;
    std::int64_t credits = -1;
    std::int64_t change = 0;
    std::int64_t rate = 0;
    std::size_t most = 100;
    bool enable = false;
    bool json = false;
};

std::string DateTime(std::int64_t ms) {
    const std::time_t seconds = ms / 1000;
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    std::array<char, 32> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &utc)};
}

std::int64_t MsOfDate(const std::string& text) {
    std::tm date{};
    std::istringstream stream(text);
    stream >> std::get_time(&date, "%Y-%m-%d");
    if (stream.fail())
        throw support::Error(support::kErrorInvalidCall, L"a date is year-month-day, such as 2026-01-31");
    return static_cast<std::int64_t>(timegm(&date)) * 1000;
}

[[noreturn]] void NoSuchAccount(const std::string& name) {
    throw support::Error(support::kErrorInvalidCall, support::FromUtf8("there is no account named \"" + name + "\""));
}

void AddAccount(accounts::AccountStore& store, const Given& given) {
    accounts::NewAccount account;
    account.name = given.name;
    if (given.credits >= 0) account.credits = given.credits;
    if (given.rate > 0) account.rate = given.rate;
    account.networks = given.from;
    accounts::Networks checked(given.from);
    const std::string key = given.key.empty() ? accounts::NewKey() : given.key;
    if (store.Find(support::FromUtf8(key)))
        throw support::Error(support::kErrorInvalidCall, L"there is an account with this key already");
    store.Add(support::FromUtf8(key), account, kNode);
    std::cout << "key: " << key << "\nIt is not stored and cannot be shown again.\n";
}

void List(accounts::AccountStore& store, bool json) {
    const auto number = [](const std::optional<std::int64_t>& value, const char* none) {
        return value ? std::to_string(*value) : std::string(none);
    };
    if (!json) {
        std::cout << std::left << std::setw(24) << "name" << std::setw(14) << "credits" << std::setw(10) << "state"
                  << std::setw(10) << "a second"
                  << "from\n";
    }
    for (const accounts::Account& account : store.List()) {
        if (json) {
            std::cout << "{\"name\":\"" << JsonText(account.name)
                      << "\",\"credits\":" << number(account.credits, "null")
                      << ",\"disabled\":" << (account.disabled ? "true" : "false")
                      << ",\"rate\":" << number(account.rate, "null") << ",\"from\":\"" << JsonText(account.networks)
                      << "\"}\n";
            continue;
        }
        std::cout << std::setw(24) << account.name << std::setw(14) << number(account.credits, "no limit")
                  << std::setw(10) << (account.disabled ? "disabled" : "active") << std::setw(10)
                  << number(account.rate, "any") << (account.networks.empty() ? "anywhere" : account.networks) << "\n";
    }
}

void Ledger(accounts::AccountStore& store, const Given& given) {
    for (const accounts::LedgerEntry& entry : store.Ledger(given.name, given.most)) {
        std::cout << DateTime(entry.at) << "  " << std::left << std::setw(24) << entry.account << std::right
                  << std::setw(8) << entry.change << "  " << entry.what << "  " << entry.node << "\n";
    }
}

std::string DatabaseOf(const Given& given) {
    if (!given.database.empty()) return given.database;
    if (!given.data.empty()) return (std::filesystem::path(given.data) / "accounts.db").string();
    throw support::Error(support::kErrorInvalidCall, L"--accounts or --data says where the accounts are");
}

struct Commands {
    CLI::App* add;
    CLI::App* list;
    CLI::App* credit;
    CLI::App* disable;
    CLI::App* ledger;
    CLI::App* compact;
    CLI::App* move;
};

Commands Declare(CLI::App& app, Given& given) {
    app.require_subcommand(1);
    app.add_option("--accounts", given.database, "SQLite file or postgresql://...")->envname("QUORVEX_ACCOUNTS");
    app.add_option("--data", given.data, "data folder that holds accounts.db")->envname("QUORVEX_DATA");
    Commands commands{};
    commands.add = app.add_subcommand("add", "makes an account and prints its key, once");
    commands.add->add_option("name", given.name, "short name for logs and lists");
    commands.add->add_option("--credits", given.credits, "without it the account has no limit")
        ->check(CLI::NonNegativeNumber);
    commands.add->add_option("--key", given.key, "a key that callers use already");
    commands.add->add_option("--rate", given.rate, "requests per second on each node")->check(CLI::PositiveNumber);
    commands.add->add_option("--from", given.from, "networks that it may be used from");
    commands.list = app.add_subcommand("list", "shows all accounts");
    commands.list->add_flag("--json", given.json, "one JSON object in each line");
    commands.credit = app.add_subcommand("credit", "adds credits to an account");
    commands.credit->add_option("name", given.name)->required();
    commands.credit->add_option("credits", given.change)->required()->check(CLI::PositiveNumber);
    commands.disable = app.add_subcommand("disable", "stops an account from asking");
    commands.disable->add_option("name", given.name)->required();
    commands.disable->add_flag("--undo", given.enable, "lets it ask again");
    commands.ledger = app.add_subcommand("ledger", "shows what was spent, the latest first");
    commands.ledger->add_option("name", given.name, "of one account");
    commands.ledger->add_option("--most", given.most, "lines")->capture_default_str();
    commands.compact = app.add_subcommand("compact", "adds up old entries of the ledger");
    commands.compact->add_option("--before", given.before, "date, such as 2026-01-31")->required();
    commands.move = app.add_subcommand("move", "copies everything into another, empty database");
    commands.move->add_option("to", given.to, "SQLite file or postgresql://...")->required();
    return commands;
}

void Run(const Commands& commands, accounts::AccountStore& store, const Given& given) {
    if (*commands.add) AddAccount(store, given);
    if (*commands.list) List(store, given.json);
    if (*commands.ledger) Ledger(store, given);
    if (*commands.credit && !store.AddCredits(given.name, given.change, kNode)) NoSuchAccount(given.name);
    if (*commands.disable && !store.SetDisabled(given.name, !given.enable)) NoSuchAccount(given.name);
    if (*commands.compact) store.Compact(MsOfDate(given.before), kNode);
    if (*commands.move) {
        accounts::AccountStore target(given.to);
        const auto [accounts, entries] = store.CopyTo(target);
        std::cout << accounts << " accounts and " << entries << " entries of the ledger copied to "
                  << accounts::ShownName(given.to) << "\n";
    }
}

} // namespace

int RunAccountsCommand(const std::vector<std::string>& arguments) {
    Given given;
    CLI::App app("Manages the data keys, their credits and the ledger of what was spent.", "quorvex-service accounts");
    const Commands commands = Declare(app, given);
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help("", CLI::AppFormatMode::All);
        return 0;
    } catch (const CLI::ParseError& error) {
        throw support::Error(support::kErrorInvalidCall, support::FromUtf8(error.what()));
    }
    const std::string database = DatabaseOf(given);
    if (!*commands.add && !accounts::IsPostgresName(database) && !std::filesystem::exists(database))
        throw support::Error(support::kErrorFileNotFound, support::FromUtf8("there are no accounts in " + database));
    accounts::AccountStore store(database);
    Run(commands, store, given);
    return 0;
}

} // namespace quorvex::service
