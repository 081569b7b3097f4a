#include "dialogs/guard_win.h"

#include "support/error.h"
#include "support/log.h"

namespace quorvex::dialogs {

void LogPendingError(const support::Platform& platform) noexcept {
    try {
        support::LogError(platform, support::CurrentError());
    } catch (...) { // no memory even for the text of the error
    }
}

} // namespace quorvex::dialogs
