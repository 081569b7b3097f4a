#pragma once

#include "object/quorvex.h"
#include "quorvex/report.h"

#include <filesystem>
#include <string>

namespace quorvex::cli {

struct NearestRequest {
    std::filesystem::path points; // CSV with a header; "-": standard input
    std::wstring at;              // postcode
    double withinKilometres = 0;
    std::wstring latitudeColumn = L"latitude";
    std::wstring longitudeColumn = L"longitude";
    char separator = 0;
    std::size_t most = 0; // 0: all
};

// The points of a list around a postcode, nearest first: "kilometres", then the list's own columns. Rows without a
// place are counted in the message.
Report Nearest(object::Quorvex& object, const NearestRequest& request);

} // namespace quorvex::cli
