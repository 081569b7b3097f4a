#include "service/words.h"

#include "support/characters.h"
#include "support/text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quorvex::service {
namespace {

constexpr std::array<std::pair<std::wstring_view, std::wstring_view>, 4> kAbbreviations = {{
    {L"RD", L"ROAD"},
    {L"CL", L"CLOSE"},
    {L"AV", L"AVENUE"},
    {L"AVE", L"AVENUE"},
}};

bool IsApostrophe(wchar_t c) {
    return c == L'\'' || c == L'\u2019' || c == L'`';
}

bool IsWordCharacter(wchar_t c) {
    return support::IsDigit(c) || support::IsCapital(c) || (c > 127 && !IsApostrophe(c));
}

} // namespace

std::vector<std::wstring> Words(std::wstring_view text) {
    std::vector<std::wstring> words;
    std::wstring word;
    for (const wchar_t c : support::UpperCase(text)) {
        if (IsWordCharacter(c)) {
            word.push_back(c);
        } else if (!IsApostrophe(c) && !word.empty()) {
            words.push_back(std::exchange(word, {}));
        }
    }
    if (!word.empty()) words.push_back(std::move(word));
    return words;
}

std::vector<std::wstring> StreetWords(std::wstring_view text) {
    std::vector<std::wstring> words = Words(text);
    for (std::wstring& word : words) {
        const auto known = std::find_if(kAbbreviations.begin(), kAbbreviations.end(),
                                        [&word](const auto& entry) { return entry.first == word; });
        if (known != kAbbreviations.end()) word = known->second;
    }
    return words;
}

Criterion::Criterion(std::wstring_view typed, Kind kind) {
    std::wstring rest(typed);
    while (!rest.empty()) {
        const std::wstring piece = support::NextField(rest, L" ", true);
        const std::size_t star = piece.find(L'*');
        std::vector<std::wstring> words = Words(piece.substr(0, star));
        if (star != std::wstring::npos && !words.empty()) {
            beginnings_.push_back(std::move(words.back()));
            words.pop_back();
        } else if (kind == Kind::Street) {
            words = StreetWords(piece);
        }
        whole_.insert(whole_.end(), words.begin(), words.end());
    }
}

bool Criterion::MetBy(const std::vector<std::wstring>& words) const {
    const auto holds = [&words](const std::wstring& word) {
        return std::find(words.begin(), words.end(), word) != words.end();
    };
    const auto begins = [&words](const std::wstring& beginning) {
        return std::any_of(words.begin(), words.end(),
                           [&beginning](const std::wstring& word) { return word.starts_with(beginning); });
    };
    return std::all_of(whole_.begin(), whole_.end(), holds) &&
           std::all_of(beginnings_.begin(), beginnings_.end(), begins);
}

} // namespace quorvex::service
