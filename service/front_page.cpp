#include "service/front_page.h"

#include "object/tag_reader.h"
#include "service/html.h"
#include "service/query.h"
#include "support/characters.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <array>
#include <ctime>
#include <utility>

namespace quorvex::service {
namespace {

constexpr std::int64_t kNodeMs = 3600000; // nodes seen in the last hour are shown
constexpr std::int64_t kSilentMs = 15000; // three announcements missed

std::string Date(const std::string& digits) {
    if (digits.size() != 8) return "never updated";
    return digits.substr(0, 4) + "-" + digits.substr(4, 2) + "-" + digits.substr(6);
}

std::string Utf8(const std::wstring& text) {
    return support::ToUtf8(text);
}

// A value as it goes into the query of one of the service's pages.
std::string Encoded(const std::wstring& value) {
    std::string text;
    for (const char c : support::ToUtf8(value)) support::AppendPercentEscaped(text, static_cast<unsigned char>(c));
    return text;
}

std::string StateSection(const FrontPage::State& state) {
    const DataSource::Status& data = state.data;
    const char* const word =
        state.draining ? "draining" : (!data.found ? "no data" : (data.ready ? "ready" : "starting"));
    std::string html = "<h1>Address service</h1>\n<p><span class=\"state" +
                       std::string(word == std::string("ready") ? "" : " bad") + "\">" + word + "</span> " +
                       Html(state.node) + " <span class=\"quiet\">at " + Html(state.address) + "</span></p>\n";
    if (!data.problem.empty()) html += "<p class=\"error\">The latest reading of the data failed.</p>\n";
    return html + "<h2 id=\"data\">Data</h2>\n<table aria-labelledby=\"data\">" +
           TableRow("th", {"Kind", "Last update"}) + TableRow("td", {"Full addresses", Date(data.full)}) +
           TableRow("td", {"Streets", Date(data.street)}) + TableRow("td", {"PostZon", Date(data.postZon)}) +
           "</table>\n";
}

std::string NodesSection(accounts::Accounts& accounts) {
    if (!accounts.Counting()) return {};
    if (!accounts.Reachable()) return "<p class=\"error\">The database of the accounts cannot be reached.</p>\n";
    const std::int64_t now = accounts::NowMs();
    std::string rows;
    for (const accounts::Node& node : accounts.Nodes(now - kNodeMs)) {
        const bool silent = now - node.seen > kSilentMs && node.state != "draining";
        rows += TableRow("td", {node.name, node.address, silent ? "silent" : node.state, node.version, Date(node.data),
                                std::to_string((now - node.seen) / 1000) + " s ago"});
    }
    return "<h2 id=\"nodes\">Nodes</h2>\n<table aria-labelledby=\"nodes\">" +
           TableRow("th", {"Name", "Address", "State", "Version", "Full addresses", "Seen"}) + rows + "</table>\n";
}

std::string LoadSection(const Metrics& metrics) {
    const auto hour = metrics.LastHour();
    return "<h2>Load of this node</h2>\n<div class=\"charts\">" +
           HourChart("Requests", hour, &Metrics::Minute::requests, "#2f6fde") +
           HourChart("Errors", hour, &Metrics::Minute::errors, "#c4453c") + "</div>\n";
}

std::string KeysSection(accounts::Accounts& accounts) {
    std::string rows;
    if (accounts.Counting()) {
        for (const accounts::Account& account : accounts.List()) {
            rows += TableRow("td", {account.name, account.credits ? std::to_string(*account.credits) : "without limit",
                                    account.disabled ? "disabled" : "active",
                                    account.rate ? std::to_string(*account.rate) + " a second" : "any",
                                    account.networks.empty() ? "anywhere" : account.networks});
        }
    }
    if (rows.empty()) return "<h2>Keys</h2>\n<p>There are no keys: everybody may ask and nothing is counted.</p>\n";
    return "<h2 id=\"keys\">Keys</h2>\n<table aria-labelledby=\"keys\">" +
           TableRow("th", {"Name", "Credits", "State", "Requests", "From"}) + rows + "</table>\n";
}

std::string Form(const Query& query) {
    return "<h2 id=\"try\">Try a lookup</h2>\n<form action=\"/\" method=\"get\" aria-labelledby=\"try\">\n"
           "<label>Postcode <input name=\"postcode\" required autocomplete=\"off\" value=\"" +
           Html(Utf8(query["postcode"])) +
           "\"></label>\n<label>Data key <input name=\"datakey\" autocomplete=\"off\" value=\"" +
           Html(Utf8(query["datakey"])) + "\"></label>\n<button>Find addresses</button>\n</form>\n";
}

// The lines of a list, each a link to its record.
std::string Lines(std::wstring reply, const Query& query) {
    std::string html;
    for (std::size_t at = reply.find(L"<record>"); at != std::wstring::npos; at = reply.find(L"<record>", at + 1)) {
        const std::wstring record = reply.substr(at, reply.find(L"</record>", at) - at);
        const std::wstring id = object::ReadElement(record, L"id");
        const std::wstring line = object::ReadElement(record, L"line");
        html += "<li><a href=\"/?postcode=" + Encoded(query["postcode"]) + "&amp;datakey=" + Encoded(query["datakey"]) +
                "&amp;id=" + Encoded(id) + "\">" + Html(Utf8(std::wstring(support::Trim(line)))) + "</a></li>\n";
    }
    return html.empty() ? "<p>No address was found.</p>\n" : "<ul>\n" + html + "</ul>\n";
}

std::string Record(const std::wstring& reply) {
    static constexpr std::array<std::pair<const wchar_t*, const char*>, 7> kFields = {{
        {L"organisation", "Organisation"},
        {L"line1", "Line 1"},
        {L"line2", "Line 2"},
        {L"line3", "Line 3"},
        {L"town", "Town"},
        {L"county", "County"},
        {L"postcode", "Postcode"},
    }};
    std::string rows;
    for (const auto& [tag, label] : kFields) {
        const std::string value = Utf8(object::ReadElement(reply, tag));
        if (!value.empty())
            rows += "<tr><th scope=\"row\">" + std::string(label) + "</th><td>" + Html(value) + "</td></tr>\n";
    }
    return "<table aria-label=\"Address\">" + rows + "</table>\n";
}

std::string ResultSection(const PageAnswer& answer, const Query& query) {
    const std::wstring reply = support::ReplaceAll(support::FromUtf8(answer.body), L"&amp;", L"&");
    const std::string error = Utf8(object::ReadElement(reply, L"errormessage"));
    const std::string credits = Utf8(object::ReadElement(reply, L"credits_display_text"));
    std::string html = "<div role=\"status\">\n";
    if (!error.empty()) {
        html += "<p class=\"error\">" + Html(error) + "</p>\n";
    } else {
        html += query["id"].empty() ? Lines(reply, query) : Record(reply);
    }
    if (!credits.empty()) html += "<p class=\"quiet\">" + Html(credits) + "</p>\n";
    return html + "</div>\n";
}

std::string PasswordIn(std::string_view authorization) {
    if (!authorization.starts_with("Basic ")) return {};
    authorization.remove_prefix(6);
    if (authorization.size() % 4 != 0 || authorization.size() > 1024) return {};
    std::string bytes(authorization.size(), '\0');
    const int count = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                      reinterpret_cast<const unsigned char*>(authorization.data()),
                                      static_cast<int>(authorization.size()));
    if (count < 0) return {};
    bytes.resize(static_cast<std::size_t>(count));
    while (!bytes.empty() && bytes.back() == '\0') bytes.pop_back(); // padding
    const std::size_t colon = bytes.find(':');
    return colon == std::string::npos ? std::string() : bytes.substr(colon + 1);
}

} // namespace

