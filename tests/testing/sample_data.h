#pragma once

#include "object/quorvex.h"

#include <map>
#include <string>
#include <vector>

namespace quorvex::testing {

// The sample data on disk: copied for tests that change it, and read back row by row.

// By key. Address tables: update column and plain packed text (NULL shown empty). PostZon: all columns behind the key.
using SampleRows = std::map<std::wstring, std::vector<std::wstring>>;

// The three data files and the substitution table.
void CopySampleData(const std::wstring& folder);
// A package of the sample's "updates" folder, such as "UPDATE_F_20260228.zip" or "bad\\UPDATE_F_20260402.zip".
void CopyPackage(const std::wstring& package, const std::wstring& folder);

// Rows of a truth table ("rows_full.tsv"), and of an address table or the PostZon table in a data file.
SampleRows TruthRows(const std::wstring& truthFile);
SampleRows AddressRows(const std::wstring& file, const std::wstring& table);
SampleRows PostZonRows(const std::wstring& file);
// Keys in the order in which the table holds them.
std::vector<std::wstring> KeysInOrder(const std::wstring& file, const std::wstring& table, const std::wstring& column);

// The address and PostZon properties that the last lookup left, joined by bars.
std::wstring RecordOf(const object::Quorvex& object);

// What the integrity checker has against a data file; empty for a sound one.
std::string IntegrityErrors(const std::wstring& file);

} // namespace quorvex::testing
