#include "dialogs/guard_win.h"

#include "support/error.h"
#include "support/log.h"
#include "support/text.h"

#include <exception>

namespace quorvex::dialogs {

void LogPendingError(const support::Platform& platform) noexcept {
    try {
        throw;
    } catch (const support::Error& error) {
        support::LogError(platform, error);
    } catch (const std::exception& error) {
        support::LogError(platform, support::Error(support::kErrorInternal, support::FromUtf8(error.what())));
    } catch (...) {
        support::LogError(platform, support::Error(support::kErrorInternal, L"Unknown failure in a window"));
    }
}

} // namespace quorvex::dialogs
