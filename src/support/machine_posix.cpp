#include "support/machine_posix.h"

#include "support/text.h"

#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <ctime>
#include <thread>

namespace quorvex::support {

std::wstring PosixMachine::ComputerName() const {
    utsname names{};
    return uname(&names) == 0 ? FromUtf8(names.nodename) : std::wstring();
}

std::wstring PosixMachine::UserName() const {
    // Several threads log at a time: the plain call has one answer for all of them.
    passwd entry{};
    passwd* user = nullptr;
    std::array<char, 4096> texts{};
    getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &user);
    return user == nullptr ? std::wstring() : FromUtf8(user->pw_name);
}

LocalTime PosixMachine::Now() const {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
            local.tm_min,         local.tm_sec,     local.tm_wday};
}

void PosixMachine::SleepMilliseconds(int milliseconds) const {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

std::wstring PosixMachine::SystemVersion() const {
    utsname names{};
    return uname(&names) == 0 ? FromUtf8(std::string(names.sysname) + " " + names.release) : std::wstring();
}

} // namespace quorvex::support
