#include "quorvex/lookup_commands.h"

#include "lookups/address_list.h"
#include "lookups/address_record.h"
#include "lookups/distance.h"
#include "lookups/local_replies.h"
#include "lookups/postcode.h"
#include "lookups/postzon.h"
#include "object/tag_reader.h"
#include "support/text.h"

#include <cmath>
#include <utility>
#include <vector>

namespace quorvex::cli {
namespace {

using object::Quorvex;
using Field = std::pair<const char*, std::wstring Quorvex::*>;

constexpr std::size_t kShortestPostZonKey = 5;

const std::vector<Field>& AddressFields() {
    static const std::vector<Field> fields = {
        {"id", &Quorvex::Address_Id},
        {"organisation", &Quorvex::Address_Organisation},
        {"line1", &Quorvex::Address_Line1},
        {"line2", &Quorvex::Address_Line2},
        {"line3", &Quorvex::Address_Line3},
        {"town", &Quorvex::Address_Town},
        {"county", &Quorvex::Address_County},
        {"postcode", &Quorvex::Address_Postcode},
        {"country", &Quorvex::Address_Country},
        {"deliverypointsuffix", &Quorvex::Address_Deliverypointsuffix},
        {"households", &Quorvex::Address_NoHouseHolds},
        {"smallorg", &Quorvex::Address_Smallorg},
        {"mailsort", &Quorvex::Address_Mailsort},
        {"spare", &Quorvex::Address_Spare},
    };
    return fields;
}

const std::vector<Field>& PostZonFields() {
    static const std::vector<Field> fields = {
        {"postcode", &Quorvex::PostZon_postcode},
        {"introductiondate", &Quorvex::PostZon_IntroductionDate},
        {"gridrefeast", &Quorvex::PostZon_Gridrefeast},
        {"gridrefnorth", &Quorvex::PostZon_Gridrefnorth},
        {"county", &Quorvex::PostZon_County},
        {"district", &Quorvex::PostZon_District},
        {"ward", &Quorvex::PostZon_Ward},
        {"usertype", &Quorvex::PostZon_Usertype},
        {"gridstatus", &Quorvex::PostZon_Gridstatus},
        {"country", &Quorvex::PostZon_Country},
        {"wardstatus", &Quorvex::PostZon_Wardstatus},
        {"nhs_code", &Quorvex::PostZon_NHS_code},
        {"nhs_region", &Quorvex::PostZon_NHS_region},
        {"latitude", &Quorvex::PostZon_Latitude_wgs84},
        {"longitude", &Quorvex::PostZon_Longitude_wgs84},
        {"osreference", &Quorvex::PostZon_OSreference},
    };
    return fields;
}

// The object's fields as the one row of a tall report.
Report FieldsReport(const Quorvex& object, const char* command, const std::vector<Field>& fields) {
    std::vector<std::string> names;
    std::vector<Cell> cells;
    for (const auto& [name, member] : fields) {
        names.emplace_back(name);
        cells.emplace_back(object.*member);
    }
    Report report(command, std::move(names), Report::Layout::Tall);
    report.Add(std::move(cells));
    return report;
}

// An unconfirmed reply without a message, or with the service's "not found", means that nothing was found.
Report Unconfirmed(const Quorvex& object, const char* command, const std::wstring& asked) {
    Report report(command);
    const std::wstring& message = object.General_errormessage;
    if (message.empty()) {
        report.End(Outcome::Nothing, L"not found: " + asked);
    } else {
        const bool nothing = message.find(L"not found") != std::wstring::npos;
        report.End(nothing ? Outcome::Nothing : Outcome::Failed, message);
    }
    return report;
}

Report NotAPostcode(const char* command, const std::wstring& text) {
    Report report(command);
    report.End(Outcome::WrongCall, L"\"" + text + L"\" is not a postcode");
    return report;
}

} // namespace

Report Find(Quorvex& object, const std::wstring& postcode, const std::wstring& house) {
    if (!lookups::HasPostcodeShape(postcode)) return NotAPostcode("find", postcode);
    if (!lookups::GetFullAddressToList(object, postcode)) return Unconfirmed(object, "find", postcode);
    Report report("find", {"id", "line"});
    const lookups::HouseFilter filter(house);
    for (;;) {
        const std::wstring record = object.AddressData.TakeBetween(L"<record>", L"</record>");
        if (record.empty()) break;
        std::wstring line(support::Trim(object::ReadElement(record, L"line")));
        if (filter.Keeps(line)) report.Add({object::ReadElement(record, L"id"), std::move(line)});
    }
    if (report.Rows().empty()) {
        report.End(Outcome::Nothing, L"no address at " + postcode + (house.empty() ? L"" : L", " + house));
    }
    return report;
}

Report Record(Quorvex& object, const std::wstring& id) {
    if (!lookups::GetFullAddressRecordByAddressID(object, id)) return Unconfirmed(object, "record", id);
    return FieldsReport(object, "record", AddressFields());
}

Report Street(Quorvex& object, const std::wstring& postcode) {
    if (!lookups::HasPostcodeShape(postcode)) return NotAPostcode("street", postcode);
    if (!lookups::GetThoroughfareAddressRecord(object, postcode)) return Unconfirmed(object, "street", postcode);
    // What belongs to a premise has no place in a street's record.
    std::vector<Field> fields;
    for (const Field& field : AddressFields()) {
        const std::string_view name = field.first;
        if (name.starts_with("line") || name == "town" || name == "county" || name == "postcode" || name == "country" ||
            name == "mailsort") {
            fields.push_back(field);
        }
    }
    return FieldsReport(object, "street", fields);
}

Report PostZon(Quorvex& object, const std::wstring& key) {
    if (key.size() < kShortestPostZonKey) {
        Report report("postzon");
        report.End(Outcome::WrongCall, L"\"" + key + L"\" is too short for a postcode or a grid reference");
        return report;
    }
    if (!lookups::GetPostZonAddressRecord(object, key)) return Unconfirmed(object, "postzon", key);
    return FieldsReport(object, "postzon", PostZonFields());
}

bool FindPlace(Quorvex& object, const std::wstring& postcode, Place& place, Report& report) {
    if (!lookups::HasPostcodeShape(postcode)) {
        report.End(Outcome::WrongCall, L"\"" + postcode + L"\" is not a postcode");
        return false;
    }
    if (!lookups::GetPostZonAddressRecord(object, postcode)) {
        const Report reason = Unconfirmed(object, "", postcode);
        report.End(reason.Result(), reason.Message());
        return false;
    }
    if (!support::IsNumber(object.PostZon_Latitude_wgs84) || !support::IsNumber(object.PostZon_Longitude_wgs84)) {
        report.End(Outcome::Nothing, L"the data has no place for " + postcode);
        return false;
    }
    place = {support::ParseNumber(object.PostZon_Latitude_wgs84), support::ParseNumber(object.PostZon_Longitude_wgs84)};
    return true;
}

Report Distance(Quorvex& object, const std::wstring& from, const std::wstring& to) {
    Report report("distance", {"from", "to", "kilometres", "miles"});
    Place a;
    Place b;
    if (!FindPlace(object, from, a, report) || !FindPlace(object, to, b, report)) return report;
    const auto rounded = [](double distance) { return std::round(distance * 1000) / 1000; };
    const auto in = [&](wchar_t unit) {
        const double distance = lookups::zDistance::Distance(a.latitude, a.longitude, b.latitude, b.longitude, unit);
        return std::isfinite(distance) ? rounded(distance) : 0; // not finite: the two practically coincide
    };
    report.Add({from, to, in(L'K'), in(L'M')});
    return report;
}

} // namespace quorvex::cli
