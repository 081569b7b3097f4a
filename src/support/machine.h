#pragma once

#include <string>

namespace quorvex::support {

// A moment of the local clock.
struct LocalTime {
    int year = 1900;
    int month = 1; // 1 to 12
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int weekday = 0; // 0 is Sunday
};

// The computer, its user and its clock. Texts are empty when the system does not tell. Nothing here throws.
class Machine {
  public:
    virtual ~Machine() = default;

    virtual std::wstring ComputerName() const = 0;
    virtual std::wstring UserName() const = 0;
    virtual LocalTime Now() const = 0;
    virtual void SleepMilliseconds(int milliseconds) const = 0;
    // Server and share (two backslashes, server, share) behind a mapped drive letter; empty for a local drive.
    virtual std::wstring DriveShareName(wchar_t driveLetter) const = 0;
    // Version of the installed data access layer.
    virtual std::wstring DataAccessVersion() const = 0;
    virtual std::wstring SystemVersion() const = 0;
};

} // namespace quorvex::support
