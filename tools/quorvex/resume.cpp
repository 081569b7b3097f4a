#include "quorvex/resume.h"

#include "quorvex/file_system.h"
#include "support/error.h"
#include "support/files.h"

#include <algorithm>
#include <fstream>

namespace quorvex::cli {
namespace {

[[noreturn]] void ThrowForeign(const wchar_t* what) {
    throw support::Error(support::kErrorBadFile,
                         std::wstring(L"the output cannot be resumed: ") + what + L"; --overwrite replaces it");
}

} // namespace

ResumePoint FindResumePoint(const std::filesystem::path& output, const std::string& header, const CsvFormat& format) {
    ResumePoint point;
    if (FileLength(output).value_or(0) == 0) return point;
    std::ifstream file(output, std::ios::binary);
    std::string begin(header.size(), '\0');
    if (!file || !file.read(begin.data(), static_cast<std::streamsize>(begin.size())) || begin != header) {
        ThrowForeign(L"it does not begin as this list would");
    }
    file.seekg(0);
    CsvReader reader(file, format.separator, format.utf8);
    std::vector<std::string> names;
    reader.ReadHeader(names);
    point.offset = header.size();
    CsvBatch batch;
    while (reader.Next(batch, kCsvRowsAtOnce)) {
        // A last row that the earlier run did not get to write whole is made again.
        if (!batch.bytes.ends_with(format.lineEnd) || batch.unclosedQuote) {
            batch.bytes.resize(batch.rows.back().begin);
            batch.rows.pop_back();
        }
        point.offset += batch.bytes.size();
        point.rows += batch.rows.size();
        if (!batch.rows.empty()) point.lastRow = batch.Row(batch.rows.size() - 1);
    }
    return point;
}

void SkipRows(CsvReader& input, const ResumePoint& point) {
    std::uint64_t left = point.rows;
    std::string last;
    while (left > 0) {
        CsvBatch batch;
        if (!input.Next(batch, static_cast<std::size_t>(std::min<std::uint64_t>(left, kCsvRowsAtOnce))))
            ThrowForeign(L"it has more rows");
        left -= batch.rows.size();
        last = batch.Row(batch.rows.size() - 1);
    }
    if (!point.lastRow.starts_with(last)) ThrowForeign(L"its last row was made from another row");
}

} // namespace quorvex::cli
