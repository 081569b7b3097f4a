#include "quorvex/program_platform.h"

#include "support/machine_win.h"

#include <windows.h>

namespace quorvex::cli {

std::wstring ProgramPlatform::ComputerName() const {
    return support::ComputerName();
}

std::wstring ProgramPlatform::UserName() const {
    return support::UserName();
}

support::LocalTime ProgramPlatform::Now() const {
    SYSTEMTIME time;
    GetLocalTime(&time);
    return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, time.wDayOfWeek};
}

std::wstring ProgramPlatform::DriveShareName(wchar_t driveLetter) const {
    return support::DriveShareName(driveLetter);
}

std::wstring ProgramPlatform::DataAccessVersion() const {
    return support::DataAccessVersion();
}

std::wstring ProgramPlatform::SystemVersion() const {
    return support::SystemVersion();
}

} // namespace quorvex::cli
