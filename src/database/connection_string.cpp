#include "database/connection_string.h"

#include <iterator>

namespace quorvex::database {
namespace {

constexpr wchar_t kSourceKey[] = L"Data Source=";
constexpr wchar_t kPasswordKey[] = L"Jet OLEDB:Database Password=";

} // namespace

std::wstring ConnectionString(const std::wstring& file) {
    return std::wstring(L"Provider=Microsoft.Jet.OLEDB.4.0;") + kSourceKey + file + L";" + kPasswordKey +
           kDatabasePassword;
}

// It ends where the password begins, so that a path may hold a semicolon.
std::wstring DataSource(const std::wstring& connectionString) {
    const std::size_t at = connectionString.find(kSourceKey);
    if (at == std::wstring::npos) return {};
    const std::size_t begin = at + std::size(kSourceKey) - 1;
    const std::size_t end = connectionString.rfind(std::wstring(L";") + kPasswordKey);
    if (end == std::wstring::npos || end < begin) return connectionString.substr(begin);
    return connectionString.substr(begin, end - begin);
}

std::wstring DatabasePassword(const std::wstring& connectionString) {
    const std::size_t at = connectionString.find(kPasswordKey);
    if (at == std::wstring::npos) return {};
    const std::size_t begin = at + std::size(kPasswordKey) - 1;
    return connectionString.substr(begin, connectionString.find(L';', begin) - begin);
}

} // namespace quorvex::database
