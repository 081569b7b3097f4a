#include "update/update_applier.h"

#include "database/connection_string.h"
#include "localdata/data_file_names.h"
#include "localdata/package_date.h"
#include "support/error.h"
#include "support/log.h"
#include "support/process_state.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::update {
namespace {

// The columns in the order in which they are written; the first is the key.
using Columns = std::vector<std::wstring>;

const Columns& AddressColumns() {
    static const Columns columns = {L"FT_PostCode", L"FT_Address", L"FT_Update"};
    return columns;
}

const Columns& PostZonColumns() {
    static const Columns columns = {L"PZ_Postcode",    L"PZ_IntroductionDate",
                                    L"PZ_GridRefEast", L"PZ_GridRefNorth",
                                    L"PZ_County",      L"PZ_District",
                                    L"PZ_Ward",        L"PZ_UserType",
                                    L"PZ_GridStatus",  L"PZ_Country",
                                    L"PZ_WardStatus",  L"PZ_NHS_Code",
                                    L"PZ_NHS_Region",  L"PZ_Long",
                                    L"PZ_Lat",         L"PZ_OSRef",
                                    L"PZ_Update"};
    return columns;
}

// The stage's name in parts: it is set for every step of every record.
template <typename... Parts>
void SetDataStage(const Parts&... parts) {
    constexpr std::wstring_view kProcedure = L"Update:UpdateData:";
    std::wstring operation;
    operation.reserve((kProcedure.size() + ... + std::wstring_view(parts).size()));
    operation = kProcedure;
    (operation.append(parts), ...);
    support::Process().currentOperation = std::move(operation);
}

const std::wstring& KeyOf(const database::Value& value) {
    const auto* key = std::get_if<std::wstring>(&value);
    if (key == nullptr) throw support::Error(support::kErrorTypeMismatch, L"A record of the package has no postcode");
    return *key;
}

// Moves to the first record of that postcode; false if there is none.
bool FindRecord(database::Recordset& records, const std::wstring& column, const std::wstring& key,
                std::wstring_view operation) {
    SetDataStage(operation, L":Stage 1");
    if (records.AtBeginning() && records.AtEnd()) return false;
    SetDataStage(operation, L":Stage 2");
    records.MoveFirst();
    SetDataStage(operation, L":Stage 3");
    std::wstring criterion;
    criterion.reserve(column.size() + key.size() + 5);
    records.Find(criterion.append(L"[").append(column).append(L"]='").append(key).append(L"'"));
    return !records.AtEnd();
}

void AddOrUpdateRecord(database::Recordset& update, database::Recordset& target, const Columns& columns,
                       std::wstring_view operation) {
    // Read all values first: a package record that lacks a column must not leave a half-written record.
    std::vector<database::Value> values;
    values.reserve(columns.size());
    for (const std::wstring& column : columns) values.push_back(update.Field(column));
    const std::wstring& key = KeyOf(values.front());
    if (FindRecord(target, columns.front(), key, operation)) {
        SetDataStage(operation, L":Stage 5 UPDATE ", key);
        target.Update(); // Intended: nothing is pending yet; it starts the record's edit afresh
    } else {
        SetDataStage(operation, L":Stage 4 ADD ", key);
        target.AddNew();
    }
    for (std::size_t i = 0; i < columns.size(); ++i) target.SetField(columns[i], values[i]);
    target.UpdateBatch();
}

// Two files with one record set on each.
struct OpenPackage {
    explicit OpenPackage(database::DatabaseProvider& databases)
        : update(databases.CreateConnection()), target(databases.CreateConnection()),
          updateRecords(databases.CreateRecordset()), targetRecords(databases.CreateRecordset()) {}

