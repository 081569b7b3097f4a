#include "service/query.h"

#include "support/characters.h"
#include "support/text.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace quorvex::service {
namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// A "%" without two hexadecimal digits behind it stands for itself.
std::string PercentDecoded(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
        if (low >= 0) {
            decoded.push_back(static_cast<char>(high * 16 + low));
            i += 2;
        } else {
            decoded.push_back(text[i]);
        }
    }
    return decoded;
}

// Hosts of old send their code page where newer ones send UTF-8.
std::wstring ValueText(std::string_view raw) {
    const std::string bytes = PercentDecoded(raw);
    return support::IsValidUtf8(bytes) ? support::FromUtf8(bytes) : support::FromAnsi(bytes);
}

} // namespace

std::string PathOf(std::string_view target) {
    return support::LowerCase(PercentDecoded(target.substr(0, target.find('?'))));
}

Query::Query(std::string_view target, std::initializer_list<const char*> names) {
    const std::size_t mark = target.find('?');
    if (mark == std::string_view::npos) return;
    std::vector<std::pair<std::string, std::string>> pieces; // name and raw value
    for (std::string_view rest = target.substr(mark + 1);;) {
        const std::size_t end = rest.find('&');
        const std::string_view piece = rest.substr(0, end);
        const std::size_t equals = piece.find('=');
        const std::string name = support::LowerCase(piece.substr(0, equals));
        const bool known =
            equals != std::string_view::npos && std::find(names.begin(), names.end(), name) != names.end();
        if (known) {
            pieces.emplace_back(name, piece.substr(equals + 1));
        } else if (!pieces.empty()) {
            pieces.back().second.append("&").append(piece);
        }
        if (end == std::string_view::npos) break;
        rest.remove_prefix(end + 1);
    }
    for (const auto& [name, raw] : pieces) values_.emplace(name, ValueText(raw));
}

const std::wstring& Query::operator[](const std::string& name) const {
    static const std::wstring empty;
    const auto found = values_.find(name);
    return found == values_.end() ? empty : found->second;
}

} // namespace quorvex::service
