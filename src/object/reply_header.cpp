#include "object/reply_header.h"

#include "object/tag_reader.h"
#include "support/text.h"

#include <array>

namespace quorvex::object {
namespace {

using object::Quorvex;
using object::ReadElement;

struct Element {
    const wchar_t* name;
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

// An element that is not there becomes an empty property: nothing of the previous reply stays.
template <typename Elements>
void ReadElements(Quorvex& object, const std::wstring& reply, const Elements& elements) {
    for (const Element& element : elements) {
        object.*element.property = support::Trim(ReadElement(reply, element.name));
    }
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
    object.General_confirm = support::UpperCase(ReadElement(reply, L"confirm")) == L"YES";
    object.General_credits_display_showbutton = ReadElement(reply, L"credits_display_showbutton") == L"1";
    object.General_Pop_Message = ReadElement(reply, L"pop_message");
    object.General_LookupListVersion = ReadElement(reply, L"lookuplistversion");
    object.General_credits_display_text = ReadElement(reply, L"credits_display_text");
    object.General_accountadminpage = ReadElement(reply, L"accountadminpage");
    object.General_errormessage = ReadElement(reply, L"errormessage");
    ReadElements(object, reply, kAddressElements);
    ReadElements(object, reply, kPostZonElements);
    if (requireRecord && object.Address_Postcode.empty()) object.General_confirm = false;
    if (object.Address_Postcode.empty()) object.Address_Postcode = object.PostZon_postcode;
    if (object.PostZon_DistanceToHomePostcode.empty()) object.PostZon_DistanceToHomePostcode = L"0";
}

} // namespace quorvex::object
