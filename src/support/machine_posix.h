#pragma once

#include "support/machine.h"

namespace quorvex::support {

// This computer, its user and its clock. There are no drive letters and no data access layer.
class PosixMachine final : public Machine {
  public:
    std::wstring ComputerName() const override;
    std::wstring UserName() const override;
    LocalTime Now() const override;
    void SleepMilliseconds(int milliseconds) const override;
    std::wstring DriveShareName(wchar_t) const override { return {}; }
    std::wstring DataAccessVersion() const override { return {}; }
    std::wstring SystemVersion() const override;
};

} // namespace quorvex::support
