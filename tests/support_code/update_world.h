#pragma once

#include "lookup/quorvex.h"
#include "support_code/memory_database.h"
#include "support_code/temp_folder.h"
#include "support_code/update_platform.h"

#include <string>
#include <vector>

namespace quorvex::testing {

// A data folder with small data files in memory, and packages for it.
class UpdateWorld {
  public:
    UpdateWorld();
    ~UpdateWorld();

    // Data files of a few records; the date is that of their version row.
    AdoFile& AddFull(const std::wstring& date);
    AdoFile& AddStreet(const std::wstring& date);
    AdoFile& AddPostZon(const std::wstring& date);
    // The unpacked form of a package, with these postcodes and the package's date in the update column.
    void AddUnpacked(const std::wstring& name, wchar_t kind, const std::vector<std::wstring>& postcodes);
    // A zip of that name in the folder that unpacks to a file under which the database in memory lies.
    void AddPackage(const std::wstring& name, const std::vector<std::wstring>& postcodes);

    AdoTable& Table(const std::wstring& fileName, const std::wstring& table);
    std::wstring VersionOf(const std::wstring& fileName);
    // The third column ("update") of the row with this key, all rows' values joined by commas when several have it.
    std::wstring UpdateOf(const std::wstring& fileName, const std::wstring& table, const std::wstring& key);

    bool HasFile(const std::wstring& name) const;
    // Message and extras of each line of the activity log, empty extras dropped, joined by bars.
    std::vector<std::wstring> ActivityLines() const;
    // From the operation on, joined by bars.
    std::vector<std::wstring> ErrorLines() const;
    std::vector<std::wstring> MessageTexts() const;

    TempFolder folder;
    MemoryDatabases databases;
    UpdatePlatform platform;
    lookup::Quorvex object{platform};
};

} // namespace quorvex::testing
