#include "quorvex/row_cleaner.h"

#include "quorvex/house_match.h"
#include "support/error.h"
#include "support/text.h"

#include <algorithm>

namespace quorvex::cli {
namespace {

// Ends a batch in any case: other threads may wait for that.
class Batch {
  public:
    explicit Batch(AddressSource& source) : source_(source) { source_.BeginBatch(); }
    ~Batch() { source_.EndBatch(); }
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

  private:
    AddressSource& source_;
};

} // namespace

std::string CleanedHeader(const std::string& headerRow, const CsvFormat& format) {
    std::string header = headerRow;
    for (const char* const name : {"verdict", "reason", "matches"}) header.append(1, format.separator).append(name);
    for (const char* const name : kRecordColumns) header.append(1, format.separator).append("found_").append(name);
    return header + format.lineEnd;
}

CleanedRows RowCleaner::Clean(const CsvBatch& batch) {
    CleanedRows cleaned;
    cleaned.bytes.reserve(batch.bytes.size() * 3);
    const Batch open(*source_);
    for (std::size_t i = 0; i < batch.rows.size(); ++i) {
        const bool unclosed = batch.unclosedQuote && i + 1 == batch.rows.size();
        const Finding finding = Examine(batch.Row(i), unclosed);
        cleaned.bytes.append(batch.Row(i));
        if (unclosed) cleaned.bytes.push_back('"'); // what follows is not to be inside the quotes
        Append(cleaned, finding);
    }
    return cleaned;
}

RowCleaner::Finding RowCleaner::Examine(std::string_view row, bool unclosedQuote) {
    Finding failure;
    SplitCsvRow(row, columns_.format.separator, fields_);
    if (unclosedQuote) {
        failure.reason = L"a quote is never closed";
        return failure;
    }
    if (row.empty()) {
        failure.reason = L"the row is empty";
        return failure;
    }
    if (fields_.size() <= std::max(columns_.postcode, columns_.house.value_or(0)) || fields_.size() > columns_.count) {
        failure.reason =
            std::to_wstring(fields_.size()) + L" fields where the header has " + std::to_wstring(columns_.count);
        return failure;
    }
    const std::wstring house = columns_.house ? CsvText(fields_[*columns_.house], columns_.format) : std::wstring();
    try {
        return LookUp(CsvText(fields_[columns_.postcode], columns_.format), house);
    } catch (const support::Error& error) {
        failure.reason = error.Description();
        return failure;
    }
}

RowCleaner::Finding RowCleaner::LookUp(const std::wstring& postcode, const std::wstring& house) {
    Finding finding;
    const std::wstring key = PostcodeKey(postcode);
    if (key.empty()) {
        finding.reason = support::Trim(postcode).empty() ? L"no postcode" : L"not a postcode";
        return finding;
    }
    finding.verdict = Verdict::None;
    const PostcodeAddresses* const addresses = source_->Find(key);
    if (addresses == nullptr) {
        finding.reason = L"postcode not found";
        return finding;
    }
    const std::vector<std::size_t> matches = MatchHouse(addresses->premises, addresses->streetWords, HouseWords(house));
    finding.matches = matches.size();
    if (matches.size() == 1) {
        finding.verdict = Verdict::Exact;
    } else if (matches.empty()) {
        finding.reason = L"no such house at this postcode";
    } else {
        finding.verdict = Verdict::Several;
        finding.reason = std::to_wstring(matches.size()) + L" addresses match";
    }
    // Without a premise of its own the row still gets what all of the postcode share: street, town, county.
    finding.record = source_->Record(*addresses, matches.size() == 1 ? matches.front() : addresses->sources.size());
    return finding;
}

void RowCleaner::Append(CleanedRows& cleaned, const Finding& finding) {
    const char separator = columns_.format.separator;
    const auto verdict = static_cast<std::size_t>(finding.verdict);
    std::string& out = cleaned.bytes;
    // A short row is filled up, so that what was found gets into its own columns.
    for (std::size_t i = fields_.size(); i < columns_.count; ++i) out.push_back(separator);
    out.append(1, separator).append(kVerdictNames[verdict]).append(1, separator);
    AppendCsvField(out, CsvBytes(finding.reason, columns_.format), separator);
    out.append(1, separator).append(std::to_string(finding.matches));
    for (const std::wstring& cell : finding.record) {
        out.push_back(separator);
        if (!cell.empty()) AppendCsvField(out, CsvBytes(cell, columns_.format), separator);
    }
    out.append(columns_.format.lineEnd);
    ++cleaned.rows;
    ++cleaned.verdicts[verdict];
}

} // namespace quorvex::cli
