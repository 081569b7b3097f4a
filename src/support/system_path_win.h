#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <type_traits>

namespace quorvex::support {

// The path as the system's wide calls take it: one too long for the classic calls gets its long form.
std::wstring SystemPath(std::wstring_view path);

// True if another handle forbids what was asked for.
inline bool IsSharingError(DWORD error) {
    return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION;
}

inline constexpr int kHeldRetries = 10;
inline constexpr DWORD kHeldMilliseconds = 25;

// True for the errors of a file that a scanner or an indexer holds for a moment, or whose deletion is pending.
inline bool IsHeldError(DWORD error) {
    return IsSharingError(error) || error == ERROR_ACCESS_DENIED || error == ERROR_USER_MAPPED_FILE ||
           error == ERROR_DELETE_PENDING;
}

// Repeats a call of the system (it returns a handle or BOOL and sets the last error) for about 250 ms while the file is
// held: a name that was just made, deleted or renamed often is. Returns what the last attempt returned.
template <typename Call>
auto RetryWhileHeld(Call call, bool (*held)(DWORD error) = IsHeldError) {
    for (int retries = 0;; ++retries) {
        const auto result = call();
        bool succeeded = false;
        if constexpr (std::is_same_v<decltype(call()), HANDLE>) {
            succeeded = result != INVALID_HANDLE_VALUE;
        } else {
            succeeded = result != FALSE;
        }
        if (succeeded || retries == kHeldRetries || !held(GetLastError())) return result;
        Sleep(kHeldMilliseconds);
    }
}

} // namespace quorvex::support
