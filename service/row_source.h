#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quorvex::service {

// Columns of a PostZon row and the reply elements that carry them, in the order of the reply.
inline constexpr std::array<std::pair<const wchar_t*, const wchar_t*>, 16> kPostZonColumns = {{
    {L"PZ_IntroductionDate", L"pz_introductiondate"},
    {L"PZ_GridRefEast", L"pz_gridrefeast"},
    {L"PZ_GridRefNorth", L"pz_gridrefnorth"},
    {L"PZ_County", L"pz_county"},
    {L"PZ_District", L"pz_district"},
    {L"PZ_Ward", L"pz_ward"},
    {L"PZ_UserType", L"pz_usertype"},
    {L"PZ_GridStatus", L"pz_gridstatus"},
    {L"PZ_Country", L"pz_country"},
    {L"PZ_WardStatus", L"pz_wardstatus"},
    {L"PZ_NHS_Code", L"pz_nhs_code"},
    {L"PZ_NHS_Region", L"pz_nhs_region"},
    {L"PZ_Lat", L"pz_latitude_wgs84"},
    {L"PZ_Long", L"pz_longitude_wgs84"},
    {L"PZ_OSRef", L"pz_osreference"},
    {L"PZ_Postcode", L"pz_postcode"},
}};
inline constexpr std::size_t kLatitudeColumn = 12;
inline constexpr std::size_t kLongitudeColumn = 13;
inline constexpr std::size_t kPostcodeColumn = 15;

// Values as texts in the order above; NULL is an empty text.
using PostZonRow = std::array<std::wstring, kPostZonColumns.size()>;

// Degrees, WGS84; the bounds themselves lie outside.
struct Box {
    double west = 0;
    double east = 0;
    double south = 0;
    double north = 0;
};

// The rows of a data folder. Keys are formatted postcodes, compared without regard to case. Address texts are plain;
// NULL is an empty text. Any number of threads may call at a time. Throws support::Error when the data cannot be read.
class RowSource {
  public:
    virtual ~RowSource() = default;

    // Nothing when there is no such row.
    virtual std::optional<std::wstring> FullRow(const std::wstring& key) const = 0;
    virtual std::optional<std::wstring> StreetRow(const std::wstring& key) const = 0;
    virtual std::optional<PostZonRow> PostZonByPostcode(const std::wstring& key) const = 0;
    virtual std::optional<PostZonRow> PostZonByReference(const std::wstring& reference) const = 0;
    virtual std::vector<PostZonRow> PostZonInBox(const Box& box) const = 0;
    // All rows of the full addresses in ascending order of their keys.
    virtual void
    WalkFull(const std::function<void(const std::wstring& key, const std::wstring& plain)>& visit) const = 0;
};

} // namespace quorvex::service
