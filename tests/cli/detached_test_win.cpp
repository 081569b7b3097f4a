// The program as services and schedulers start it.

#include "support/files.h"
#include "testing/sample_data.h"
#include "testing/temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>

#include <windows.h>

namespace quorvex::testing {
namespace {

constexpr DWORD kLongestRun = 60000; // milliseconds

// The exit code of a run without a console, with handles of the NUL device or with none; -1 if it does not end.
int RunDetached(std::wstring arguments, const std::wstring& folder, HANDLE streams) {
    std::wstring program(MAX_PATH, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), MAX_PATH));
    const std::filesystem::path built = std::filesystem::path(program).parent_path().parent_path();
    arguments.insert(0, L"\"" + (built / L"quorvex.exe").wstring() + L"\" ");
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = start.hStdOutput = start.hStdError = streams;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, arguments.data(), nullptr, nullptr, TRUE, DETACHED_PROCESS, nullptr, folder.c_str(),
                        &start, &process)) {
        ADD_FAILURE() << "cannot start: " << GetLastError();
        return -1;
    }
    DWORD code = 0;
    const bool ended = WaitForSingleObject(process.hProcess, kLongestRun) == WAIT_OBJECT_0;
    if (ended) GetExitCodeProcess(process.hProcess, &code);
    if (!ended) TerminateProcess(process.hProcess, 1);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return ended ? static_cast<int>(code) : -1;
}

TEST(Program, EndsAsUsualWithoutAConsole) {
    const TempFolder folder;
    CopySampleData(folder.Text());
    support::WriteFileBytes(folder.File(L"in.csv"), "postcode\nAB1 0DF\n");
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const HANDLE nothing = CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       &inherited, OPEN_EXISTING, 0, nullptr);
    const std::tuple<HANDLE, const wchar_t*, int> cases[] = {
        {nullptr, L"find \"AB1 0DF\" --data .", 0},
        {nullptr, L"find", 2},
        {nullptr, L"clean - out.csv --overwrite --postcode postcode --data .", 3}, // an empty list
        {nothing, L"find \"AB1 0DF\" --data .", 0},
        {nothing, L"clean in.csv out.csv --overwrite --postcode postcode --data .", 0},
    };
    for (const auto& [streams, arguments, code] : cases) {
        EXPECT_EQ(RunDetached(arguments, folder.Text(), streams), code) << ::testing::PrintToString(arguments);
    }
    CloseHandle(nothing);
}

} // namespace
} // namespace quorvex::testing
