#pragma once

#include "format/table_def.h"
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
    using Flags = std::vector<bool>;

    /// A row's values by column, NULL until set. Those that a caller gave are not copied.
    class RowValues {
      public:
        explicit RowValues(std::size_t columns) : own_(columns), values_(columns) {}
        const Value& operator[](std::size_t i) const { return values_[i] ? *values_[i] : own_[i]; }
        void Set(std::size_t i, Value value) {
            own_[i] = std::move(value);
            values_[i] = nullptr;
        }
        void Refer(std::size_t i, const Value& value) { values_[i] = &value; }
        std::size_t size() const { return own_.size(); }

      private:
        std::vector<Value> own_;
        std::vector<const Value*> values_; ///< null: an own one
    };

    RowValues IndexedValues(const Row& row) const;
    Keys MakeKeys(const RowValues& values, const RowValues* other = nullptr) const;
    std::optional<Bytes> MakeKey(const Index& index, const RowValues& values) const;
    void CheckUnique(const Keys& keys, RowId except) const;
    Cells MakeCells(const RowValues& values, const Flags& changed, const Row* old);
    RowValues NewValues(std::span<const Assignment> values, const RowValues* old, Flags& changed);
    void Relocate(RowId id, const RowBody& old, ByteView row);
    void AssignAutoNumbers(RowValues& values, Flags& changed);
    void AddEntry(std::size_t index, const Bytes& key, RowId id);
    void CountRow(int change);
    void FreeLongCell(const Row& row, std::size_t column);

    std::shared_ptr<Pager> pager_;
    Allocator* allocator_;
    std::shared_ptr<const TableDef> def_;
};

} // namespace jet
