#include "object/reply_header.h"

#include "object/tag_reader.h"
#include "support/text.h"

#include <algorithm>
#include <array>

namespace quorvex::object {
namespace {

using object::Quorvex;
using object::ReadElement;

struct Element {
    std::wstring_view name;
    std::wstring Quorvex::*property;
};

constexpr std::array<Element, 18> kAddressElements = {{
    {L"id", &Quorvex::Address_Id},
    {L"organisation", &Quorvex::Address_Organisation},
    {L"line1", &Quorvex::Address_Line1},
    {L"line2", &Quorvex::Address_Line2},
    {L"line3", &Quorvex::Address_Line3},
    {L"town", &Quorvex::Address_Town},
    {L"county", &Quorvex::Address_County},
    {L"postcode", &Quorvex::Address_Postcode},
    {L"country", &Quorvex::Address_Country},
    {L"deliverypointsuffix", &Quorvex::Address_Deliverypointsuffix},
    {L"nohouseholds", &Quorvex::Address_NoHouseHolds},
    {L"smallorg", &Quorvex::Address_Smallorg},
    {L"pobox", &Quorvex::Address_PoBox},
    {L"rawpostcode", &Quorvex::Address_Rawpostcode},
    {L"pz_mailsort", &Quorvex::Address_Mailsort},
    {L"unique", &Quorvex::Address_Unique},
    {L"udprn", &Quorvex::Address_UDPRN},
    {L"spare", &Quorvex::Address_Spare},
}};

constexpr std::array<Element, 17> kPostZonElements = {{
    {L"pz_postcode", &Quorvex::PostZon_postcode},
    {L"pz_introductiondate", &Quorvex::PostZon_IntroductionDate},
    {L"pz_gridrefeast", &Quorvex::PostZon_Gridrefeast},
    {L"pz_gridrefnorth", &Quorvex::PostZon_Gridrefnorth},
    {L"pz_county", &Quorvex::PostZon_County},
    {L"pz_district", &Quorvex::PostZon_District},
    {L"pz_ward", &Quorvex::PostZon_Ward},
    {L"pz_usertype", &Quorvex::PostZon_Usertype},
    {L"pz_gridstatus", &Quorvex::PostZon_Gridstatus},
    {L"pz_country", &Quorvex::PostZon_Country},
    {L"pz_wardstatus", &Quorvex::PostZon_Wardstatus},
    {L"pz_nhs_code", &Quorvex::PostZon_NHS_code},
    {L"pz_nhs_region", &Quorvex::PostZon_NHS_region},
    {L"pz_latitude_wgs84", &Quorvex::PostZon_Latitude_wgs84},
    {L"pz_longitude_wgs84", &Quorvex::PostZon_Longitude_wgs84},
    {L"pz_osreference", &Quorvex::PostZon_OSreference},
    {L"pz_geodistancetohomepostcode", &Quorvex::PostZon_DistanceToHomePostcode},
}};

constexpr std::array<std::wstring_view, 7> kGeneralElements = {
    L"confirm",           L"credits_display_showbutton", L"pop_message",
    L"lookuplistversion", L"credits_display_text",       L"accountadminpage",
    L"errormessage"};

constexpr std::size_t kElements = kAddressElements.size() + kPostZonElements.size() + kGeneralElements.size();

constexpr std::array<std::wstring_view, kElements> kSortedNames = [] {
    std::array<std::wstring_view, kElements> names;
    auto next = std::ranges::copy(kGeneralElements, names.begin()).out;
    for (const Element& element : kAddressElements) *next++ = element.name;
    for (const Element& element : kPostZonElements) *next++ = element.name;
    std::ranges::sort(names);
    return names;
}();

constexpr std::size_t PlaceOf(std::wstring_view name) {
    return static_cast<std::size_t>(std::ranges::lower_bound(kSortedNames, name) - kSortedNames.begin());
}

template <std::size_t Size>
constexpr std::array<std::size_t, Size> PlacesOf(const std::array<Element, Size>& elements) {
    std::array<std::size_t, Size> places{};
    for (std::size_t i = 0; i < Size; ++i) places[i] = PlaceOf(elements[i].name);
    return places;
}

constexpr auto kAddressPlaces = PlacesOf(kAddressElements);
constexpr auto kPostZonPlaces = PlacesOf(kPostZonElements);

using Values = std::array<std::wstring_view, kElements>;

// An element that is not there becomes an empty property: nothing of the previous reply stays.
template <std::size_t Size>
void PutElements(Quorvex& object, const Values& values, const std::array<Element, Size>& elements,
                 const std::array<std::size_t, Size>& places) {
    for (std::size_t i = 0; i < Size; ++i) object.*elements[i].property = support::Trim(values[places[i]]);
}

} // namespace

void ClearRecord(Quorvex& object) {
    for (const Element& element : kAddressElements) (object.*element.property).clear();
    for (const Element& element : kPostZonElements) (object.*element.property).clear();
}

void ReadReplyHeader(Quorvex& object, const std::wstring& reply, bool requireRecord) {
    if (reply.find(L"<confirm>") == std::wstring::npos) {
        object.General_errormessage = object.LocalMode() ? ReadElement(reply, L"errormessage") : reply;
        return;
    }
    Values values;
    FindElements(reply, kSortedNames, values);
    object.General_confirm = support::UpperCase(values[PlaceOf(L"confirm")]) == L"YES";
    object.General_credits_display_showbutton = values[PlaceOf(L"credits_display_showbutton")] == L"1";
    object.General_Pop_Message = values[PlaceOf(L"pop_message")];
    object.General_LookupListVersion = values[PlaceOf(L"lookuplistversion")];
    object.General_credits_display_text = values[PlaceOf(L"credits_display_text")];
    object.General_accountadminpage = values[PlaceOf(L"accountadminpage")];
    object.General_errormessage = values[PlaceOf(L"errormessage")];
    PutElements(object, values, kAddressElements, kAddressPlaces);
    PutElements(object, values, kPostZonElements, kPostZonPlaces);
    if (requireRecord && object.Address_Postcode.empty()) object.General_confirm = false;
    if (object.Address_Postcode.empty()) object.Address_Postcode = object.PostZon_postcode;
    if (object.PostZon_DistanceToHomePostcode.empty()) object.PostZon_DistanceToHomePostcode = L"0";
}

} // namespace quorvex::object
