#pragma once

#include <windows.h>

#include <functional>

namespace quorvex::testing {

// Calls the action from the thread's message loop after some milliseconds, once.
class After {
  public:
    After(unsigned milliseconds, std::function<void()> action);
    ~After();
    After(const After&) = delete;
    After& operator=(const After&) = delete;

    bool Fired() const { return fired_; }

  private:
    static void CALLBACK OnTimer(HWND, UINT, UINT_PTR id, DWORD);

    std::function<void()> action_;
    UINT_PTR id_;
    bool fired_ = false;
};

} // namespace quorvex::testing
