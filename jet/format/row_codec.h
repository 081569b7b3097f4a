#pragma once

#include "format/table_def.h"

namespace jet {

/// The cells of a stored row. Checked on construction; the bytes must outlive it.
class RowView {
  public:
    /// Throws kCorrupt if the row contradicts its table's definition. `page` is for the message.
    RowView(const TableDef& def, ByteView row, PageNo page);
    /// A cell's stored bytes, or nothing for NULL. BOOLEAN cells are never NULL and have no bytes; use Flag.
    std::optional<ByteView> Cell(const Column& column) const;
    /// The value of a BOOLEAN column.
    bool Flag(const Column& column) const;

  private:
    bool MaskBit(std::size_t number) const;

    ByteView row_;
    PageNo page_;
    std::size_t columns_;
    std::size_t maskStart_;
    std::size_t variables_ = 0;
};

/// A cell's value; not for MEMO and OLE. Throws kCorrupt if the bytes do not fit the type.
Value DecodeCell(const Column& column, ByteView stored, PageNo page);

/// The stored bytes of a value in the column's type (see Coerce); not for MEMO, OLE and NULL. BOOLEAN gives one byte, 0
/// or 1. Throws kValueTooLong.
Bytes EncodeCell(const Column& column, const Value& value);

/// Bytes of a row in which every variable cell is empty.
std::size_t EmptyRowSize(const TableDef& def);

/// Lays out a row; `cells` by column position, nothing for NULL. Throws kValueTooLong if it does not fit on a page.
Bytes EncodeRow(const TableDef& def, const std::vector<std::optional<Bytes>>& cells);

/// `value` in the type that `column` stores (whole numbers into DOUBLE and the like). Throws kTypeMismatch.
Value Coerce(const Column& column, Value value);

} // namespace jet
