#pragma once

#include "object/quorvex.h"
#include "testing/strict_databases.h"
#include "testing/table_files.h"
#include "testing/temp_folder.h"
#include "testing/update_platform.h"

#include "jet/database.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quorvex::testing {

// A data folder with small data files, and packages for it.
class UpdateWorld {
  public:
    using Spoil = std::function<void(FileData& data)>;

    UpdateWorld();
    ~UpdateWorld();

    // Data files of a few records, changed by "spoil" before they are written; the date is that of their version row.
    void AddFull(const std::wstring& date, const Spoil& spoil = {});
    void AddStreet(const std::wstring& date, const Spoil& spoil = {});
    void AddPostZon(const std::wstring& date, const Spoil& spoil = {});
    // The unpacked form of a package, with these postcodes and the package's date in the update column; the kind is
    // read from its name.
    void AddUnpacked(const std::wstring& name, const std::vector<std::wstring>& postcodes, const Spoil& spoil = {});
    // A zip of that name in the folder that holds the unpacked form.
    void AddPackage(const std::wstring& name, const std::vector<std::wstring>& postcodes, const Spoil& spoil = {});

    std::vector<std::vector<database::Value>> Rows(const std::wstring& fileName, const std::wstring& table) const;
    std::wstring VersionOf(const std::wstring& fileName) const;
    // The last column ("update") of the row with this key, all rows' values joined by commas when several have it.
    std::wstring UpdateOf(const std::wstring& fileName, const std::wstring& table, const std::wstring& key) const;
    // Another program that keeps the file to itself until the result is gone.
    jet::Database Hold(const std::wstring& fileName);

    bool HasFile(const std::wstring& name) const;
    // Message and extras of each line of the activity log, empty extras dropped, joined by bars.
    std::vector<std::wstring> ActivityLines() const;
    // From the operation on, joined by bars.
    std::vector<std::wstring> ErrorLines() const;
    std::vector<std::wstring> MessageTexts() const;

    TempFolder folder;
    StrictDatabases databases;
    UpdatePlatform platform;
    object::Quorvex object{platform, platform};

  private:
    void AddData(const wchar_t* fileName, FileData data, const std::wstring& date, const Spoil& spoil);
};

} // namespace quorvex::testing
