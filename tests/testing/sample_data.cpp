#include "testing/sample_data.h"

#include "database/jet/jet_provider.h"
#include "database/row_reader.h"
#include "jet/check.h"
#include "localdata/data_file_names.h"
#include "localdata/substitution.h"
#include "support/files.h"
#include "testing/truth.h"

namespace quorvex::testing {
namespace {

void Copy(const std::wstring& from, const std::wstring& to) {
    std::filesystem::copy_file(support::ToPath(from), support::ToPath(to),
                               std::filesystem::copy_options::overwrite_existing);
}

constexpr wchar_t kPostZonColumns[] =
    L"PZ_IntroductionDate, PZ_GridRefEast, PZ_GridRefNorth, PZ_County, PZ_District, PZ_Ward, PZ_UserType, "
    L"PZ_GridStatus, PZ_Country, PZ_WardStatus, PZ_NHS_Code, PZ_NHS_Region, PZ_Lat, PZ_Long, PZ_OSRef, PZ_Update";

// Calls visit(reader) on every row.
template <typename Visitor>
void ForEachRow(const std::wstring& file, const std::wstring& table, Visitor&& visit) {
    database::JetProvider databases;
    database::RowReader rows(databases, file, L"SELECT * From " + table);
    for (; !rows.AtEnd(); rows.Next()) visit(rows);
    rows.Close();
}

void AddOnce(SampleRows& rows, const std::wstring& key, std::vector<std::wstring> values) {
    EXPECT_TRUE(rows.emplace(key, std::move(values)).second) << "twice: " << ::testing::PrintToString(key);
}

} // namespace

void CopySampleData(const std::wstring& folder) {
    for (const localdata::DataFile& file : localdata::kDataFiles) {
        Copy(DataFolder(L"sample") + L"\\" + file.fileName, folder + L"\\" + file.fileName);
    }
    Copy(DataFolder(L"sample") + L"\\" + localdata::kSubstitutionFile, folder + L"\\" + localdata::kSubstitutionFile);
}

void CopyPackage(const std::wstring& package, const std::wstring& folder) {
    Copy(DataFolder(L"sample\\updates") + L"\\" + package, folder + L"\\" + support::FileNameOf(package));
}

SampleRows TruthRows(const std::wstring& truthFile) {
    SampleRows rows;
    for (const TsvRow& row : ReadTsv(DataFolder(L"sample\\truth") + L"\\" + truthFile)) {
        std::vector<std::wstring> values(row.begin() + 1, row.end());
        for (std::wstring& value : values) {
            if (value == L"\\N") value.clear();
        }
        AddOnce(rows, row.at(0), std::move(values));
    }
    return rows;
}

SampleRows AddressRows(const std::wstring& file, const std::wstring& table) {
    static const localdata::SubstitutionTable substitution = localdata::LoadSubstitution(DataFolder(L"sample"));
    SampleRows rows;
    ForEachRow(file, table, [&rows](database::RowReader& row) {
        AddOnce(rows, row.Text(L"FT_Postcode"),
                {row.Text(L"FT_Update"), substitution.Unscramble(row.Text(L"FT_Address"))});
    });
    return rows;
}

SampleRows PostZonRows(const std::wstring& file) {
    const std::vector<std::wstring> columns = Items(kPostZonColumns);
    SampleRows rows;
    ForEachRow(file, L"PAF_PostZon", [&](database::RowReader& row) {
        std::vector<std::wstring> values;
        for (const std::wstring& column : columns) values.push_back(row.Text(column));
        AddOnce(rows, row.Text(L"PZ_Postcode"), std::move(values));
    });
    return rows;
}

std::vector<std::wstring> KeysInOrder(const std::wstring& file, const std::wstring& table, const std::wstring& column) {
    std::vector<std::wstring> keys;
    ForEachRow(file, table, [&](database::RowReader& row) { keys.push_back(row.Text(column)); });
    return keys;
}

std::wstring RecordOf(const object::Quorvex& object) {
    return object.PostZon_postcode + L"|" + object.Address_Id + L"|" + object.Address_Organisation + L"|" +
           object.Address_Line1 + L"|" + object.Address_Line2 + L"|" + object.Address_Line3 + L"|" +
           object.Address_Town + L"|" + object.Address_County + L"|" + object.Address_Postcode + L"|" +
           object.Address_Country + L"|" + object.Address_Deliverypointsuffix + L"|" + object.Address_NoHouseHolds +
           L"|" + object.Address_Smallorg + L"|" + object.Address_PoBox + L"|" + object.Address_Rawpostcode + L"|" +
           object.Address_Mailsort + L"|" + object.Address_Unique + L"|" + object.Address_UDPRN + L"|" +
           object.Address_Spare + L"|" + object.PostZon_IntroductionDate + L"|" + object.PostZon_Gridrefeast + L"|" +
           object.PostZon_Gridrefnorth + L"|" + object.PostZon_County + L"|" + object.PostZon_District + L"|" +
           object.PostZon_Ward + L"|" + object.PostZon_Usertype + L"|" + object.PostZon_Gridstatus + L"|" +
           object.PostZon_Country + L"|" + object.PostZon_Wardstatus + L"|" + object.PostZon_NHS_code + L"|" +
           object.PostZon_NHS_region + L"|" + object.PostZon_Latitude_wgs84 + L"|" + object.PostZon_Longitude_wgs84 +
           L"|" + object.PostZon_OSreference + L"|" + object.PostZon_DistanceToHomePostcode;
}

std::string IntegrityErrors(const std::wstring& file) {
    jet::Database database = jet::Database::Open(support::ToPath(file), u"lanternfox");
    return jet::ErrorsOf(jet::CheckIntegrity(database));
}

} // namespace quorvex::testing
