#pragma once

#include "format/data_page.h"
#include "format/row_codec.h"
#include "query.h"

#include <memory>

namespace jet {

/// A row's contents, copied out of its page; MEMO values are read when asked for.
class Row {
  public:
    Row() = default;
    Row(std::shared_ptr<Pager> pager, std::shared_ptr<const TableDef> def, RowId id, ByteView bytes, PageNo page);

    /// The value of the column at this position in the definition.
    Value Get(std::size_t column) const;
    RowId id() const { return id_; }
    /// The stored bytes of a cell; nothing for NULL.
    std::optional<ByteView> Stored(std::size_t column) const;
    bool IsFlagSet(std::size_t column) const;

  private:
    friend class Cursor;
    void Assign(RowId id, ByteView bytes, PageNo page);

    std::shared_ptr<Pager> pager_;
    std::shared_ptr<const TableDef> def_;
    RowId id_;
    Bytes bytes_;
    PageNo page_ = 0;
};

/// A condition tied to a table's column and checked for types.
class BoundCondition {
  public:
    /// Throws kNoSuchColumn, kTypeMismatch.
    BoundCondition(const TableDef& def, const Condition& condition);

    bool Holds(Pager& pager, const RowView& row, PageNo page) const;
    const Column& column() const { return *column_; }
    std::size_t position() const { return position_; }
    CompareOp op() const { return op_; }
    bool isText() const { return isText_; }
    const std::u16string& text() const { return text_; }
    double number() const { return number_; }

  private:
    const Column* column_;
    std::size_t position_;
    CompareOp op_;
    bool isText_;
    std::u16string text_;
    Bytes key_;
    double number_ = 0;
};

/// Runs over the rows that meet the conditions: in table order (ascending page, then slot) without conditions or when
/// no index fits, else in the order of the index used.
class Cursor {
  public:
    Cursor(std::shared_ptr<Pager> pager, std::shared_ptr<const TableDef> def, const std::vector<Condition>& conditions);

    /// Moves to the next row; false at the end.
    bool Next();
    /// The row moved to. Valid until the next move.
    const Row& Current() const { return row_; }
    /// Starts again before the first row, over the table as it is now.
    void Rewind();
    const TableDef& definition() const { return *def_; }
    bool usesIndex() const { return useIndex_; }

  private:
    bool NextByIndex();
    bool NextByScan();
    bool Take(RowId id, const RowBody& body);

    std::shared_ptr<Pager> pager_;
    std::shared_ptr<const TableDef> def_;
    std::vector<BoundCondition> conditions_;
    bool useIndex_ = false;
    std::vector<RowId> rows_;   ///< by index
    std::vector<PageNo> pages_; ///< by scan
    std::size_t place_ = 0;
    unsigned slot_ = 0;
    std::optional<DataPage> page_;
    Row row_;
};

/// The rows an index offers for the conditions, in index order, or nothing when no index fits. Every row that meets the
/// conditions is among them; not every one of them needs to meet all.
std::optional<std::vector<RowId>> PlanByIndex(Pager& pager, const TableDef& def,
                                              const std::vector<BoundCondition>& conditions);

} // namespace jet
