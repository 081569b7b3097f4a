#pragma once

#include <mutex>
#include <string>
#include <utility>

namespace quorvex::support {

// A text that threads share: each reads a copy of its own.
class SharedText {
  public:
    SharedText() = default;
    SharedText(std::wstring text) : text_(std::move(text)) {}
    SharedText(const wchar_t* text) : text_(text) {}
    SharedText(const SharedText& other) : text_(other.Get()) {}
    ~SharedText() = default;

    std::wstring Get() const {
        const std::lock_guard locked(mutex_);
        return text_;
    }
    operator std::wstring() const { return Get(); }
    SharedText& operator=(std::wstring text) {
        const std::lock_guard locked(mutex_);
        text_.swap(text); // the former text goes after the lock
        return *this;
    }
    SharedText& operator=(const wchar_t* text) { return *this = std::wstring(text); }
    SharedText& operator=(const SharedText& other) { return *this = other.Get(); }
    bool operator==(const std::wstring& text) const { return Get() == text; }

  private:
    mutable std::mutex mutex_;
    std::wstring text_;
};

// The texts that all objects and modules of one process share.
struct ProcessState {
    SharedText messageTitle{L"Quorvex"}; // title of message boxes, a column of every log line
    SharedText currentOperation;         // the step in progress, a column of every error-log line
    SharedText dataPath;                 // folder of the local data files as the last host set it
    SharedText unwritableLogs{};         // folder whose log could not be written last
};

ProcessState& Process();

} // namespace quorvex::support
