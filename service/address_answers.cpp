#include "service/address_answers.h"

#include "localdata/packed_address.h"
#include "lookups/postcode.h"
#include "support/text.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace quorvex::service {
namespace {

using localdata::PackedAddress;

constexpr wchar_t kTestPostcode[] = L"ZZ99";
constexpr std::array<int, 14> kTestNumbers = {1, 3, 5, 7, 8, 9, 10, 11, 12, 14, 15, 16, 17, 19};
// The test list says so although it holds fewer: intended, hosts try their paging with it.
constexpr wchar_t kTestCount[] = L"40";

constexpr std::array<std::pair<const wchar_t*, std::size_t>, 13> kRecordElements = {{
    {L"organisation", 0},
    {L"line1", 1},
    {L"line2", 2},
    {L"line3", 3},
    {L"town", 4},
    {L"county", 5},
    {L"postcode", 6},
    {L"country", 8},
    {L"deliverypointsuffix", 9},
    {L"nohouseholds", 10},
    {L"smallorg", 11},
    {L"pz_mailsort", 12},
    {L"spare", 13},
}};

constexpr std::array<std::pair<const wchar_t*, std::size_t>, 8> kStreetElements = {{
    {L"line1", 0},
    {L"line2", 1},
    {L"line3", 2},
    {L"town", 3},
    {L"county", 4},
    {L"postcode", 5},
    {L"country", 6},
    {L"pz_mailsort", 8},
}};

// What a line must hold to be listed.
class HouseFilter {
  public:
    explicit HouseFilter(const std::wstring& house) {
        const std::wstring text = support::UpperCase(support::Trim(house));
        if (text.empty()) return;
        if (support::IsNumber(text)) {
            sought_ = {L" " + text, L"-" + text};
        } else {
            sought_ = {text};
        }
    }

    // The beginning of a line counts as a blank before it, so that a house number there is found.
    bool Keeps(const std::wstring& line) const {
        const std::wstring text = L" " + support::UpperCase(line);
        return sought_.empty() || std::any_of(sought_.begin(), sought_.end(), [&text](const std::wstring& sought) {
                   return text.find(sought) != std::wstring::npos;
               });
    }

  private:
    std::vector<std::wstring> sought_;
};

// Four blanks behind the line: readers trim it.
std::wstring RecordElement(const std::wstring& postcode, int number, const std::wstring& line) {
    return L"  <record>\r\n    " + Element(L"id", postcode + L"_" + std::to_wstring(number) + L"_F") + L"    " +
           Element(L"line", line + L"    ") + L"  </record>\r\n";
}

std::wstring ListBody(const std::wstring& count, const std::wstring& records) {
    return Element(L"recordcount", count) + L"<addressdata>\r\n" + records + L"</addressdata>\r\n";
}

Reply TestList() {
    std::wstring records;
    for (const int number : kTestNumbers) {
        records += RecordElement(kTestPostcode, number,
                                 std::to_wstring(number) + L" Victoria Road The East Side Demo Data Wisbech");
    }
    Reply reply;
    reply.confirm = reply.free = true;
    reply.creditsText = L"Demo data";
    reply.body = ListBody(kTestCount, records);
    return reply;
}

Reply TestRecord(const std::wstring& organisation, const std::wstring& line1) {
    Reply reply;
    reply.confirm = reply.free = true;
    reply.creditsText = L"Test data";
    reply.body = Element(L"organisation", organisation) + Element(L"line1", line1) +
                 Element(L"line2", L"The east side") + Element(L"line3", L"") + Element(L"town", L"Wisbech") +
                 Element(L"county", L"Cambridgeshire") + Element(L"postcode", kTestPostcode) +
                 Element(L"country", L"Country") + Element(L"pz_mailsort", L"51252");
    return reply;
}

template <typename Elements, typename Fields>
std::wstring FieldElements(const Elements& elements, const Fields& fields) {
    std::wstring text;
    for (const auto& [name, field] : elements) text += Element(name, fields[field]);
    return text;
}

} // namespace

Reply AddressList(const RowSource& rows, const std::wstring& postcode) {
    const lookups::PostcodeAndHouse asked = lookups::SplitCommaForm(postcode);
    const std::wstring key = lookups::LocalPostcode(asked.postcode);
    if (key.empty()) return Refused(L"Please specify Postcode");
    if (key == kTestPostcode) return TestList();

    const PackedAddress packed = localdata::SplitPackedAddress(rows.FullRow(key).value_or(std::wstring()));
    const std::wstring street = localdata::StreetPart(packed.common);
    const HouseFilter filter(asked.house);
    std::wstring records;
    int count = 0; // of kept lines: with a filter the identifiers number these, intended
    for (const std::wstring& premise : packed.premises) {
        const std::wstring line = localdata::DisplayLine(premise, street);
        if (filter.Keeps(line)) records += RecordElement(asked.postcode, ++count, line);
    }
    Reply reply;
    reply.confirm = true;
    reply.free = count == 0;
    reply.body = ListBody(std::to_wstring(count), records);
    return reply;
}

Reply AddressRecordOf(const RowSource& rows, const std::wstring& id) {
    std::wstring rest = id;
    const std::wstring postcode = support::NextField(rest, L"_", true);
    const std::wstring number = support::NextField(rest, L"_", true);
    const std::wstring key = lookups::LocalPostcode(postcode);
    if (key.empty() || number.empty()) return Refused(L"Please specify an address identifier");
    if (key == kTestPostcode) return TestRecord(L"Demo Data Company", number + L" Victoria Rd");

    const PackedAddress packed = localdata::SplitPackedAddress(rows.FullRow(key).value_or(std::wstring()));
    for (std::size_t i = 0; i < packed.premises.size(); ++i) {
        if (postcode + L"_" + std::to_wstring(i + 1) + L"_F" != id) continue;
        Reply reply;
        reply.confirm = true;
        reply.body = FieldElements(kRecordElements, localdata::AddressRecord(packed.premises[i], packed.common));
        return reply;
    }
    return Refused(L"Address not found: " + id);
}

Reply StreetRecordOf(const RowSource& rows, const std::wstring& postcode) {
    if (postcode.size() < 4 || postcode.size() > 8) return Refused(L"Please specify Postcode");
    const std::wstring key = lookups::LocalPostcode(postcode);
    if (key == kTestPostcode) return TestRecord({}, L"Victoria Rd");
    const std::optional<std::wstring> row = rows.StreetRow(key);
    if (!row) return Refused(L"Postcode not found: " + postcode);
    Reply reply;
    reply.confirm = true;
    reply.body = Element(L"organisation", L"") + FieldElements(kStreetElements, localdata::ThoroughfareRecord(*row));
    return reply;
}

} // namespace quorvex::service
