#pragma once

#include "quorvex/address_source.h"
#include "quorvex/console.h"
#include "quorvex/report.h"

#include <filesystem>
#include <optional>
#include <string>

namespace quorvex::cli {

struct CleanRequest {
    std::filesystem::path input;  // "-": standard input
    std::filesystem::path output; // "-": standard output
    std::wstring postcodeColumn;
    std::wstring houseColumn; // empty: postcodes alone are checked
    char separator = 0;       // 0: as the header has it
    std::optional<bool> utf8; // nothing: as the first block has it
    bool resume = false;
    bool overwrite = false;
    unsigned threads = 1;
    std::size_t batchRows = 2000;
    AddressSourceFactory makeSource;
};

// Completes a list. Stopped or failed, the output holds whole rows and a resumed run continues after them. The report
// has one row: rows written by this run, and how many of each verdict.
Report Clean(Console& console, const CleanRequest& request);

} // namespace quorvex::cli
