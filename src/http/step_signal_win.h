#pragma once

#include <windows.h>

namespace quorvex::http {

// Tells the waiting thread that a step of a request is done. Most steps are done in less than a millisecond: a brief
// wait costs no kernel object, and the event that a wait with messages needs is made only when a step takes longer.
class StepSignal {
  public:
    StepSignal() = default;
    ~StepSignal();
    StepSignal(const StepSignal&) = delete;
    StepSignal& operator=(const StepSignal&) = delete;

    void Clear(); // before a step is started
    void Raise(); // from any thread
    bool Raised();
    // True when it was raised within the time.
    bool WaitBriefly(DWORD milliseconds);
    // Signalled when it is raised. It may also be left signalled by an earlier step: Raised() decides. Throws
    // support::Error.
    HANDLE Event();

  private:
    SRWLOCK lock_ = SRWLOCK_INIT; // guards all below
    CONDITION_VARIABLE changed_ = CONDITION_VARIABLE_INIT;
    bool raised_ = false;
    HANDLE event_ = nullptr;
};

} // namespace quorvex::http
