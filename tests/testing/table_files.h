#pragma once

#include "database/database.h"
#include "jet/table.h"

#include <map>
#include <string>
#include <vector>

namespace quorvex::testing {

// Small database files of a test's own making, as plain values.
struct TableData {
    std::vector<jet::ColumnSpec> columns;
    std::vector<std::vector<database::Value>> rows;
};
struct FileData {
    std::wstring password = L"lanternfox";
    std::map<std::wstring, TableData> tables;
};

// Writes a Jet 4 file in place of whatever stands there. Each table gets an index over its first column that takes
// duplicates.
void WriteJetFile(const std::wstring& path, const FileData& data);
std::vector<std::vector<database::Value>> ReadJetRows(const std::wstring& path, const std::wstring& table);

} // namespace quorvex::testing
