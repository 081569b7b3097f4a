#include "service/postzon_answer.h"

#include "lookups/distance.h"
#include "lookups/postcode.h"
#include "support/text.h"

#include <cmath>

namespace quorvex::service {
namespace {

constexpr std::size_t kShortestKey = 5;
constexpr std::size_t kLongestPostcode = 8;
constexpr double kHalfWidthDegrees = 0.091; // about 10 km of latitude
constexpr double kFarthestKm = 1000;

double Distance(double latitude, double longitude, const PostZonRow& row) {
    const double rowLatitude = support::LeadingNumber(row[kLatitudeColumn]);
    const double rowLongitude = support::LeadingNumber(row[kLongitudeColumn]);
    const double km = lookups::zDistance::Distance(latitude, longitude, rowLatitude, rowLongitude, L'K');
    return std::isfinite(km) ? km : 0; // the arithmetic fails for points that practically coincide
}

bool HasPoint(const PostZonRow& row) {
    return support::IsNumber(row[kLatitudeColumn]) && support::IsNumber(row[kLongitudeColumn]);
}

std::optional<PostZonRow> RowOfPoint(const RowSource& rows, const std::wstring& key) {
    std::wstring rest = key + L"|";
    const std::wstring longitude = support::NextField(rest, L"|", true);
    const std::wstring latitude = support::NextField(rest, L"|", true);
    if (!support::IsNumber(longitude) || !support::IsNumber(latitude)) return std::nullopt;
    return NearestRow(rows, support::ParseNumber(longitude), support::ParseNumber(latitude));
}

std::optional<PostZonRow> RowOf(const RowSource& rows, const std::wstring& key) {
    if (key.size() <= kLongestPostcode) return rows.PostZonByPostcode(lookups::LocalPostcode(key));
    if (key.find(L'|') == std::wstring::npos) return rows.PostZonByReference(key);
    return RowOfPoint(rows, key);
}

} // namespace

std::optional<PostZonRow> NearestRow(const RowSource& rows, double longitude, double latitude) {
    const Box box{longitude - kHalfWidthDegrees, longitude + kHalfWidthDegrees, latitude - kHalfWidthDegrees,
                  latitude + kHalfWidthDegrees};
    std::optional<PostZonRow> nearest;
    double best = kFarthestKm;
    for (const PostZonRow& row : rows.PostZonInBox(box)) {
        const double km = Distance(latitude, longitude, row);
        if (km < best) {
            best = km;
            nearest = row;
        }
    }
    return nearest;
}

Reply PostZonRecordOf(const RowSource& rows, const std::wstring& key, const std::wstring& homePostcode) {
    if (key.size() < kShortestKey) return Refused(L"Please specify Postcode");
    const std::optional<PostZonRow> row = RowOf(rows, key);
    if (!row) return Refused(L"PostZon data not found: " + key);
    Reply reply;
    reply.confirm = true;
    for (std::size_t i = 0; i < row->size(); ++i) reply.body += Element(kPostZonColumns[i].second, (*row)[i]);
    if (homePostcode.empty()) return reply;
    const std::optional<PostZonRow> home = rows.PostZonByPostcode(lookups::LocalPostcode(homePostcode));
    if (home && HasPoint(*home) && HasPoint(*row)) {
        const double km = Distance(support::ParseNumber((*row)[kLatitudeColumn]),
                                   support::ParseNumber((*row)[kLongitudeColumn]), *home);
        reply.body += Element(L"pz_geodistancetohomepostcode", support::NumberText(km));
    }
    return reply;
}

} // namespace quorvex::service
