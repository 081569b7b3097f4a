#include "lookups/postcode.h"

#include "support/characters.h"
#include "support/text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quorvex::lookups {
namespace {

// Shifted digit keys of a UK keyboard. The shifted 8 ("*") has no rule: intended, it stays as typed. The order matters
// only in that the blanks come first.
constexpr std::array<std::pair<const wchar_t*, const wchar_t*>, 10> kSlips = {{
    {L"  ", L" "},
    {L"!", L"1"},
    {L"\"", L"2"},
    {L"\u00A3", L"3"},
    {L"$", L"4"},
    {L"%", L"5"},
    {L"^", L"6"},
    {L"&", L"7"},
    {L"(", L"9"},
    {L")", L"0"},
}};

std::wstring WithoutSlips(std::wstring_view postcode) {
    std::wstring text(postcode);
    for (const auto& [find, replacement] : kSlips) text = support::ReplaceAll(text, find, replacement);
    return text;
}

// The house as address lines hold it, without commas.
std::wstring HouseText(std::wstring_view typed) {
    std::wstring house;
    for (std::wstring rest(typed); !rest.empty();) {
        const std::wstring piece(support::Trim(support::NextField(rest, L",", true)));
        if (!house.empty() && !piece.empty()) house += L' ';
        house += piece;
    }
    return house;
}

} // namespace

std::wstring FormatPostCode(std::wstring_view postcode) {
    const std::wstring text = WithoutSlips(postcode);
    if (text.size() == 8) return text.substr(0, 4) + text.substr(5);
    if (text.size() == 6) return text.substr(0, 3) + L" " + text.substr(3);
    return text;
}

std::wstring LocalPostcode(std::wstring_view postcode) {
    return support::UpperCase(FormatPostCode(support::Trim(postcode)));
}

bool HasPostcodeShape(std::wstring_view text) {
    const std::wstring code = support::ReplaceAll(support::UpperCase(WithoutSlips(support::Trim(text))), L" ", L"");
    if (code == L"ZZ99") return true;
    if (code.size() < 5 || code.size() > 7) return false;
    const std::wstring_view inward = std::wstring_view(code).substr(code.size() - 3);
    if (!support::IsDigit(inward[0]) || !support::IsCapital(inward[1]) || !support::IsCapital(inward[2])) return false;
    // The outward half as a pattern of letters and digits.
    std::wstring pattern;
    for (const wchar_t c : std::wstring_view(code).substr(0, code.size() - 3)) {
        pattern.push_back(support::IsCapital(c) ? L'A' : support::IsDigit(c) ? L'9' : L'?');
    }
    static constexpr std::array<std::wstring_view, 6> kOutward = {L"A9", L"A99", L"AA9", L"AA99", L"A9A", L"AA9A"};
    return std::find(kOutward.begin(), kOutward.end(), pattern) != kOutward.end();
}

PostcodeAndHouse SplitCommaForm(std::wstring_view text) {
    const std::size_t comma = text.find(L',');
    if (comma == std::wstring_view::npos) return {std::wstring(support::Trim(text)), {}};
    const std::wstring first(support::Trim(text.substr(0, comma)));
    const std::size_t lastComma = text.rfind(L',');
    const std::wstring last(support::Trim(text.substr(lastComma + 1)));
    if (!HasPostcodeShape(first) && HasPostcodeShape(last)) return {last, HouseText(text.substr(0, lastComma))};
    return {first, HouseText(text.substr(comma + 1))};
}

} // namespace quorvex::lookups
