#pragma once

#include "dialogs/activation_win.h"
#include "dialogs/metrics_win.h"
#include "support/platform.h"

#include <windows.h>

#include <commctrl.h>

#include <memory>
#include <optional>
#include <string>

namespace quorvex::dialogs {

// A window of this room: a dialog whose controls are made in code and laid out from the user's message font. Nothing
// thrown in its events gets out. One thread, that of the host.
class Form {
  public:
    virtual ~Form();
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    HWND Window() const { return window_; }

  protected:
    // dpi: lay out for this resolution instead of the window's own; 0 in use, other values for tests and pictures.
    explicit Form(support::Platform& platform, int dpi = 0) : platform_(platform), fixedDpi_(dpi) {}

    // Makes the window, hidden, centred on its owner. Throws support::Error when the system gives none.
    void Create(HWND owner, const std::wstring& caption, DWORD style, DWORD extendedStyle = 0);
    void Destroy();

    // --- To be filled in by each window ----------------------------------------------------------------------------
    virtual void CreateControls() = 0;
    virtual void Layout(int width, int height) = 0; // client area, pixels
    virtual SIZE ClientSize() = 0;                  // client area to open with, pixels
    // Client area that the layout needs; a smaller window shows a part of it and scroll bars.
    virtual SIZE LeastClient() { return ClientSize(); }
    virtual void Command(int id, int code, HWND control) = 0;
    virtual void CloseRequested() = 0;
    virtual LRESULT Notify(const NMHDR&) { return 0; }
    virtual void TimerTick(UINT_PTR) {}
    virtual void MetricsChanged() {} // fonts are in place, the layout follows
    virtual void Gone() {}           // the system took the window away, with its owner for instance
    // Other messages: a value answers them, otherwise the dialog's own handling goes on.
    virtual std::optional<LRESULT> Message(UINT, WPARAM, LPARAM) { return std::nullopt; }

    // --- Help for them ---------------------------------------------------------------------------------------------
    HWND Add(const wchar_t* windowClass, const wchar_t* text, DWORD style, int id, DWORD extendedStyle = 0);
    HWND AddLabel(const wchar_t* text, int id, DWORD style = 0);
    HWND AddButton(const wchar_t* text, int id, DWORD style = 0);
    void Place(HWND control, int x, int y, int width, int height) const; // in the whole of what can be scrolled
    static void Show(HWND control, bool visible) { ShowWindow(control, visible ? SW_SHOWNA : SW_HIDE); }
    static bool Visible(HWND control);

    support::Platform& Host() const { return platform_; }
    const Metrics& Units() const { return *metrics_; }
    int FixedDpi() const { return fixedDpi_; }
    void LayoutNow();
    // Turns over to a user's new font or colours.
    void RenewMetrics(int dpi);

  private:
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    bool Handle(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);
    void SetFonts();
    void SetThemes() const;

    // --- Scrolling: form_scroll_win.cpp
    std::optional<LRESULT> ScrollMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void ShowBar(int bar, int needed, int shown);
    void ScrollBy(int bar, int pixels);
    void FollowFocus();

    support::Platform& platform_;
    int fixedDpi_;
    HWND window_ = nullptr;
    std::unique_ptr<Metrics> metrics_;
    POINT scrolled_{};        // what is above and left of the window's client area
    HWND followed_ = nullptr; // the control that was last scrolled into sight
    bool layingOut_ = false;
};

} // namespace quorvex::dialogs
