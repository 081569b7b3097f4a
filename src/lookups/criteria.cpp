#include "lookups/criteria.h"

#include "support/text.h"

namespace quorvex::lookups {
namespace {

constexpr std::size_t kShortestText = 3;

void AddWord(std::wstring& list, std::wstring_view word) {
    if (!list.empty()) list += L',';
    list += L'\'';
    list += word;
    list += L'\'';
}

bool AllBlank(const std::wstring& first, const std::wstring& second, const std::wstring& third) {
    return support::Trim(first).empty() && support::Trim(second).empty() && support::Trim(third).empty();
}

} // namespace

std::wstring buildSummary(std::wstring_view value, const std::wstring& label, const std::wstring& soFar,
                          const std::wstring& joiner) {
    std::wstring exact;
    std::wstring startsWith;
    std::wstring words = support::UpperCase(value);
    while (!words.empty()) {
        const std::wstring word = support::NextField(words, L" ", true);
        if (!word.empty()) AddWord(word.find(L'*') == std::wstring::npos ? exact : startsWith, word);
    }
    if (exact.empty() && startsWith.empty()) return soFar;
    std::wstring phrase = label;
    if (!exact.empty()) phrase += L"=" + exact;
    if (!startsWith.empty()) phrase += L" starts with " + startsWith;
    return soFar + (soFar.empty() ? std::wstring() : joiner) + phrase + L"\r\n";
}

CriteriaState CheckCriteria(const web::AdvancedCriteria& criteria) {
    CriteriaState state;
    state.criteriaMissing = AllBlank(criteria.company, criteria.house, criteria.street);
    state.placeMissing = AllBlank(criteria.county, criteria.postcodeArea, criteria.town);
    std::wstring summary = buildSummary(criteria.company, L"Organisation", {}, L" AND ");
    summary = buildSummary(criteria.house, L"Building Name/No", summary, L" AND ");
    summary = buildSummary(criteria.street, L"Street/Road/Av", summary, L" AND ");
    summary = buildSummary(criteria.town, L"Town/City", summary, L" IN ");
    summary = buildSummary(criteria.county, L"County", summary, L" IN ");
    state.summary = buildSummary(criteria.postcodeArea, L"Postcode", summary, L" IN ");
    return state;
}

std::wstring TextFieldWarning(int field, std::wstring_view text) {
    const std::wstring letters = support::ReplaceAll(text, L"*", L"");
    const std::size_t length = support::Trim(letters).size();
    if (length == 0 || length >= kShortestText) return {};
    switch (field) {
    case kOrganisation:
        return L"Organisation must be longer.\r\nPlease be more specific!!!";
    case kBuilding:
        return L"Please enter some of Road name!!!";
    case kStreet:
        return L"Street name must be longer.\r\nPlease be more specific!!!";
    default:
        return {};
    }
}

bool IsListValue(std::wstring_view text, std::wstring_view list) {
    if (text.empty()) return true;
    const std::wstring framed = L"," + std::wstring(list) + L",";
    return framed.find(L"," + std::wstring(text) + L",") != std::wstring::npos;
}

std::vector<int> OtherPlaceFields(int field) {
    std::vector<int> others;
    for (const int place : {kTown, kCounty, kPostcodeArea}) {
        if (place != field) others.push_back(place);
    }
    return others;
}

} // namespace quorvex::lookups
