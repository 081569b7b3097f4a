#include "quorvex/console.h"

#include "support/text.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <string>

namespace quorvex::cli {
namespace {

std::atomic<bool> stopRequested{false};

// A closed console window ends the process when this returns; the wait lets the run finish its rows.
BOOL WINAPI OnStop(DWORD event) {
    stopRequested = true;
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(4000); // Windows ends the process after five seconds
    return TRUE;
}

bool IsConsole(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0;
}

bool WriteBytes(HANDLE handle, std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD written = 0;
        const auto wanted = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1U << 20));
        if (!WriteFile(handle, bytes.data(), wanted, &written, nullptr) || written == 0) return false;
        bytes.remove_prefix(written);
    }
    return true;
}

bool WriteCharacters(HANDLE handle, std::wstring_view text) {
    constexpr std::size_t kMost = 8000; // the console refuses larger pieces
    while (!text.empty()) {
        DWORD written = 0;
        const auto wanted = static_cast<DWORD>(std::min(text.size(), kMost));
        if (!WriteConsoleW(handle, text.data(), wanted, &written, nullptr) || written == 0) return false;
        text.remove_prefix(written);
    }
    return true;
}

// Without a console (a service, the Task Scheduler) the handle is null, and no one would read it.
bool Write(DWORD stream, std::string_view text) {
    const HANDLE handle = GetStdHandle(stream);
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) return true;
    return IsConsole(handle) ? WriteCharacters(handle, support::FromUtf8(text)) : WriteBytes(handle, text);
}

} // namespace

Console::Console() : errorIsTerminal_(IsConsole(GetStdHandle(STD_ERROR_HANDLE))) {}

bool Console::Out(std::string_view text) {
    if (!outputFailed_) outputFailed_ = !Write(STD_OUTPUT_HANDLE, text);
    return !outputFailed_;
}

void Console::Error(std::string_view text) {
    Write(STD_ERROR_HANDLE, text);
}

bool Console::Finish() {
    return !outputFailed_;
}

void Console::UseBinaryStreams() {
    for (FILE* const stream : {stdin, stdout}) {
        const int number = _fileno(stream);
        if (number >= 0) _setmode(number, _O_BINARY); // negative without a console
    }
}

void WatchForStop() {
    SetConsoleCtrlHandler(OnStop, TRUE);
}

bool StopRequested() {
    return stopRequested;
}

} // namespace quorvex::cli
