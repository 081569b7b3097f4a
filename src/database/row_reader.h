#pragma once

#include "database/database.h"

#include <memory>
#include <optional>
#include <string>

namespace quorvex::database {

// One read-only query on one data file: opened, read from first to last row, closed. While it is open others may read
// the file and nobody may write it. Everything throws support::Error.
class RowReader {
  public:
    RowReader(DatabaseProvider& provider, const std::wstring& file, const std::wstring& query);
    ~RowReader(); // closes quietly what Close has not closed
    RowReader(const RowReader&) = delete;
    RowReader& operator=(const RowReader&) = delete;

    bool AtEnd() { return recordset_->AtEnd(); }
    void Next() { recordset_->MoveNext(); }
    // NULL is an empty text; numbers in their shortest form.
    std::wstring Text(const std::wstring& column);
    // Nothing for NULL and for a text that is no number.
    std::optional<double> Number(const std::wstring& column);
    void Close();

  private:
    std::unique_ptr<Connection> connection_;
    std::unique_ptr<Recordset> recordset_;
    bool open_ = false;
};

std::wstring ValueText(const Value& value);

} // namespace quorvex::database
