#include "support/child_process.h"

#include <array>
#include <windows.h>

namespace quorvex::testing {

ChildProcess::ChildProcess(const std::wstring& arguments) {
    std::array<wchar_t, 1024> program{};
    GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    std::wstring command = L"\"" + std::wstring(program.data()) + L"\" " + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(program.data(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process)) {
        return;
    }
    CloseHandle(process.hThread);
    id_ = reinterpret_cast<std::intptr_t>(process.hProcess);
}

ChildProcess::~ChildProcess() {
    if (id_ != 0) Wait();
}

int ChildProcess::Wait() {
    const HANDLE process = reinterpret_cast<HANDLE>(id_);
    id_ = 0;
    DWORD code = 0;
    if (process == nullptr || WaitForSingleObject(process, INFINITE) != WAIT_OBJECT_0) return -1;
    const bool known = GetExitCodeProcess(process, &code) != FALSE;
    CloseHandle(process);
    return known ? static_cast<int>(code) : -1;
}

} // namespace quorvex::testing
