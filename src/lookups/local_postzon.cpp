#include "database/row_reader.h"
#include "localdata/data_file_names.h"
#include "lookups/distance.h"
#include "lookups/local_replies.h"
#include "lookups/postcode.h"
#include "object/tag_writer.h"
#include "support/text.h"

#include <array>
#include <optional>
#include <utility>

// Replies from the PostZon file.

namespace quorvex::lookups {
namespace {

constexpr double kSearchHalfWidth = 0.091; // degrees, about 10 km of latitude
constexpr double kFarthest = 1000;         // kilometres
constexpr std::size_t kGridReferenceLength = 9;

struct TagAndColumn {
    std::wstring_view tag;
    std::wstring column;
};

const std::array<TagAndColumn, 16>& TagsAndColumns() {
    static const std::array<TagAndColumn, 16> both = {{
        {L"pz_introductiondate", L"PZ_IntroductionDate"},
        {L"pz_gridrefeast", L"PZ_GridRefEast"},
        {L"pz_gridrefnorth", L"PZ_GridRefNorth"},
        {L"pz_county", L"PZ_County"},
        {L"pz_district", L"PZ_District"},
        {L"pz_ward", L"PZ_Ward"},
        {L"pz_usertype", L"PZ_UserType"},
        {L"pz_gridstatus", L"PZ_GridStatus"},
        {L"pz_country", L"PZ_Country"},
        {L"pz_wardstatus", L"PZ_WardStatus"},
        {L"pz_nhs_code", L"PZ_NHS_Code"},
        {L"pz_nhs_region", L"PZ_NHS_Region"},
        {L"pz_latitude_wgs84", L"PZ_Lat"},
        {L"pz_longitude_wgs84", L"PZ_Long"},
        {L"pz_osreference", L"PZ_OSRef"},
        {L"pz_postcode", L"PZ_Postcode"},
    }};
    return both;
}

struct Point {
    double latitude = 0;
    double longitude = 0;
};

std::wstring File(const object::Quorvex& object) {
    return localdata::DataFilePath(object.DataPath(), *localdata::FindDataFile(L'Z'));
}

std::wstring ByPostcode(const std::wstring& postcode) {
    return L"SELECT * From [PAF_PostZon] WHERE [PZ_Postcode]='" + postcode + L"';";
}

// The two blanks before WHERE are intended: the queries are compared with logs of earlier releases.
std::wstring ByPostcodeOfPoint(const std::wstring& postcode) {
    return L"SELECT * FROM [PAF_PostZon]  WHERE (PZ_Postcode='" + postcode + L"');";
}

std::wstring ByGridReference(const std::wstring& reference) {
    return L"SELECT * FROM [PAF_PostZon]  WHERE (PZ_OSRef='" + reference + L"');";
}

std::wstring InSquare(double longitude, double latitude) {
    // Rounded, so that a row exactly on a bound is outside whatever the sum's last bits are.
    const auto bound = [](double centre, double offset) {
        return support::NumberText(support::RoundedTo15Digits(centre + offset));
    };
    return L"SELECT PAF_PostZon.* FROM PAF_PostZon WHERE (((PZ_Long)>" + bound(longitude, -kSearchHalfWidth) +
           L") and ((PZ_Long)<" + bound(longitude, kSearchHalfWidth) + L") and ((PZ_Lat)>" +
           bound(latitude, -kSearchHalfWidth) + L") and ((PZ_Lat)<" + bound(latitude, kSearchHalfWidth) + L"));";
}

// The query that a key's form asks for; nothing for a point without a postcode near it.
std::optional<std::wstring> QueryFor(object::Quorvex& object, const std::wstring& key) {
    if (key.size() < kGridReferenceLength) return ByPostcode(LocalPostcode(key));
    if (key.find(L'|') == std::wstring::npos) return ByGridReference(key);
    // Also with decimal commas, as the user's own programs write numbers.
    std::wstring pieces = support::ReplaceAll(key, L",", L".") + L"|";
    const double longitude = support::ParseNumber(support::NextField(pieces, L"|", true));
    const double latitude = support::ParseNumber(support::NextField(pieces, L"|", true));
    const std::wstring postcode = LocalNearestPostcode(object, longitude, latitude);
    if (postcode.empty()) return std::nullopt;
    return ByPostcodeOfPoint(postcode);
}

std::optional<Point> PointOf(database::RowReader& row) {
    static const std::wstring kLatitude = L"PZ_Lat"; // made once: a search asks some hundred rows
    static const std::wstring kLongitude = L"PZ_Long";
    const auto latitude = row.Number(kLatitude);
    const auto longitude = row.Number(kLongitude);
    if (!latitude || !longitude) return std::nullopt;
    return Point{*latitude, *longitude};
}

std::optional<Point> HomePoint(object::Quorvex& object) {
    if (object.HomePostcode().empty()) return std::nullopt;
    database::RowReader row(object.databases, File(object), ByPostcode(LocalPostcode(object.HomePostcode())));
    return row.AtEnd() ? std::nullopt : PointOf(row);
}

} // namespace

std::wstring LocalNearestPostcode(object::Quorvex& object, double longitude, double latitude) {
    database::RowReader rows(object.databases, File(object), InSquare(longitude, latitude));
    double best = kFarthest;
    std::wstring nearest;
    for (; !rows.AtEnd(); rows.Next()) {
        const auto point = PointOf(rows);
        if (!point) continue;
        const double kilometres = GetDistance(object.platform, latitude, longitude, point->latitude, point->longitude);
        if (kilometres < best) {
            best = kilometres;
            nearest = rows.Text(L"PZ_Postcode");
        }
    }
    rows.Close();
    return nearest;
}

std::wstring LocalPostZonRecord(object::Quorvex& object, const std::wstring& key) {
    const auto query = QueryFor(object, key);
    if (!query) return {};
    std::wstring reply;
    std::optional<Point> point;
    {
        database::RowReader row(object.databases, File(object), *query);
        if (row.AtEnd()) return {};
        reply = L"<confirm>Yes</confirm>\r\n";
        for (const auto& [tag, column] : TagsAndColumns()) object::AppendElement(reply, tag, row.Text(column));
        point = PointOf(row);
        row.Close();
    }
    object::AppendElement(reply, L"credits_display_text", object.General_credits_display_text);
    object::AppendElement(reply, L"errormessage", object.General_errormessage);
    const auto home = HomePoint(object);
    if (home && point) {
        const double kilometres =
            GetDistance(object.platform, point->latitude, point->longitude, home->latitude, home->longitude);
        object::AppendElement(reply, L"pz_geodistancetohomepostcode", support::NumberText(kilometres));
    }
    return reply;
}

} // namespace quorvex::lookups
