#pragma once

#include <windows.h>

namespace quorvex::dialogs {

// The module (DLL, or program when linked statically) that holds this code and its resources.
HINSTANCE OwnModule();

// While it lives, windows made by this thread get the themed controls that the module's manifest (resource 2) asks for,
// whatever the host uses. Without such a manifest nothing changes.
class ActivationContext {
  public:
    ActivationContext();
    ~ActivationContext();
    ActivationContext(const ActivationContext&) = delete;
    ActivationContext& operator=(const ActivationContext&) = delete;

  private:
    HANDLE context_;
    ULONG_PTR cookie_ = 0;
    bool active_ = false;
};

// False in a service or web back end whose window station nobody sees: a window shown there would wait for ever.
bool UserCanSeeWindows();

} // namespace quorvex::dialogs
