#include "quorvex/house_match.h"

#include "lookups/postcode.h"
#include "support/characters.h"
#include "support/text.h"

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

// How a house text is met by a premise, the closest first.
enum class Closeness { Equal, Begins, Holds, HoldsWithStreet, None };

bool HasField(std::wstring_view premise, std::wstring_view words) {
    for (;;) {
        const std::size_t bar = premise.find(L'|');
        if (WordsOf(premise.substr(0, bar)) == words) return true;
        if (bar == std::wstring_view::npos) return false;
        premise.remove_prefix(bar + 1);
    }
}

Closeness Compare(std::wstring_view premise, std::wstring_view streetWords, std::wstring_view houseWords) {
    std::wstring words = WordsOf(premise);
    if (words.find(houseWords) != std::wstring::npos) {
        if (words == houseWords || HasField(premise, houseWords)) return Closeness::Equal;
        return words.starts_with(houseWords) ? Closeness::Begins : Closeness::Holds;
    }
    if (streetWords.empty()) return Closeness::None;
    words.append(streetWords.substr(words.empty() ? 0 : 1)); // one blank between them
    return words.find(houseWords) == std::wstring::npos ? Closeness::None : Closeness::HoldsWithStreet;
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

std::vector<std::size_t> MatchHouse(const std::vector<std::wstring_view>& premises, std::wstring_view streetWords,
                                    std::wstring_view houseWords) {
    std::vector<std::size_t> found;
    if (houseWords.empty()) {
        for (std::size_t i = 0; i < premises.size(); ++i) found.push_back(i);
        return found;
    }
    // What ends in the street ends with one of its words.
    const std::wstring_view lastWord = houseWords.substr(houseWords.rfind(L' ', houseWords.size() - 2));
    const std::wstring_view street = streetWords.find(lastWord) == std::wstring_view::npos ? L"" : streetWords;
    Closeness closest = Closeness::None;
    for (std::size_t i = 0; i < premises.size(); ++i) {
        const Closeness closeness = Compare(premises[i], street, houseWords);
        if (closeness == Closeness::None || closeness > closest) continue;
        if (closeness < closest) found.clear();
        closest = closeness;
        found.push_back(i);
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
