#pragma once

#include "quorvex/csv.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace quorvex::cli {

// Where an interrupted output ends with a whole row.
struct ResumePoint {
    std::uint64_t offset = 0; // bytes; 0 if there is no output yet
    std::uint64_t rows = 0;
    std::string lastRow; // without its line end
};

// Reads the output of an earlier run. Throws support::Error if its header is not the expected one (byte order mark and
// line end included).
ResumePoint FindResumePoint(const std::filesystem::path& output, const std::string& header, const CsvFormat& format);

// Passes over the input's rows that are done. Throws support::Error if the output's last row was not made from the
// input's row at that place.
void SkipRows(CsvReader& input, const ResumePoint& point);

} // namespace quorvex::cli
