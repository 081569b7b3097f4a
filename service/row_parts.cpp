#include "service/row_parts.h"

#include "support/text.h"

#include <algorithm>

namespace quorvex::service {
namespace {

constexpr std::ptrdiff_t kFieldsBehindStreet = 10; // town, county, postcode and the seven behind them

std::wstring BarsMade(std::wstring_view text, std::wstring_view separator) {
    std::wstring joined;
    std::wstring rest(text);
    while (!rest.empty()) {
        const std::wstring field = support::NextField(rest, L"|", true);
        const std::wstring_view value = support::Trim(field);
        if (value.empty()) continue;
        if (!joined.empty()) joined.append(separator);
        joined.append(value);
    }
    return joined;
}

// The common part less its last ten fields; a short common part is all street as far as an address line shows it.
std::wstring StreetOf(std::wstring_view common) {
    const std::ptrdiff_t fields = std::count(common.begin(), common.end(), L'|') + 1;
    if (fields <= kFieldsBehindStreet) return std::wstring(support::Trim(localdata::StreetPart(common)));
    std::size_t end = common.size();
    for (std::ptrdiff_t i = 0; i < kFieldsBehindStreet; ++i) end = common.rfind(L'|', end - 1);
    return BarsMade(localdata::ShortenBlanks(common.substr(0, end)), L", ");
}

} // namespace

RowParts PartsOf(const std::wstring& plain) {
    const localdata::PackedAddress packed = localdata::SplitPackedAddress(plain);
    RowParts parts;
    for (const std::wstring_view premise : packed.premises) {
        std::wstring house(premise);
        const std::wstring organisation(support::Trim(support::NextField(house, L"|", true)));
        parts.premises.push_back({organisation, BarsMade(house, L" "), BarsMade(premise, L" ")});
    }
    parts.street = StreetOf(packed.common);
    // The place is the row's own: a premise of many fields covers it in the record, not in a search.
    const localdata::RecordFields record = localdata::AddressRecord({}, packed.common);
    parts.town = record[4];
    parts.county = record[5];
    parts.postcode = record[6];
    return parts;
}

} // namespace quorvex::service
