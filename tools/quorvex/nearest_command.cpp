#include "quorvex/nearest_command.h"

#include "lookups/distance.h"
#include "quorvex/csv.h"
#include "quorvex/lookup_commands.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>

namespace quorvex::cli {
namespace {

struct Point {
    double kilometres = 0;
    std::vector<Cell> cells;
};

std::optional<double> Degrees(const std::string& text, double limit) {
    const std::wstring wide = support::FromLatin1(text);
    if (!support::IsNumber(wide)) return std::nullopt;
    const double degrees = support::ParseNumber(wide);
    return std::abs(degrees) <= limit ? std::optional(degrees) : std::nullopt;
}

} // namespace

Report Nearest(object::Quorvex& object, const NearestRequest& request) {
    std::ifstream file;
    const bool standard = request.points == "-";
    if (!standard) file.open(request.points, std::ios::binary);
    if (!standard && !file) {
        throw support::Error(support::kErrorFileNotFound, L"cannot read " + support::FromPath(request.points));
    }
    CsvReader reader(standard ? std::cin : file, request.separator, std::nullopt);
    std::vector<std::string> columns = {"kilometres"};
    std::vector<std::string> names;
    reader.ReadHeader(names);
    const CsvFormat& format = reader.Format();
    for (const std::string& name : names) columns.push_back(support::ToUtf8(CsvText(name, format)));
    Report report("nearest", columns);
    const auto latitude = FindColumn(names, request.latitudeColumn, format);
    const auto longitude = FindColumn(names, request.longitudeColumn, format);
    if (!latitude || !longitude) {
        report.End(Outcome::WrongCall,
                   L"there is no column \"" + (latitude ? request.longitudeColumn : request.latitudeColumn) + L"\"");
        return report;
    }
    Place home;
    if (!FindPlace(object, request.at, home, report)) return report;
    std::vector<Point> points;
    std::size_t unusable = 0;
    std::vector<std::string> fields;
    for (CsvBatch batch; reader.Next(batch, kCsvRowsAtOnce);) {
        for (std::size_t i = 0; i < batch.rows.size(); ++i) {
            SplitCsvRow(batch.Row(i), format.separator, fields);
            fields.resize(names.size());
            const auto north = Degrees(fields[*latitude], 90);
            const auto east = Degrees(fields[*longitude], 180);
            if (!north || !east) {
                ++unusable;
                continue;
            }
            double kilometres = lookups::zDistance::Distance(home.latitude, home.longitude, *north, *east, L'K');
            if (!std::isfinite(kilometres)) kilometres = 0; // rounding: the two practically coincide
            if (kilometres > request.withinKilometres) continue;
            Point point{kilometres, {std::round(kilometres * 1000) / 1000}};
            for (const std::string& field : fields) point.cells.emplace_back(CsvText(field, format));
            points.push_back(std::move(point));
        }
    }
    std::stable_sort(points.begin(), points.end(),
                     [](const Point& a, const Point& b) { return a.kilometres < b.kilometres; });
    if (request.most != 0 && points.size() > request.most) points.resize(request.most);
    for (Point& point : points) report.Add(std::move(point.cells));
    const std::wstring message = unusable == 0 ? L"" : std::to_wstring(unusable) + L" rows have no usable place";
    report.End(points.empty() ? Outcome::Nothing : Outcome::Done,
               points.empty() && unusable == 0 ? L"no point within that distance" : message);
    return report;
}

} // namespace quorvex::cli
