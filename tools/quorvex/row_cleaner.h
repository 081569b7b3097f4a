#pragma once

#include "quorvex/address_source.h"
#include "quorvex/csv.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace quorvex::cli {

enum class Verdict { Exact, Several, None, Failed };
inline constexpr std::array<const char*, 4> kVerdictNames = {"exact", "several", "none", "failed"};

struct CleanedRows {
    std::string bytes; // whole rows with their line ends
    std::uint64_t rows = 0;
    std::array<std::uint64_t, kVerdictNames.size()> verdicts{};
};

// The columns that are looked at, and how the output is written.
struct CleanColumns {
    std::size_t postcode = 0;
    std::optional<std::size_t> house;
    std::size_t count = 0; // of the header
    CsvFormat format;
};

// The header of the output: that of the input, then verdict, reason, matches and found_... for the record's fields.
std::string CleanedHeader(const std::string& headerRow, const CsvFormat& format);

// Completes rows: each is kept byte for byte and followed by what was found.
class RowCleaner {
  public:
    RowCleaner(const CleanColumns& columns, std::unique_ptr<AddressSource> source)
        : columns_(columns), source_(std::move(source)) {}

    // Throws support::Error if the data cannot be read at all; a failure of one row is that row's verdict.
    CleanedRows Clean(const CsvBatch& batch);

  private:
    struct Finding {
        Verdict verdict = Verdict::Failed;
        std::wstring reason;
        std::size_t matches = 0;
        RecordCells record;
    };
    Finding Examine(std::string_view row, bool unclosedQuote);
    Finding LookUp(const std::wstring& postcode, const std::wstring& house);
    // Puts a finding after the row that fields_ was split from.
    void Append(CleanedRows& cleaned, const Finding& finding);

    const CleanColumns columns_;
    std::unique_ptr<AddressSource> source_;
    std::vector<std::string> fields_;
};

} // namespace quorvex::cli
