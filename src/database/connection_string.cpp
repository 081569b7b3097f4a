#include "database/connection_string.h"

namespace quorvex::database {
namespace {

// The same for all data and update files: part of their format, not a secret of the user.
constexpr wchar_t kDatabasePassword[] = L"lanternfox";

} // namespace

std::wstring ConnectionString(const std::wstring& file) {
    return std::wstring(L"Provider=Microsoft.Jet.OLEDB.4.0;") + L"Data Source=" + file + L";" +
           L"Jet OLEDB:Database Password=" + kDatabasePassword;
}

} // namespace quorvex::database
