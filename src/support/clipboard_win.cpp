#include "support/clipboard_win.h"

#include <windows.h>

#include <cstring>

namespace quorvex::support {
namespace {

constexpr int kTries = 10; // other programs hold the clipboard for moments only
constexpr DWORD kWaitMilliseconds = 20;

// The open clipboard, owned by a window of its own: without an owner a cleared clipboard refuses what is put on it.
class Clipboard {
  public:
    Clipboard()
        : owner_(CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {
        for (int tries = 0; owner_ != nullptr && !open_ && tries < kTries; ++tries) {
            if (tries != 0) Sleep(kWaitMilliseconds);
            open_ = OpenClipboard(owner_) != FALSE;
        }
    }
    ~Clipboard() {
        if (open_) CloseClipboard();
        if (owner_ != nullptr) DestroyWindow(owner_);
    }
    Clipboard(const Clipboard&) = delete;
    Clipboard& operator=(const Clipboard&) = delete;

    bool Open() const { return open_; }

  private:
    HWND owner_;
    bool open_ = false;
};

HGLOBAL CopyToGlobal(const std::wstring& text) {
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes);
    void* const place = memory == nullptr ? nullptr : GlobalLock(memory);
    if (place == nullptr) {
        if (memory != nullptr) GlobalFree(memory);
        return nullptr;
    }
    std::memcpy(place, text.c_str(), bytes);
    GlobalUnlock(memory);
    return memory;
}

} // namespace

bool SetClipboardText(const std::wstring& text) {
    const Clipboard clipboard;
    if (!clipboard.Open() || !EmptyClipboard()) return false;
    const HGLOBAL memory = CopyToGlobal(text);
    if (memory == nullptr) return false;
    if (SetClipboardData(CF_UNICODETEXT, memory) != nullptr) return true; // the system owns the memory now
    GlobalFree(memory);
    return false;
}

} // namespace quorvex::support
