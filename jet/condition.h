#pragma once

#include "format/row_codec.h"
#include "jet/query.h"

namespace jet {

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

} // namespace jet
