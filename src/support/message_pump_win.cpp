#include "support/message_pump_win.h"

#include <array>

namespace quorvex::support {
namespace {

// A window that never validates itself produces paint messages without end.
constexpr int kMessagesAtOnce = 1000;

HWND& CurrentDialog() {
    thread_local HWND dialog = nullptr;
    return dialog;
}

} // namespace

ModalDialogScope::ModalDialogScope(HWND dialog) : outer_(CurrentDialog()) {
    CurrentDialog() = dialog;
}

ModalDialogScope::~ModalDialogScope() {
    CurrentDialog() = outer_;
}

HWND ModalDialog() {
    return CurrentDialog();
}

PumpResult PumpOneMessage() {
    MSG message;
    if (!PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) return PumpResult::Empty;
    if (message.message == WM_QUIT) {
        PostQuitMessage(static_cast<int>(message.wParam));
        return PumpResult::Quit;
    }
    const HWND dialog = CurrentDialog();
    if (dialog == nullptr || !IsDialogMessageW(dialog, &message)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return PumpResult::Ran;
}

bool PumpPendingMessages() {
    PumpResult result = PumpResult::Ran;
    for (int n = 0; n < kMessagesAtOnce && result == PumpResult::Ran; ++n) result = PumpOneMessage();
    return result != PumpResult::Quit;
}

WaitResult WaitForEitherOrMessages(HANDLE first, HANDLE second, DWORD milliseconds) {
    const std::array<HANDLE, 2> handles = {first, second};
    constexpr DWORD kCount = 2;
    const DWORD result =
        MsgWaitForMultipleObjectsEx(kCount, handles.data(), milliseconds, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    switch (result) {
    case WAIT_OBJECT_0:
        return WaitResult::First;
    case WAIT_OBJECT_0 + 1:
        return WaitResult::Second;
    case WAIT_OBJECT_0 + kCount:
        return WaitResult::Messages;
    default:
        return WaitResult::TimedOut;
    }
}

} // namespace quorvex::support
