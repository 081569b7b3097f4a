#pragma once

#include "support/message_pump_win.h"

#include <windows.h>

#include <vector>

namespace quorvex::dialogs {

// The window of the host that a window of ours belongs to: the thread's active window, else the process's foreground
// window when it answers. Null when there is none; windows then stand on their own.
HWND HostWindow();

// The part of the host's monitor, or of the one with the pointer, that no task bar covers.
RECT WorkArea(HWND host);

// Where a window of this size goes: centred on the host's window, or on the working area of the monitor in use, and
// inside that area as far as it fits.
POINT CentredPosition(HWND host, SIZE size);

// Brings a window to the front without leaving it above all others, unless its owner is.
void BringToFront(HWND window);

// Ends the wait of the message loop below, so that it looks at its flag: what another program sends is handled inside
// that wait.
void WakeMessageLoop();

// Drops what the mouse does until its buttons are up: the end of a click that closes a window is not for the window
// underneath.
void FinishMouseClick();

// While it lives, the other windows of the thread and the host's window take no input. What was disabled before stays
// so.
class ModalSession {
  public:
    ModalSession(HWND dialog, HWND host);
    ~ModalSession();
    ModalSession(const ModalSession&) = delete;
    ModalSession& operator=(const ModalSession&) = delete;

    // Runs the thread's messages until done. False when the thread was told to quit; that is passed on to the host's
    // own loop.
    bool Run(const bool& done);
    // Gives the host its windows back; to be called before the dialog is hidden, otherwise another program would come
    // to front.
    void Release();
    // Puts the keyboard back to where it was.
    void RestoreFocus();

  private:
    HWND dialog_;
    HWND host_;
    HWND focus_;
    std::vector<HWND> disabled_;
    support::ModalDialogScope keys_;
};

} // namespace quorvex::dialogs