FrontPage::FrontPage(const std::string& passwordFile) {
    if (passwordFile.empty()) return;
    password_ = support::ReadFileBytes(support::FromUtf8(passwordFile));
    password_.resize(std::min(password_.size(), password_.find_first_of("\r\n")));
    if (password_.empty()) throw support::Error(support::kErrorBadFile, L"the file of --admin-password-file is empty");
}

bool FrontPage::MaySeeKeys(const http::Request& request) const {
    const std::string given = PasswordIn(request.Header("Authorization"));
    return !password_.empty() && given.size() == password_.size() &&
           CRYPTO_memcmp(given.data(), password_.data(), given.size()) == 0;
}

void FrontPage::Answer(const http::Request& request, const PageRequest& page, const State& state, const Pages& pages,
                       const Pages::Done& done) const {
    const Query query(request.target, {"postcode", "datakey", "id", "keys"});
    const bool keys = !query["keys"].empty() && !password_.empty();
    PageAnswer whole{200, "text/html; charset=utf-8"};
    whole.page = "front";
    if (keys && !MaySeeKeys(request)) {
        whole.status = 401;
        whole.result = "refused";
        whole.body =
            HtmlPage("Address service", "<h1>Address service</h1>\n<p>The keys need the operator's password.</p>\n");
        return done(std::move(whole));
    }
    const std::string before = StateSection(state) + Form(query);
    std::string after = NodesSection(state.accounts) + LoadSection(state.metrics);
    if (keys) after += KeysSection(state.accounts);
    if (!keys && !password_.empty()) after += "<p><a href=\"/?keys=1\">Keys and credits</a></p>\n";
    if (query["postcode"].empty()) {
        whole.body = HtmlPage("Address service", before + after);
        return done(std::move(whole));
    }
    PageRequest lookup = page;
    lookup.target = query["id"].empty() ? "/xmlservice/searchforaddress.aspx?postcode=" + Encoded(query["postcode"])
                                        : "/xmlservice/getaddressrecord.aspx?id=" + Encoded(query["id"]);
    lookup.target += "&datakey=" + Encoded(query["datakey"]) + "&COM=1";
    pages.Get(lookup, [whole, before, after, query, done](const PageAnswer& answer) mutable {
        whole.account = answer.account;
        whole.credits = answer.credits;
        whole.result = answer.result;
        whole.body = HtmlPage("Address service", before + ResultSection(answer, query) + after);
        done(std::move(whole));
    });
}

} // namespace quorvex::service
