#include "web/wire_url.h"

#include "support/text.h"

namespace quorvex::web {
namespace {

constexpr wchar_t kBlank = 0x20;
constexpr wchar_t kDelete = 0x7F;

void AppendEscaped(std::wstring& url, std::string_view bytes) {
    constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        url += L'%';
        url += kDigits[byte >> 4];
        url += kDigits[byte & 0xF];
    }
}

bool MayStand(wchar_t c) {
    return c > kBlank && c < kDelete && c != L'#';
}

// Where scheme and host end.
std::size_t TargetStart(std::wstring_view url) {
    const std::size_t scheme = url.find(L"://");
    if (scheme == std::wstring_view::npos) return 0;
    const std::size_t at = url.find_first_of(L"/?#", scheme + 3);
    return at == std::wstring_view::npos ? url.size() : at;
}

} // namespace

std::wstring EscapeForWire(std::wstring_view url) {
    std::size_t at = TargetStart(url);
    const std::size_t query = url.find(L'?', at);
    const std::size_t fragment = url.find(L'#', at);
    if (fragment < query) url = url.substr(0, fragment);
    std::wstring wire(url.substr(0, at));
    wire.reserve(url.size() + 16);
    while (at < url.size()) {
        // Runs, not single characters: one character can be two units.
        std::size_t end = at;
        while (end < url.size() && MayStand(url[end])) ++end;
        wire.append(url.substr(at, end - at));
        at = end;
        while (end < url.size() && !MayStand(url[end])) ++end;
        AppendEscaped(wire, support::ToUtf8(url.substr(at, end - at)));
        at = end;
    }
    return wire;
}

} // namespace quorvex::web
