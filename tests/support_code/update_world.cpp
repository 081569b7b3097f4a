#include "support_code/update_world.h"

#include "support/files.h"
#include "support/process_state.h"
#include "support/text.h"
#include "support_code/zip_builder.h"

namespace quorvex::testing {
namespace {

constexpr std::size_t kFixedLogColumns = 4; // time, title, computer, user

const std::vector<AdoColumn>& AddressColumns() {
    static const std::vector<AdoColumn> columns = {{L"FT_Postcode"}, {L"FT_Address"}, {L"FT_Update"}};
    return columns;
}

const std::vector<AdoColumn>& PostZonColumns() {
    static const std::vector<AdoColumn> columns = {{L"PZ_Postcode"},
                                                   {L"PZ_IntroductionDate"},
                                                   {L"PZ_GridRefEast"},
                                                   {L"PZ_GridRefNorth"},
                                                   {L"PZ_County"},
                                                   {L"PZ_District"},
                                                   {L"PZ_Ward"},
                                                   {L"PZ_UserType"},
                                                   {L"PZ_GridStatus"},
                                                   {L"PZ_Country"},
                                                   {L"PZ_WardStatus"},
                                                   {L"PZ_NHS_Code"},
                                                   {L"PZ_NHS_Region"},
                                                   {L"PZ_Lat", ColumnType::Double},
                                                   {L"PZ_Long", ColumnType::Double},
                                                   {L"PZ_OSRef"},
                                                   {L"PZ_Update"}};
    return columns;
}

// A row whose every column says which row and column it is; the last one is the update column.
AdoRow RowFor(const std::vector<AdoColumn>& columns, const std::wstring& postcode, const std::wstring& update) {
    AdoRow row{postcode};
    for (std::size_t i = 1; i + 1 < columns.size(); ++i) {
        if (columns[i].type == ColumnType::Double) {
            row.emplace_back(static_cast<double>(i) + 0.25);
        } else {
            row.emplace_back(columns[i].name + L" of " + postcode + L" " + update);
        }
    }
    row.emplace_back(update);
    return row;
}

void AddRows(AdoFile& file, const std::wstring& table, const std::vector<AdoColumn>& columns,
             const std::vector<std::wstring>& postcodes, const std::wstring& update) {
    AdoTable& added = file.Add(table, columns);
    for (const std::wstring& postcode : postcodes) added.rows.push_back(RowFor(columns, postcode, update));
}

void AddVersion(AdoFile& file, const std::wstring& date) {
    AdoTable& version = file.Add(L"Version", {{L"ID", ColumnType::Long}, {L"Text", ColumnType::Text}});
    version.rows = {{1, L"Format 2"}, {2, date}};
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

AdoFile& UpdateWorld::AddFull(const std::wstring& date) {
    AdoFile& file = databases.AddFile(folder.File(L"PAF_FULL.dat"));
    AddRows(file, L"PAF_FULLAddress", AddressColumns(), {L"AB1 1AA", L"AB1 1AB", L"AB1 1AC"}, L"old");
    AddVersion(file, date);
    return file;
}

AdoFile& UpdateWorld::AddStreet(const std::wstring& date) {
    AdoFile& file = databases.AddFile(folder.File(L"PAF_THOURGHFARE.dat"));
    AddRows(file, L"PAF_StreetAddress", AddressColumns(), {L"AB1 1AA"}, L"old");
    AddVersion(file, date);
    return file;
}

AdoFile& UpdateWorld::AddPostZon(const std::wstring& date) {
    AdoFile& file = databases.AddFile(folder.File(L"PAF_POSTZON.dat"));
    AddRows(file, L"PAF_PostZon", PostZonColumns(), {L"AB1 1AA", L"AB1 1AB"}, L"old");
    AddVersion(file, date);
    return file;
}

void UpdateWorld::AddUnpacked(const std::wstring& name, wchar_t kind, const std::vector<std::wstring>& postcodes) {
    AdoFile file;
    const std::wstring date = name.substr(9, 8);
    if (kind == L'Z') {
        AddRows(file, L"PAF_PostZon", PostZonColumns(), postcodes, date);
    } else {
        AddRows(file, kind == L'T' ? L"PAF_StreetAddress" : L"PAF_FULLAddress", AddressColumns(), postcodes, date);
    }
    databases.files[support::UpperCase(folder.File(name))] = file;
}

void UpdateWorld::AddPackage(const std::wstring& name, const std::vector<std::wstring>& postcodes) {
    const std::wstring unpacked = name.substr(0, name.size() - 4) + L".dat";
    AddUnpacked(unpacked, name.at(7), postcodes);
    ZipBuilder zip;
    zip.Add(support::ToUtf8(unpacked), "in memory");
    support::WriteFileBytes(folder.File(name), zip.Bytes());
}

AdoTable& UpdateWorld::Table(const std::wstring& fileName, const std::wstring& table) {
    return databases.FileAt(folder.File(fileName)).tables.at(support::UpperCase(table));
}

std::wstring UpdateWorld::VersionOf(const std::wstring& fileName) {
    return std::get<std::wstring>(Table(fileName, L"Version").rows.at(1).at(1));
}

std::wstring UpdateWorld::UpdateOf(const std::wstring& fileName, const std::wstring& table, const std::wstring& key) {
    std::wstring found;
    for (const AdoRow& row : Table(fileName, table).rows) {
        if (std::get<std::wstring>(row.front()) != key) continue;
        found += (found.empty() ? L"" : L",") + std::get<std::wstring>(row.back());
    }
    return found;
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
