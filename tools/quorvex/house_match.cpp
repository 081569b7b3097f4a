#include "quorvex/house_match.h"

#include "lookups/postcode.h"
#include "support/characters.h"
#include "support/text.h"

#include <array>
#include <functional>

namespace quorvex::cli {
namespace {

constexpr std::size_t kInwardLength = 3;
constexpr std::size_t kOutwardLength = 4;
constexpr wchar_t kNoBreakSpace = 0xA0;

bool IsWordCharacter(wchar_t c) {
    return support::IsCapital(c) || support::IsDigit(c) || (c > 0xBF && c != 0xD7 && c != 0xF7);
}

bool IsApostrophe(wchar_t c) {
    return c == L'\'' || c == 0x2019;
}

} // namespace

std::wstring WordsOf(std::wstring_view text) {
    std::wstring words;
    words.reserve(text.size() + 2);
    bool inWord = false;
    for (const wchar_t c : support::UpperCase(text)) {
        if (IsApostrophe(c)) continue;
        if (IsWordCharacter(c)) {
            if (!inWord && words.empty()) words.push_back(L' ');
            words.push_back(c);
            inWord = true;
        } else if (inWord) {
            words.push_back(L' ');
            inWord = false;
        }
    }
    if (inWord) words.push_back(L' ');
    return words;
}

std::wstring HouseWords(std::wstring_view house) {
    std::wstring words = WordsOf(house);
    for (const std::wstring_view prefix : {L" NO ", L" NUMBER "}) {
        const bool number =
            words.starts_with(prefix) && words.size() > prefix.size() && support::IsDigit(words[prefix.size()]);
        if (number) return words.substr(prefix.size() - 1);
    }
    return words;
}

PremiseWords::PremiseWords(std::wstring_view premise, std::wstring_view streetWords) : fields(L"|") {
    for (;;) {
        const std::size_t bar = premise.find(L'|');
        const std::wstring words = WordsOf(premise.substr(0, bar));
        if (!words.empty()) {
            fields.append(words).push_back(L'|');
            whole.append(words, whole.empty() ? 0 : 1);
        }
        if (bar == std::wstring_view::npos) break;
        premise.remove_prefix(bar + 1);
    }
    line = whole;
    if (!streetWords.empty()) line.append(streetWords.substr(line.empty() ? 0 : 1));
}

std::vector<std::size_t> MatchHouse(const std::vector<PremiseWords>& premises, std::wstring_view houseWords) {
    const std::wstring asField = std::wstring(L"|").append(houseWords).append(L"|");
    const std::array<std::function<bool(const PremiseWords&)>, 4> rules = {
        [&](const PremiseWords& p) { return p.whole == houseWords || p.fields.find(asField) != std::wstring::npos; },
        [&](const PremiseWords& p) { return p.whole.starts_with(houseWords); },
        [&](const PremiseWords& p) { return p.whole.find(houseWords) != std::wstring::npos; },
        [&](const PremiseWords& p) { return p.line.find(houseWords) != std::wstring::npos; }};
    std::vector<std::size_t> found;
    if (houseWords.empty()) {
        for (std::size_t i = 0; i < premises.size(); ++i) found.push_back(i);
        return found;
    }
    for (const auto& rule : rules) {
        for (std::size_t i = 0; i < premises.size(); ++i) {
            if (rule(premises[i])) found.push_back(i);
        }
        if (!found.empty()) break;
    }
    return found;
}

std::wstring PostcodeKey(std::wstring_view text) {
    std::wstring code;
    for (const wchar_t c : support::UpperCase(text)) {
        if (c != L' ' && c != L'\t' && c != kNoBreakSpace) code.push_back(c);
    }
    // The test postcode has the right shape, but nobody lives there.
    if (code.size() < kInwardLength + 2 || !lookups::HasPostcodeShape(code)) return {};
    const std::size_t outward = code.size() - kInwardLength;
    return support::PadRight(std::wstring_view(code).substr(0, outward), kOutwardLength, L' ') + code.substr(outward);
}

std::wstring WrittenPostcode(std::wstring_view key) {
    std::wstring written(support::Trim(key.substr(0, kOutwardLength)));
    return written.append(1, L' ').append(key.substr(kOutwardLength));
}

} // namespace quorvex::cli
