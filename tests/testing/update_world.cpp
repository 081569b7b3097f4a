#include "testing/update_world.h"

#include "database/connection_string.h"
#include "database/jet/jet_translation.h"
#include "support/files.h"
#include "support/process_state.h"
#include "support/text.h"
#include "testing/zip_builder.h"

namespace quorvex::testing {
namespace {

constexpr std::size_t kFixedLogColumns = 4; // time, title, computer, user

using database::Value;
using jet::ColumnSpec;
using jet::ColumnType;

constexpr std::size_t kKindPosition = 7;
constexpr std::size_t kDatePosition = 9;
constexpr std::size_t kDateLength = 8;

std::vector<ColumnSpec> AddressColumns() {
    return {{.name = u"FT_Postcode", .length = 10},
            {.name = u"FT_Address", .type = ColumnType::kMemo},
            {.name = u"FT_Update", .length = 10}};
}

std::vector<ColumnSpec> PostZonColumns() {
    std::vector<ColumnSpec> columns;
    for (const char16_t* name :
         {u"PZ_Postcode", u"PZ_IntroductionDate", u"PZ_GridRefEast", u"PZ_GridRefNorth", u"PZ_County", u"PZ_District",
          u"PZ_Ward", u"PZ_UserType", u"PZ_GridStatus", u"PZ_Country", u"PZ_WardStatus", u"PZ_NHS_Code",
          u"PZ_NHS_Region", u"PZ_Lat", u"PZ_Long", u"PZ_OSRef", u"PZ_Update"}) {
        columns.push_back({.name = name, .length = 50});
    }
    columns[13].type = columns[14].type = ColumnType::kDouble;
    return columns;
}

// A row whose every column says which row and column it is; the last one is the update column.
std::vector<Value> RowFor(const std::vector<ColumnSpec>& columns, const std::wstring& postcode,
                          const std::wstring& update) {
    std::vector<Value> row{postcode};
    for (std::size_t i = 1; i + 1 < columns.size(); ++i) {
        if (columns[i].type == ColumnType::kDouble) {
            row.emplace_back(static_cast<double>(i) + 0.25);
        } else {
            row.emplace_back(database::FromUtf16(columns[i].name) + L" of " + postcode + L" " + update);
        }
    }
    row.emplace_back(update);
    return row;
}

FileData RecordsFor(wchar_t kind, const std::vector<std::wstring>& postcodes, const std::wstring& update) {
    const wchar_t* const name = kind == L'Z'   ? L"PAF_PostZon"
                                : kind == L'T' ? L"PAF_StreetAddress"
                                               : L"PAF_FULLAddress";
    FileData data;
    TableData& table = data.tables[name];
    table.columns = kind == L'Z' ? PostZonColumns() : AddressColumns();
    for (const std::wstring& postcode : postcodes) table.rows.push_back(RowFor(table.columns, postcode, update));
    return data;
}

std::vector<std::wstring> LogLines(const std::wstring& log) {
    std::vector<std::wstring> lines;
    if (!support::FileExists(log)) return lines;
    std::wstring text = support::FromUtf8(support::ReadFileBytes(log));
    while (!text.empty()) {
        std::wstring line = support::NextField(text, L"\r\n", true);
        for (std::size_t i = 0; i < kFixedLogColumns; ++i) support::NextField(line, L"\t", true);
        while (!line.empty() && line.back() == L'\t') line.pop_back();
        lines.push_back(support::ReplaceAll(line, L"\t", L"|"));
    }
    return lines;
}

} // namespace

UpdateWorld::UpdateWorld() {
    platform.databases = &databases;
    object.LMSetDataPath(folder.Text());
    object.SetServiceURL(L"http://service");
}

UpdateWorld::~UpdateWorld() {
    support::Process() = {};
}

void UpdateWorld::AddData(const wchar_t* fileName, FileData data, const std::wstring& date, const Spoil& spoil) {
    data.tables[L"Version"] = {{{.name = u"ID", .type = ColumnType::kLong}, {.name = u"Text"}},
                               {{1, L"Format 2"}, {2, date}}};
    if (spoil) spoil(data);
    WriteJetFile(folder.File(fileName), data);
}

void UpdateWorld::AddFull(const std::wstring& date, const Spoil& spoil) {
    AddData(L"PAF_FULL.dat", RecordsFor(L'F', {L"AB1 1AA", L"AB1 1AB", L"AB1 1AC"}, L"old"), date, spoil);
}

void UpdateWorld::AddStreet(const std::wstring& date, const Spoil& spoil) {
    AddData(L"PAF_THOURGHFARE.dat", RecordsFor(L'T', {L"AB1 1AA"}, L"old"), date, spoil);
}

void UpdateWorld::AddPostZon(const std::wstring& date, const Spoil& spoil) {
    AddData(L"PAF_POSTZON.dat", RecordsFor(L'Z', {L"AB1 1AA", L"AB1 1AB"}, L"old"), date, spoil);
}

void UpdateWorld::AddUnpacked(const std::wstring& name, const std::vector<std::wstring>& postcodes,
                              const Spoil& spoil) {
    const std::wstring date = name.size() > kDatePosition ? name.substr(kDatePosition, kDateLength) : std::wstring();
    FileData data = RecordsFor(name.at(kKindPosition), postcodes, date);
    if (spoil) spoil(data);
    WriteJetFile(folder.File(name), data);
}

void UpdateWorld::AddPackage(const std::wstring& name, const std::vector<std::wstring>& postcodes, const Spoil& spoil) {
    const std::wstring unpacked = name.substr(0, name.size() - 4) + L".dat";
    AddUnpacked(unpacked, postcodes, spoil);
    ZipBuilder zip;
    zip.Add(support::ToUtf8(unpacked), support::ReadFileBytes(folder.File(unpacked)));
    support::WriteFileBytes(folder.File(name), zip.Bytes());
    support::DeleteFileQuietly(folder.File(unpacked));
}

std::vector<std::vector<Value>> UpdateWorld::Rows(const std::wstring& fileName, const std::wstring& table) const {
    return ReadJetRows(folder.File(fileName), table);
}

std::wstring UpdateWorld::VersionOf(const std::wstring& fileName) const {
    return std::get<std::wstring>(Rows(fileName, L"Version").at(1).at(1));
}

std::wstring UpdateWorld::UpdateOf(const std::wstring& fileName, const std::wstring& table,
                                   const std::wstring& key) const {
    std::wstring found;
    for (const std::vector<Value>& row : Rows(fileName, table)) {
        if (std::get<std::wstring>(row.front()) != key) continue;
        found += (found.empty() ? L"" : L",") + std::get<std::wstring>(row.back());
    }
    return found;
}

jet::Database UpdateWorld::Hold(const std::wstring& fileName) {
    jet::OpenOptions writing;
    writing.writable = true;
    return jet::Database::Open(support::ToPath(folder.File(fileName)), database::ToUtf16(database::kDatabasePassword),
                               writing);
}

bool UpdateWorld::HasFile(const std::wstring& name) const {
    return support::FileSize(folder.File(name)) >= 0;
}

std::vector<std::wstring> UpdateWorld::ActivityLines() const {
    return LogLines(folder.File(L"Activity1.log"));
}

std::vector<std::wstring> UpdateWorld::ErrorLines() const {
    return LogLines(folder.File(L"Error1.log"));
}

std::vector<std::wstring> UpdateWorld::MessageTexts() const {
    std::vector<std::wstring> texts;
    for (const FakePlatform::Message& message : platform.messages) texts.push_back(message.text);
    return texts;
}

} // namespace quorvex::testing