    // Record sets go before their connections.
    std::unique_ptr<database::Connection> update;
    std::unique_ptr<database::Connection> target;
    std::unique_ptr<database::Recordset> updateRecords;
    std::unique_ptr<database::Recordset> targetRecords;
};

void OpenForWriting(database::Recordset& records, const std::wstring& query, database::Connection& connection) {
    records.SetCursorType(database::CursorType::Dynamic);
    records.SetLockType(database::LockType::Optimistic);
    records.Open(query, connection);
}

long CountRecords(database::Recordset& records) {
    if (records.AtBeginning() && records.AtEnd())
        throw support::Error(support::kErrorNoRecord, L"The package holds no records");
    records.MoveFirst();
    records.MoveLast();
    const long count = records.RecordCount();
    records.MoveFirst();
    return count;
}

void MergeRecords(Progress& progress, OpenPackage& package, wchar_t kind, long count) {
    const std::wstring ofAll = L" of " + std::to_wstring(count);
    for (long number = 1; !package.updateRecords->AtEnd(); ++number) {
        progress.SetText(L"Processing record:" + std::to_wstring(number) + ofAll);
        if (kind == L'Z') {
            AddOrUpdateRecordPostZon(*package.updateRecords, *package.targetRecords);
        } else {
            AddOrUpdateRecordAddress(*package.updateRecords, *package.targetRecords);
        }
        package.updateRecords->MoveNext();
    }
}

void StampVersion(database::DatabaseProvider& databases, database::Connection& target,
                  const std::wstring& packageDate) {
    const std::unique_ptr<database::Recordset> version = databases.CreateRecordset();
    OpenForWriting(*version, L"SELECT * From [Version]", target);
    const bool empty = version->AtBeginning() && version->AtEnd();
    if (!empty) {
        version->MoveFirst();
        version->Find(L"[ID]=2");
    }
    if (empty || version->AtEnd()) {
        throw support::Error(support::kErrorNoRecord, L"The data file's version table has no row 2");
    }
    version->Update();
    version->SetField(L"Text", packageDate);
    version->UpdateBatch();
    version->Close();
}

} // namespace

void AddOrUpdateRecordAddress(database::Recordset& updateRecords, database::Recordset& targetRecords) {
    AddOrUpdateRecord(updateRecords, targetRecords, AddressColumns(), L"AddOrUpdateRecordAddress");
}

void AddOrUpdateRecordPostZon(database::Recordset& updateRecords, database::Recordset& targetRecords) {
    AddOrUpdateRecord(updateRecords, targetRecords, PostZonColumns(), L"AddOrUpdateRecordPostZon");
}

void UpdateData(const object::Quorvex& object, Progress& progress, const std::wstring& dataFolder,
                const std::wstring& updateFile, wchar_t kind, const std::wstring& packageDate, long& recordCount) {
    recordCount = 0;
    SetDataStage(L"Stage 1");
    progress.SetText(L"Opening data files");
    const localdata::DataFile* const file = localdata::FindDataFile(kind);
    if (file == nullptr) throw support::Error(support::kErrorTypeMismatch, L"There is no data of this kind");
    // An invalid stamp would compare later than every package to come and end all updates.
    if (!localdata::IsPackageDate(packageDate)) {
        throw support::Error(support::kErrorTypeMismatch, L"\"" + packageDate + L"\" is not a date");
    }
    const std::wstring query = std::wstring(L"SELECT * From ") + file->table;
    SetDataStage(L"Stage 2 creating ADO, is MDAC 2.8 or better loaded?");
    database::DatabaseProvider& databases = object.databases;
    OpenPackage package(databases);
    SetDataStage(L"Stage 3 Opening update file with ADO");
    package.update->Open(database::ConnectionString(updateFile), database::kDatabaseUser, {});
    SetDataStage(L"Stage 4 Opening data file to update");
    package.target->Open(database::ConnectionString(localdata::DataFilePath(dataFolder, *file)),
                         database::kDatabaseUser, {});
    SetDataStage(L"Stage 5");
    package.updateRecords->SetCursorType(database::CursorType::Static);
    package.updateRecords->SetLockType(database::LockType::ReadOnly);
    package.updateRecords->Open(query, *package.update);
    OpenForWriting(*package.targetRecords, query, *package.target);
    recordCount = CountRecords(*package.updateRecords);
    support::LogActivity(object.platform, L"Data files contains " + std::to_wstring(recordCount) + L" records");
    MergeRecords(progress, package, kind, recordCount);
    SetDataStage(L"Stage 6");
    package.updateRecords->Close();
    package.targetRecords->Close();
    SetDataStage(L"Stage 7 Updating the version date");
    StampVersion(databases, *package.target, packageDate);
    SetDataStage(L"Stage 8");
    package.update->Close();
    package.target->Close();
}

} // namespace quorvex::update
