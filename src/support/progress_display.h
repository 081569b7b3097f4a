#pragma once

#include <string>

namespace quorvex::support {

// A small window that says how far a long run is. Nothing here throws.
class ProgressDisplay {
  public:
    virtual ~ProgressDisplay() = default;

    // The first call shows the window; HideProgress removes it.
    virtual void ShowProgress(const std::wstring& caption, const std::wstring& text) = 0;
    virtual void HideProgress() = 0;
    // Lets pending window messages run once.
    virtual void PumpMessages() = 0;
};

} // namespace quorvex::support
