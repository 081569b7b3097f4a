#pragma once

#include "jet/table.h"
#include "tables/allocator.h"

namespace jet {

/// Inserts, updates and deletes rows of one table, with their long values, index entries and counts. Each call must run
/// inside a statement, which must be rolled back if the call throws.
class TableWriter {
  public:
    TableWriter(std::shared_ptr<Pager> pager, Allocator& allocator, std::shared_ptr<const TableDef> def)
        : pager_(std::move(pager)), allocator_(&allocator), def_(std::move(def)) {}

    /// Columns without a value become NULL; an AutoNumber without one gets the next number.
    RowId Insert(std::span<const Assignment> values);
    /// The other columns keep their values.
    void Update(RowId id, std::span<const Assignment> values);
    void Delete(RowId id);

  private:
    using Keys = std::vector<std::optional<Bytes>>; ///< per index; nothing if the row has no entry in it
    using Cells = std::vector<std::optional<Bytes>>;

    std::vector<Value> IndexedValues(const Row& row) const;
    Keys MakeKeys(const std::vector<Value>& values) const;
    void CheckUnique(const Keys& keys, const Keys& oldKeys, RowId except) const;
    Cells MakeCells(std::vector<Value>& values, const std::vector<bool>& changed, const Row* old);
    std::vector<Value> NewValues(std::span<const Assignment> values, const Row* old, std::vector<bool>& changed);
    void Relocate(RowId id, const RowBody& old, ByteView row);
    void AssignAutoNumbers(std::vector<Value>& values, std::vector<bool>& changed);
    void AddEntry(std::size_t index, const Bytes& key, RowId id);
    void CountRow(int change);
    void FreeLongCell(const Row& row, std::size_t column);

    std::shared_ptr<Pager> pager_;
    Allocator* allocator_;
    std::shared_ptr<const TableDef> def_;
};

} // namespace jet
