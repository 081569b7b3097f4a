#include "support/machine_win.h"

#include "support/text.h"

#include <windows.h>

#include <array>
#include <string_view>
#include <vector>

namespace quorvex::support {
namespace {

constexpr std::size_t kNameBuffer = 255; // characters; a longer name counts as unknown

using NameCall = BOOL(WINAPI*)(LPSTR, LPDWORD);

std::wstring ReadName(NameCall call) {
    std::array<char, kNameBuffer> buffer{};
    DWORD size = kNameBuffer;
    if (!call(buffer.data(), &size)) return {};
    const std::string_view text(buffer.data(), buffer.size());
    return FromAnsi(text.substr(0, text.find('\0')));
}

bool Is64BitSystem() {
#ifdef _WIN64
    return true;
#else
    BOOL wow64 = FALSE;
    return IsWow64Process(GetCurrentProcess(), &wow64) && wow64;
#endif
}

} // namespace

std::wstring ComputerName() {
    return ReadName(GetComputerNameA);
}

std::wstring UserName() {
    return ReadName(GetUserNameA);
}

std::wstring DataAccessVersion() {
    constexpr wchar_t kKey[] = L"SOFTWARE\\Microsoft\\DataAccess";
    constexpr wchar_t kValue[] = L"Version";
    DWORD bytes = 0;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, kKey, kValue, RRF_RT_REG_SZ, nullptr, nullptr, &bytes) != ERROR_SUCCESS)
        return {};
    std::vector<wchar_t> text(bytes / sizeof(wchar_t) + 1, L'\0');
    bytes = static_cast<DWORD>((text.size() - 1) * sizeof(wchar_t));
    if (RegGetValueW(HKEY_LOCAL_MACHINE, kKey, kValue, RRF_RT_REG_SZ, nullptr, text.data(), &bytes) != ERROR_SUCCESS)
        return {};
    return text.data();
}

std::wstring DriveShareName(wchar_t driveLetter) {
    const std::array<wchar_t, 3> drive = {driveLetter, L':', L'\0'};
    std::vector<wchar_t> share(MAX_PATH);
    DWORD size = static_cast<DWORD>(share.size());
    DWORD result = WNetGetConnectionW(drive.data(), share.data(), &size);
    if (result == ERROR_MORE_DATA) {
        share.assign(size, L'\0');
        result = WNetGetConnectionW(drive.data(), share.data(), &size);
    }
    return result == NO_ERROR ? std::wstring(share.data()) : std::wstring();
}

WindowsVersion SystemVersionNumbers() {
    // GetVersionEx tells hosts without a manifest entry an old version; the kernel's own answer has no such mercy.
    using Call = LONG(WINAPI*)(OSVERSIONINFOW*);
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    void* const address = ntdll == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(ntdll, "RtlGetVersion"));
    OSVERSIONINFOW info{};
    info.dwOSVersionInfoSize = sizeof info;
    if (address == nullptr || reinterpret_cast<Call>(address)(&info) != 0) return {};
    return {info.dwMajorVersion, info.dwMinorVersion, info.dwBuildNumber};
}

std::wstring SystemVersion() {
    const WindowsVersion version = SystemVersionNumbers();
    return L"Windows " + std::to_wstring(version.major) + L"." + std::to_wstring(version.minor) + L" (build " +
           std::to_wstring(version.build) + L"), " + (Is64BitSystem() ? L"64-bit" : L"32-bit");
}

LocalTime WindowsMachine::Now() const {
    SYSTEMTIME time;
    GetLocalTime(&time);
    return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, time.wDayOfWeek};
}

void WindowsMachine::SleepMilliseconds(int milliseconds) const {
    if (milliseconds > 0) Sleep(static_cast<DWORD>(milliseconds));
}

} // namespace quorvex::support
