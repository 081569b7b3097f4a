#include "service/options.h"

#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <cmath>
#include <functional>
#include <map>

namespace quorvex::service {
namespace {

[[noreturn]] void Wrong(const std::string& what) {
    throw support::Error(support::kErrorInvalidCall, support::FromUtf8(what));
}

std::int64_t WholeNumber(const std::string& name, const std::string& text, double largest) {
    const std::wstring wide = support::FromUtf8(text);
    const double number = support::IsNumber(wide) ? support::ParseNumber(wide) : -1;
    if (number < 0 || number > largest || number != std::floor(number))
        Wrong(name + " needs a whole number, not \"" + text + "\"");
    return static_cast<std::int64_t>(number);
}

} // namespace

const char* const kUsage =
    "usage: quorvex-service --data FOLDER --port N [options]\n"
    "\n"
    "Answers the pages of the address service from a folder of local data files.\n"
    "\n"
    "  --data FOLDER        the data files; update packages lie in FOLDER/updates\n"
    "  --port N             0 picks a free port; the address is printed when the service is ready\n"
    "  --host ADDRESS       address to listen on (127.0.0.1; 0.0.0.0 for all)\n"
    "  --key KEY            a data key that may ask; can be given several times\n"
    "  --keys FILE          data keys, one to a line, each with a number of credits behind it if it has its own\n"
    "  --credits N          lookups that each key may make\n"
    "  --message TEXT       shown to the user with every lookup\n"
    "  --account-page URL   page on which users administer their account\n"
    "  --map-url TEXT       address of a map: {latitude}, {longitude}, {zoom} and {postcode} are filled in\n"
    "  --directory-url TEXT address of a directory: {words} and {postcode} are filled in\n"
    "  --test               adds /test/..., which makes answers misbehave\n"
    "  --help\n";

Options ParseOptions(const std::vector<std::string>& arguments) {
    Options options;
    bool portGiven = false;
    const auto text = [](std::wstring& target) {
        return [&target](const std::string& value) { target = support::FromUtf8(value); };
    };
    const std::map<std::string, std::function<void(const std::string&)>> takers = {
        {"--data", [&](const std::string& value) { options.data = value; }},
        {"--host", [&](const std::string& value) { options.host = value; }},
        {"--port",
         [&](const std::string& value) {
             options.port = static_cast<int>(WholeNumber("--port", value, 65535));
             portGiven = true;
         }},
        {"--key", [&](const std::string& value) { options.keys.push_back(support::FromUtf8(value)); }},
        {"--keys", [&](const std::string& value) { options.keysFile = value; }},
        {"--credits", [&](const std::string& value) { options.credits = WholeNumber("--credits", value, 1e15); }},
        {"--message", text(options.pages.popMessage)},
        {"--account-page", text(options.pages.accountPage)},
        {"--map-url", text(options.pages.mapUrl)},
        {"--directory-url", text(options.pages.directoryUrl)},
    };
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& name = arguments[i];
        if (name == "--help" || name == "-h") {
            options.help = true;
            return options;
        }
        if (name == "--test") {
            options.test = true;
            continue;
        }
        const auto taker = takers.find(name);
        if (taker == takers.end()) Wrong("unknown option \"" + name + "\"");
        if (++i == arguments.size()) Wrong(name + " needs a value");
        taker->second(arguments[i]);
    }
    if (options.data.empty()) Wrong("--data is missing");
    if (!portGiven) Wrong("--port is missing");
    if (options.credits && options.keys.empty() && options.keysFile.empty()) Wrong("--credits needs --key or --keys");
    return options;
}

void AddKeys(Accounts& accounts, const Options& options) {
    for (const std::wstring& key : options.keys) accounts.Add(key, options.credits);
    if (options.keysFile.empty()) return;
    accounts.AddLines(support::FromUtf8(support::ReadFileBytes(support::FromPath(options.keysFile))), options.credits);
}

} // namespace quorvex::service
