#include "http/step_signal_win.h"

#include "support/error.h"
#include "support/lock_win.h"

namespace quorvex::http {

StepSignal::~StepSignal() {
    if (event_ != nullptr) CloseHandle(event_);
}

void StepSignal::Clear() {
    const support::Locked locked(lock_);
    raised_ = false;
}

void StepSignal::Raise() {
    const support::Locked locked(lock_);
    raised_ = true;
    if (event_ != nullptr) SetEvent(event_);
    WakeConditionVariable(&changed_);
}

bool StepSignal::Raised() {
    const support::Locked locked(lock_);
    return raised_;
}

bool StepSignal::WaitBriefly(DWORD milliseconds) {
    const support::Locked locked(lock_);
    while (!raised_ && SleepConditionVariableSRW(&changed_, &lock_, milliseconds, 0)) {
    }
    return raised_;
}

HANDLE StepSignal::Event() {
    const support::Locked locked(lock_);
    if (event_ == nullptr) event_ = CreateEventW(nullptr, FALSE, raised_, nullptr);
    if (event_ == nullptr) throw support::Error(static_cast<long>(GetLastError()), L"Cannot create an event");
    return event_;
}

} // namespace quorvex::http
