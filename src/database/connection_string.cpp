#include "database/connection_string.h"

namespace quorvex::database {

std::wstring ConnectionString(const std::wstring& file) {
    return std::wstring(L"Provider=Microsoft.Jet.OLEDB.4.0;") + L"Data Source=" + file + L";" +
           L"Jet OLEDB:Database Password=" + kDatabasePassword;
}

} // namespace quorvex::database
