#include "localdata/packed_address.h"

#include "support/text.h"

#include <algorithm>

namespace quorvex::localdata {
namespace {

// A bar at the end begins one more, empty field.
std::vector<std::wstring_view> Fields(std::wstring_view text) {
    std::vector<std::wstring_view> fields;
    for (;;) {
        const std::size_t bar = text.find(L'|');
        fields.push_back(text.substr(0, bar));
        if (bar == std::wstring_view::npos) return fields;
        text.remove_prefix(bar + 1);
    }
}

std::wstring BarsMadeBlanks(std::wstring_view text) {
    std::wstring line(text);
    std::replace(line.begin(), line.end(), L'|', L' ');
    return line;
}

template <std::size_t Size>
void PutTrimmed(std::array<std::wstring, Size>& record, std::size_t at, std::wstring_view value) {
    record[at] = support::Trim(value);
}

} // namespace

PackedAddress SplitPackedAddress(std::wstring_view plain) {
    PackedAddress packed;
    const std::size_t close = plain.find(L'}');
    if (plain.find(L'{') == std::wstring_view::npos || close == std::wstring_view::npos) {
        packed.common = plain;
        return packed;
    }
    packed.common = plain.substr(close + 1);
    // The list begins after the first character, whatever that is.
    std::wstring_view list = plain.substr(0, close).substr(std::min<std::size_t>(1, close));
    packed.premises.reserve(static_cast<std::size_t>(std::count(list.begin(), list.end(), L'!')) + 1);
    while (!list.empty()) {
        const std::size_t end = list.find(L'!');
        packed.premises.emplace_back(list.substr(0, end));
        list.remove_prefix(end == std::wstring_view::npos ? list.size() : end + 1);
    }
    return packed;
}

std::wstring ShortenBlanks(std::wstring_view text) {
    return support::ReplaceAll(support::ReplaceAll(text, L"   ", L" "), L"  ", L" ");
}

std::wstring StreetPart(std::wstring_view common) {
    std::size_t end = 0;
    for (std::size_t field = 0; end < common.size(); ++end) {
        if (common[end] == L'|' && ++field == kStreetPartFields) break;
    }
    return ShortenBlanks(BarsMadeBlanks(common.substr(0, end)));
}

std::wstring DisplayLine(std::wstring_view premise, std::wstring_view streetPart) {
    const std::wstring line = BarsMadeBlanks(premise).append(1, L' ').append(streetPart);
    return std::wstring(support::Trim(line));
}

RecordFields AddressRecord(std::wstring_view premise, std::wstring_view common) {
    const std::vector<std::wstring_view> first = Fields(premise);
    const std::wstring shortened = ShortenBlanks(common);
    const std::vector<std::wstring_view> last = Fields(shortened);
    RecordFields record;
    const std::size_t own = std::min(first.size(), kRecordFields);
    for (std::size_t i = 0; i < own; ++i) PutTrimmed(record, i, first[i]);
    const std::size_t shared = std::min(last.size(), kRecordFields - own);
    for (std::size_t i = 0; i < shared; ++i) {
        PutTrimmed(record, kRecordFields - shared + i, last[last.size() - shared + i]);
    }
    return record;
}

ThoroughfareFields ThoroughfareRecord(std::wstring_view plain) {
    const std::vector<std::wstring_view> fields = Fields(plain);
    ThoroughfareFields record;
    for (std::size_t i = 0; i < std::min(fields.size(), kThoroughfareFields); ++i) PutTrimmed(record, i, fields[i]);
    return record;
}

} // namespace quorvex::localdata
