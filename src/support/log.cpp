#include "support/log.h"

#include "support/files.h"
#include "support/process_state.h"
#include "support/text.h"

#include <array>

namespace quorvex::support {
namespace {

constexpr int kRetries = 30;
constexpr int kRetryMilliseconds = 2;
constexpr std::size_t kTitleWidth = 20;

wchar_t Digit(int number) {
    return static_cast<wchar_t>(L'0' + number % 10);
}

// "dd/mm/yyyy hh:nn:ss", a blank, the English three-letter day, whatever the user's locale.
std::wstring TimeText(const LocalTime& time) {
    static constexpr std::array<const wchar_t*, 7> kDays = {L"Sun", L"Mon", L"Tue", L"Wed", L"Thu", L"Fri", L"Sat"};
    const auto two = [](int number) { return std::wstring{Digit(number / 10), Digit(number)}; };
    return two(time.day) + L"/" + two(time.month) + L"/" + two(time.year / 100) + two(time.year) + L" " +
           two(time.hour) + L":" + two(time.minute) + L":" + two(time.second) + L" " +
           kDays[static_cast<std::size_t>(time.weekday) % kDays.size()];
}

// An extra may come from outside; a tab or line end in it would break the layout of the line.
std::wstring Column(std::wstring_view text) {
    std::wstring column(text);
    for (wchar_t& c : column) {
        if (c < 32) c = L' ';
    }
    return column;
}

std::wstring LineStart(const Platform& platform) {
    const std::wstring user = platform.logUserName.empty() ? platform.machine.UserName() : platform.logUserName;
    return TimeText(platform.machine.Now()) + L"\t" +
           PadRight(Column(Process().messageTitle.Get()), kTitleWidth, L' ') + L"\t" +
           Column(platform.machine.ComputerName()) + L"\t" + Column(user);
}

std::wstring LogFolder() {
    const std::wstring folder = Process().dataPath;
    return folder.empty() ? UserLogFolder() : folder;
}

// Retries wait for another process that writes the same log. A folder that could not be written last time gets one
// attempt: a host that may not write there would otherwise lose half a second with each line.
void AppendLine(const Platform& platform, const std::wstring& baseName, const std::wstring& line) {
    const std::wstring folder = LogFolder();
    const std::wstring file = folder + L"\\" + baseName + L"1.log";
    const std::string bytes = ToUtf8(line) + "\r\n";
    const bool known = Process().unwritableLogs == folder;
    const int retries = known ? 0 : kRetries;
    for (int failures = 0; failures <= retries; ++failures) {
        if (failures > 0) platform.machine.SleepMilliseconds(kRetryMilliseconds);
        if (!RotateLog(folder, baseName, kLogRotationBytes) || !FileHold(file, true).Append(bytes)) continue;
        if (known) Process().unwritableLogs = L"";
        return;
    }
    Process().unwritableLogs = folder;
}

} // namespace

bool RotateLog(const std::wstring& folder, const std::wstring& baseName, std::int32_t maxBytes) {
    const auto generation = [&](int n) { return folder + L"\\" + baseName + std::to_wstring(n) + L".log"; };
    if (FileSize(generation(1)) <= maxBytes) return true;
    // Another process may be rotating the same log: only who holds the current file rotates, and only if it is still
    // too large.
    const FileHold hold(generation(1), false);
    if (!hold) return false;
    if (FileSize(generation(1)) <= maxBytes) return true;
    const std::wstring scratch = folder + L"\\Temp.log";
    if (FileExists(scratch)) {
        const FileHold left(scratch, false);
        if (!left) return false; // the other log is being rotated through it
        DeleteFileQuietly(scratch);
    }
    // Out of the way first, so that nobody appends to it while the older generations move.
    if (!RenameFileQuietly(generation(1), scratch)) return false;
    if (FileExists(generation(5))) DeleteFileQuietly(generation(5));
    for (int n = 4; n >= 2; --n) {
        if (FileExists(generation(n))) RenameFileQuietly(generation(n), generation(n + 1));
    }
    if (FileExists(scratch)) RenameFileQuietly(scratch, generation(2));
    return true;
}

void LogToFile(const Platform& platform, const std::wstring& baseName, const std::wstring& message,
               std::initializer_list<std::wstring> extras) noexcept {
    try {
        std::wstring line = LineStart(platform) + L"\t" + CleanLogText(message);
        std::size_t written = 0;
        for (const std::wstring& extra : extras) {
            if (written++ < kLogExtras) line += L"\t" + Column(extra);
        }
        for (; written < kLogExtras; ++written) line += L"\t";
        AppendLine(platform, baseName, line);
    } catch (...) { // a log never disturbs its caller
    }
}

void LogActivity(const Platform& platform, const std::wstring& message,
                 std::initializer_list<std::wstring> extras) noexcept {
    LogToFile(platform, L"Activity", message, extras);
}

void LogError(const Platform& platform, const Error& error, const std::wstring& message,
              std::initializer_list<std::wstring> values) noexcept {
    try {
        std::wstring line = LineStart(platform) + L"\t" + Column(Process().currentOperation.Get());
        const std::wstring cleaned = CleanLogText(message);
        if (cleaned.empty()) {
            // The apostrophe has no partner: intended, readers of these logs know the form.
            line += L"\tError:\t" + std::to_wstring(error.Number()) + L"\t" + Column(error.Description()) + L"'";
        } else {
            line += L"\tMessage:\t" + cleaned;
        }
        std::size_t written = 0;
        for (const std::wstring& value : values) {
            if (written++ < kErrorLogExtras) line += L"\t" + Column(value);
        }
        AppendLine(platform, L"Error", line);
    } catch (...) { // a log never disturbs its caller
    }
}

} // namespace quorvex::support
