#pragma once

#include "testing/wait.h"

#include <windows.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace quorvex::testing {

// Drives real windows from outside: the test's thread plays the user, a thread of its own plays the host.

// A host's user-interface thread that runs one call. Joined at the end; a call that does not end fails the whole
// program through the watchdog, with the name of the test.
class HostThread {
  public:
    explicit HostThread(std::function<void()> call);
    ~HostThread();
    HostThread(const HostThread&) = delete;
    HostThread& operator=(const HostThread&) = delete;

    bool Done() const { return done_; }
    bool WaitDone() const {
        return WaitUntil([this] { return Done(); });
    }
    DWORD Id() const { return id_; }

  private:
    std::atomic<bool> done_{false};
    std::atomic<DWORD> id_{0};
    std::thread thread_;
};

// A host's own message loop: runs while the condition holds.
void PumpWhile(const std::function<bool()>& condition);

// A host's own window with a button that has the keyboard, for the thread that makes it.
struct HostWindow {
    explicit HostWindow(DWORD extendedStyle = 0);
    ~HostWindow();
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    HWND window;
    HWND button;
};

// A visible top-level window of this process with the caption; null when none comes up in time.
HWND WaitForWindow(const std::wstring& caption);
bool WaitGone(const std::wstring& caption);
HWND FindVisibleWindow(const std::wstring& caption);

std::wstring TextOf(HWND window);
bool IsShown(HWND window);
std::vector<HWND> ShownChildren(HWND window);

// What the user does. Clicks are posted: what they open may be modal.
void Click(HWND button);
void ClickId(HWND dialog, int id);
void Type(HWND edit, const std::wstring& text);        // replaces the text
void TypeKeys(HWND control, const std::wstring& keys); // key by key
void PressKey(HWND control, int virtualKey);
void MouseClick(HWND control, POINT client, int times);

// Makes a window the one that has the keyboard on its thread, as a user does by clicking into it.
void FocusOn(HWND control);
HWND FocusOf(HWND window);

} // namespace quorvex::testing
