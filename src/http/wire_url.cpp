#include "http/wire_url.h"

#include "support/characters.h"
#include "support/text.h"

#include <algorithm>

namespace quorvex::http {
namespace {

constexpr wchar_t kBlank = 0x20;
constexpr wchar_t kDelete = 0x7F;
constexpr std::uint16_t kHttpPort = 80;
constexpr std::uint16_t kHttpsPort = 443;
constexpr unsigned kHighestPort = 65535;

void AppendEscaped(std::wstring& text, std::string_view bytes) {
    for (const char c : bytes) support::AppendPercentEscaped(text, static_cast<unsigned char>(c));
}

bool MayStand(wchar_t c) {
    return c > kBlank && c < kDelete && c != L'#';
}

// Takes "http://" or "https://" off the front, in any case.
bool TakeScheme(std::wstring_view& url, bool& secure) {
    for (const std::wstring_view scheme : {L"HTTP://", L"HTTPS://"}) {
        if (support::UpperCase(url.substr(0, scheme.size())) != scheme) continue;
        secure = scheme.size() == 8;
        url.remove_prefix(scheme.size());
        return true;
    }
    return false;
}

// Takes ":port" off the end of an authority; false when what stands there is no port.
bool TakePort(std::wstring_view& authority, std::uint16_t& port) {
    const std::size_t colon = authority.rfind(L':');
    if (colon == std::wstring_view::npos || authority.back() == L']') return true;
    const std::wstring_view digits = authority.substr(colon + 1);
    authority.remove_suffix(digits.size() + 1);
    if (digits.empty()) return true;
    unsigned number = 0;
    for (const wchar_t c : digits) {
        if (c < L'0' || c > L'9') return false;
        number = std::min(number * 10 + static_cast<unsigned>(c - L'0'), kHighestPort + 1);
    }
    port = static_cast<std::uint16_t>(number);
    return number != 0 && number <= kHighestPort;
}

bool IsHost(std::wstring_view host) {
    return !host.empty() &&
           std::none_of(host.begin(), host.end(), [](wchar_t c) { return c <= kBlank || c == kDelete; });
}

} // namespace

std::optional<WireUrl> SplitUrl(std::wstring_view url) {
    WireUrl parts;
    if (!TakeScheme(url, parts.secure)) return {};
    std::wstring_view authority = url.substr(0, url.find_first_of(L"/?#"));
    parts.target = EscapeTarget(url.substr(authority.size()));
    authority.remove_prefix(authority.rfind(L'@') + 1);
    parts.port = parts.secure ? kHttpsPort : kHttpPort;
    if (!TakePort(authority, parts.port) || !IsHost(authority)) return {};
    parts.host = authority;
    return parts;
}

std::wstring EscapeTarget(std::wstring_view target) {
    if (target.find(L'#') < target.find(L'?')) target = target.substr(0, target.find(L'#'));
    std::wstring wire;
    wire.reserve(target.size() + 16);
    if (!target.starts_with(L'/')) wire += L'/';
    for (std::size_t at = 0; at < target.size();) {
        // Runs, not single characters: one character can be two units.
        std::size_t end = at;
        while (end < target.size() && MayStand(target[end])) ++end;
        wire.append(target.substr(at, end - at));
        at = end;
        while (end < target.size() && !MayStand(target[end])) ++end;
        AppendEscaped(wire, support::ToUtf8(target.substr(at, end - at)));
        at = end;
    }
    return wire;
}

} // namespace quorvex::http
