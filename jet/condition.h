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
    bool isText() const { return std::holds_alternative<std::u16string>(literal_); }
    /// A text or a number.
    const Value& literal() const { return literal_; }
    double number() const { return std::get<double>(literal_); }

  private:
    const Column* column_;
    std::size_t position_;
    CompareOp op_;
    Value literal_;
    Bytes key_; ///< of a text
};

} // namespace jet
