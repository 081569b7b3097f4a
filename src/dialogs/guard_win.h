#pragma once

#include "support/floating_point.h"
#include "support/platform.h"

namespace quorvex::dialogs {

// Writes the exception being handled to the error log. To be called in a catch block.
void LogPendingError(const support::Platform& platform) noexcept;

// Runs the body of a window procedure or timer: an exception would be lost, or end the process, outside. It ends in the
// error log; the window stays as it is.
template <typename Body>
void Guarded(const support::Platform& platform, Body body) noexcept {
    const support::DefaultArithmetic arithmetic;
    try {
        body();
    } catch (...) {
        LogPendingError(platform);
    }
}

} // namespace quorvex::dialogs
