#include "database/row_reader.h"

#include "database/connection_string.h"
#include "support/error.h"
#include "support/text.h"

namespace quorvex::database {
namespace {

struct TextOf {
    std::wstring operator()(std::monostate) const { return {}; }
    std::wstring operator()(bool value) const { return value ? L"True" : L"False"; }
    std::wstring operator()(std::int32_t value) const { return std::to_wstring(value); }
    std::wstring operator()(double value) const { return support::NumberText(value); }
    std::wstring operator()(const std::wstring& value) const { return value; }
    std::wstring operator()(const std::vector<std::uint8_t>&) const { return {}; }
};

} // namespace

std::wstring ValueText(const Value& value) {
    return std::visit(TextOf{}, value);
}

RowReader::RowReader(DatabaseProvider& provider, const std::wstring& file, const std::wstring& query)
    : connection_(provider.CreateConnection()) {
    connection_->SetMode(kModeShareDenyWrite);
    recordset_ = provider.CreateRecordset();
    connection_->Open(ConnectionString(file), kDatabaseUser, L"");
    recordset_->SetCursorType(CursorType::Static);
    recordset_->SetLockType(LockType::ReadOnly);
    recordset_->Open(query, *connection_);
    open_ = true;
}

RowReader::~RowReader() {
    try {
        Close();
    } catch (const support::Error&) { // the rows have been read; the objects go in any case
    }
}

std::wstring RowReader::Text(const std::wstring& column) {
    return ValueText(recordset_->Field(column));
}

std::optional<double> RowReader::Number(const std::wstring& column) {
    const Value value = recordset_->Field(column);
    if (const auto* number = std::get_if<double>(&value)) return *number;
    const std::wstring text = ValueText(value);
    if (!support::IsNumber(text)) return std::nullopt;
    return support::ParseNumber(text);
}

void RowReader::Close() {
    if (!open_) return;
    open_ = false;
    recordset_->Close();
    connection_->Close();
}

} // namespace quorvex::database
