#pragma once

#include <windows.h>

namespace quorvex::support {

// The window message queue of the calling thread, run while the component waits. WM_QUIT is never swallowed: it is
// posted again for the host's own loop and reported.

// The dialog that is modal on this thread: while it is set, its Tab, Enter and Esc keys work during a wait, too. Nests.
class ModalDialogScope {
  public:
    explicit ModalDialogScope(HWND dialog);
    ~ModalDialogScope();
    ModalDialogScope(const ModalDialogScope&) = delete;
    ModalDialogScope& operator=(const ModalDialogScope&) = delete;

  private:
    HWND outer_;
};
HWND ModalDialog();

enum class PumpResult { Empty, Ran, Quit };
// Takes one message from the queue and has it handled.
PumpResult PumpOneMessage();
// Lets pending messages run once; false when the thread was told to quit. Ends also when messages keep coming.
bool PumpPendingMessages();

enum class WaitResult { First, Second, Messages, TimedOut };
// Sleeps until one of two objects is signalled, a message is there, or the time is over.
WaitResult WaitForEitherOrMessages(HANDLE first, HANDLE second, DWORD milliseconds);

} // namespace quorvex::support
