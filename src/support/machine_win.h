#pragma once

#include "support/machine.h"

#include <string>

namespace quorvex::support {

// Each is empty when the system does not tell. (GetComputerName and GetUserName are macros in the system's headers.)
std::wstring ComputerName(); // the machine's network name
std::wstring UserName();     // who is logged on
// Version of the data access layer, as the registry states it for this process's bitness.
std::wstring DataAccessVersion();
// Server and share (two backslashes, server, share) behind a mapped drive letter; empty for a local drive.
std::wstring DriveShareName(wchar_t driveLetter);

struct WindowsVersion {
    unsigned long major = 0;
    unsigned long minor = 0;
    unsigned long build = 0;
};
// The real one, whatever compatibility the host's manifest asks for.
WindowsVersion SystemVersionNumbers();
// "Windows 10.0 (build 19045), 64-bit"
std::wstring SystemVersion();

// This computer, its user and its clock.
class WindowsMachine final : public Machine {
  public:
    std::wstring ComputerName() const override { return support::ComputerName(); }
    std::wstring UserName() const override { return support::UserName(); }
    LocalTime Now() const override;
    void SleepMilliseconds(int milliseconds) const override;
    std::wstring DriveShareName(wchar_t driveLetter) const override { return support::DriveShareName(driveLetter); }
    std::wstring DataAccessVersion() const override { return support::DataAccessVersion(); }
    std::wstring SystemVersion() const override { return support::SystemVersion(); }
};

} // namespace quorvex::support
