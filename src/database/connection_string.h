#pragma once

#include <string>

namespace quorvex::database {

// The same for all data and update files: part of their format, not a secret of the user.
inline constexpr wchar_t kDatabasePassword[] = L"lanternfox";

// User name and password argument with which every data file is opened; the file's own password is part of the string.
inline constexpr wchar_t kDatabaseUser[] = L"admin";

// The connection string of a data or update file, given by its full path, used as it stands.
std::wstring ConnectionString(const std::wstring& file);

// The file and the password that a connection string names; empty if it names none.
std::wstring DataSource(const std::wstring& connectionString);
std::wstring DatabasePassword(const std::wstring& connectionString);

} // namespace quorvex::database
