#include "service/forwarded.h"

#include "service/accounts/store.h"
#include "support/characters.h"

#include <algorithm>
#include <atomic>

namespace quorvex::service {
namespace {

constexpr std::size_t kLongestId = 64;

bool AllOf(std::string_view text, std::string_view marks) {
    return std::all_of(text.begin(), text.end(), [marks](char c) {
        return support::IsDigit(c) || support::IsLetter(c) || marks.find(c) != std::string_view::npos;
    });
}

// A host name as a request gave it, fit to be written into an address.
bool IsHostText(std::string_view text) {
    return !text.empty() && AllOf(text, ".-:[]_");
}

bool IsId(std::string_view text) {
    return !text.empty() && text.size() <= kLongestId && AllOf(text, ".-:_");
}

std::string NewId() {
    static const std::string process = accounts::NewKey();
    static std::atomic<std::uint64_t> count{0};
    return process + "-" + std::to_string(++count);
}

// Proxies add the address that they see at the end: the last one that is no proxy of ours asked.
std::string ClientIn(std::string_view list, const accounts::Networks& proxies, const std::string& peer) {
    std::string client = peer;
    while (!list.empty() && proxies.Hold(client)) {
        const std::size_t comma = list.rfind(',');
        std::string_view last = comma == std::string_view::npos ? list : list.substr(comma + 1);
        list = comma == std::string_view::npos ? std::string_view() : list.substr(0, comma);
        while (last.starts_with(' ')) last.remove_prefix(1);
        while (last.ends_with(' ')) last.remove_suffix(1);
        if (last.empty() || !AllOf(last, ".:")) break;
        client = last;
    }
    return client;
}

} // namespace

Forwarded ForwardedOf(const http::Request& request, const accounts::Networks& proxies) {
    Forwarded forwarded;
    forwarded.client = request.client;
    bool secure = request.secure;
    std::string_view host = request.Header("Host");
    if (!proxies.Empty() && proxies.Hold(request.client)) {
        forwarded.client = ClientIn(request.Header("X-Forwarded-For"), proxies, request.client);
        const std::string_view scheme = request.Header("X-Forwarded-Proto");
        if (!scheme.empty()) secure = scheme == "https";
        const std::string_view known = request.Header("X-Forwarded-Host");
        if (!known.empty()) host = known;
        const std::string_view id = request.Header("X-Request-ID");
        if (IsId(id)) forwarded.id = id;
    }
    if (IsHostText(host)) forwarded.base = (secure ? "https://" : "http://") + std::string(host);
    if (forwarded.id.empty()) forwarded.id = NewId();
    return forwarded;
}

} // namespace quorvex::service
