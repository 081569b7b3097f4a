#pragma once

#include "localdata/database.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::testing {

// What the data access stand-in answers from: database files that live in memory.

enum class ColumnType { Text, Long, Double };

struct AdoColumn {
    std::wstring name;
    ColumnType type = ColumnType::Text;
};

using AdoRow = std::vector<localdata::Value>;

struct AdoTable {
    std::vector<AdoColumn> columns;
    std::vector<AdoRow> rows;

    // Case ignored, as Jet does it.
    std::optional<std::size_t> ColumnAt(const std::wstring& name) const;
};

struct AdoFile {
    std::wstring password = L"lanternfox";
    std::map<std::wstring, AdoTable> tables; // by upper-cased name
    bool lockedByAnother = false;            // a program elsewhere has it open exclusively
    int writesUntilFull = -1;                // further rows written before the disk is full; below 0: no limit

    AdoTable& Add(const std::wstring& name, std::vector<AdoColumn> columns);
};

// By upper-cased path, as the connection string names it.
using AdoFiles = std::map<std::wstring, AdoFile>;

// The three data files of the sample folder, as if they lay in that folder, made from the rows of its truth tables.
AdoFiles SampleFiles();

// A refusal in ADO's own number and words.
struct AdoRefusal {
    long number;
    std::wstring description;
};

// Rows of one query. Knows the query forms in use and refuses everything else as the provider does.
struct AdoSelection {
    AdoTable* table = nullptr;
    std::vector<std::size_t> rows;
};
AdoSelection Select(AdoFile& file, const std::wstring& query);

// "[Column]='text'" or "[Column]=number" on one row.
struct AdoCriterion {
    std::size_t column = 0;
    std::optional<std::wstring> text;
    double number = 0;

    bool Matches(const AdoRow& row) const;
};
AdoCriterion ParseCriterion(const AdoTable& table, const std::wstring& criterion);

} // namespace quorvex::testing
