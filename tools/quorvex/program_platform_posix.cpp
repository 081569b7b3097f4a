#include "quorvex/program_platform.h"

#include "support/text.h"

#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <ctime>

namespace quorvex::cli {

std::wstring ProgramPlatform::ComputerName() const {
    utsname names{};
    return uname(&names) == 0 ? support::FromUtf8(names.nodename) : std::wstring();
}

std::wstring ProgramPlatform::UserName() const {
    const passwd* const user = getpwuid(getuid());
    return user == nullptr ? std::wstring() : support::FromUtf8(user->pw_name);
}

support::LocalTime ProgramPlatform::Now() const {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
            local.tm_min,         local.tm_sec,     local.tm_wday};
}

std::wstring ProgramPlatform::DriveShareName(wchar_t) const {
    return {};
}

std::wstring ProgramPlatform::DataAccessVersion() const {
    return {};
}

std::wstring ProgramPlatform::SystemVersion() const {
    utsname names{};
    if (uname(&names) != 0) return {};
    return support::FromUtf8(std::string(names.sysname) + " " + names.release);
}

} // namespace quorvex::cli
