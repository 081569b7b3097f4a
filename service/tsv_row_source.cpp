#include "service/tsv_row_source.h"

#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <algorithm>

namespace quorvex::service {
namespace {

using Fields = std::vector<std::wstring>;

Fields Cut(std::wstring_view text, wchar_t separator) {
    Fields fields;
    for (;;) {
        const std::size_t end = text.find(separator);
        fields.emplace_back(text.substr(0, end));
        if (end == std::wstring_view::npos) return fields;
        text.remove_prefix(end + 1);
    }
}

// The rows with the header line first.
std::vector<Fields> Table(const std::wstring& path) {
    std::vector<Fields> rows;
    for (const std::wstring& line : Cut(support::FromUtf8(support::ReadFileBytes(path)), L'\n')) {
        if (!line.empty()) rows.push_back(Cut(line, L'\t'));
    }
    return rows;
}

std::map<std::wstring, std::wstring> AddressTable(const std::wstring& path) {
    std::map<std::wstring, std::wstring> table;
    const std::vector<Fields> rows = Table(path);
    for (std::size_t i = 1; i < rows.size(); ++i) {
        if (rows[i].size() < 3) throw support::Error(support::kErrorBadFile, path + L": a row is too short");
        table[support::UpperCase(rows[i][0])] = rows[i][2] == L"\\N" ? std::wstring() : rows[i][2];
    }
    return table;
}

template <typename Table>
std::optional<typename Table::mapped_type> Find(const Table& table, const std::wstring& key) {
    const auto found = table.find(support::UpperCase(key));
    if (found == table.end()) return std::nullopt;
    return found->second;
}

} // namespace

TsvRowSource::TsvRowSource(const std::wstring& folder)
    : full_(AddressTable(folder + L"\\rows_full.tsv")), street_(AddressTable(folder + L"\\rows_street.tsv")) {
    const std::vector<Fields> rows = Table(folder + L"\\postzon.tsv");
    for (std::size_t i = 1; i < rows.size(); ++i) {
        PostZonRow row;
        for (std::size_t column = 0; column < kPostZonColumns.size(); ++column) {
            const auto name = std::find(rows[0].begin(), rows[0].end(), kPostZonColumns[column].first);
            const auto at = static_cast<std::size_t>(name - rows[0].begin());
            if (at < rows[i].size()) row[column] = rows[i][at];
        }
        postZon_[support::UpperCase(row[kPostcodeColumn])] = row;
    }
}

std::optional<std::wstring> TsvRowSource::FullRow(const std::wstring& key) const {
    return Find(full_, key);
}

std::optional<std::wstring> TsvRowSource::StreetRow(const std::wstring& key) const {
    return Find(street_, key);
}

std::optional<PostZonRow> TsvRowSource::PostZonByPostcode(const std::wstring& key) const {
    return Find(postZon_, key);
}

std::optional<PostZonRow> TsvRowSource::PostZonByReference(const std::wstring& reference) const {
    const std::size_t column = 14;
    for (const auto& [key, row] : postZon_) {
        if (support::UpperCase(row[column]) == support::UpperCase(reference)) return row;
    }
    return std::nullopt;
}

std::vector<PostZonRow> TsvRowSource::PostZonInBox(const Box& box) const {
    std::vector<PostZonRow> inside;
    for (const auto& [key, row] : postZon_) {
        if (!support::IsNumber(row[kLatitudeColumn]) || !support::IsNumber(row[kLongitudeColumn])) continue;
        const double latitude = support::ParseNumber(row[kLatitudeColumn]);
        const double longitude = support::ParseNumber(row[kLongitudeColumn]);
        if (longitude > box.west && longitude < box.east && latitude > box.south && latitude < box.north)
            inside.push_back(row);
    }
    return inside;
}

void TsvRowSource::WalkFull(const std::function<void(const std::wstring&, const std::wstring&)>& visit) const {
    for (const auto& [key, plain] : full_) visit(key, plain);
}

} // namespace quorvex::service
