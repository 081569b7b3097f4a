#include "dialogs/form_win.h"

#include "dialogs/guard_win.h"
#include "dialogs/modal_win.h"
#include "dialogs/window_text_win.h"
#include "support/error.h"

#include <algorithm>

namespace quorvex::dialogs {
namespace {

constexpr UINT kDpiChanged = 0x02E0; // sent by Windows 8.1 and later to windows that are aware of monitors
constexpr WORD kIconResource = 1;

// A dialog without controls, menu, class and title of its own.
struct EmptyTemplate {
    DLGTEMPLATE dialog{};
    WORD menu = 0;
    WORD windowClass = 0;
    WORD title = 0;
};

void LoadControlClasses() {
    INITCOMMONCONTROLSEX classes{};
    classes.dwSize = sizeof classes;
    classes.dwICC = ICC_STANDARD_CLASSES | ICC_TREEVIEW_CLASSES | ICC_BAR_CLASSES | ICC_PROGRESS_CLASS;
    InitCommonControlsEx(&classes);
}

} // namespace

Form::~Form() {
    Destroy();
}

void Form::Create(HWND owner, const std::wstring& caption, DWORD style, DWORD extendedStyle) {
    const ActivationContext themed;
    LoadControlClasses();
    EmptyTemplate empty;
    empty.dialog.style = style;
    empty.dialog.dwExtendedStyle = extendedStyle;
    CreateDialogIndirectParamW(OwnModule(), &empty.dialog, owner, &Form::Procedure, reinterpret_cast<LPARAM>(this));
    if (window_ == nullptr) throw support::Error(support::kErrorInternal, L"The window could not be made");
    SetTextIfNew(window_, caption);
    for (const WPARAM size : {WPARAM{ICON_SMALL}, WPARAM{ICON_BIG}}) {
        const int pixels = GetSystemMetrics(size == WPARAM{ICON_SMALL} ? SM_CXSMICON : SM_CXICON);
        const HANDLE icon =
            LoadImageW(OwnModule(), MAKEINTRESOURCEW(kIconResource), IMAGE_ICON, pixels, pixels, LR_SHARED);
        SendMessageW(window_, WM_SETICON, size, reinterpret_cast<LPARAM>(icon));
    }
    // On the owner's monitor first: its resolution is the one to lay out for.
    const POINT rough = CentredPosition(owner, {1, 1});
    SetWindowPos(window_, nullptr, rough.x, rough.y, 1, 1, SWP_NOZORDER | SWP_NOACTIVATE);
    metrics_ = std::make_unique<Metrics>(window_, fixedDpi_);
    CreateControls();
    SetFonts();
    SetThemes();
    MetricsChanged();
    SIZE size = OuterSize(ClientSize(), style, extendedStyle, metrics_->Dpi());
    const RECT area = WorkArea(owner);
    if (size.cy > area.bottom - area.top) size.cx += GetSystemMetrics(SM_CXVSCROLL);
    size = {std::min(size.cx, area.right - area.left), std::min(size.cy, area.bottom - area.top)};
    const POINT at = CentredPosition(owner, size);
    SetWindowPos(window_, nullptr, at.x, at.y, size.cx, size.cy, SWP_NOZORDER | SWP_NOACTIVATE);
    LayoutNow();
}

void Form::Destroy() {
    if (window_ == nullptr) return;
    const HWND window = window_;
    window_ = nullptr; // no event reaches the form from here on
    SetWindowLongPtrW(window, DWLP_USER, 0);
    DestroyWindow(window);
}

HWND Form::Add(const wchar_t* windowClass, const wchar_t* text, DWORD style, int id, DWORD extendedStyle) {
    const HWND control =
        CreateWindowExW(extendedStyle, windowClass, text, style | WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, window_,
                        reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), OwnModule(), nullptr);
    if (control == nullptr) throw support::Error(support::kErrorInternal, L"A control could not be made");
    return control;
}

HWND Form::AddLabel(const wchar_t* text, int id, DWORD style) {
    return Add(WC_STATICW, text, style, id);
}

HWND Form::AddButton(const wchar_t* text, int id, DWORD style) {
    return Add(WC_BUTTONW, text, style | WS_TABSTOP | BS_NOTIFY, id);
}

void Form::Place(HWND control, int x, int y, int width, int height) const {
    SetWindowPos(control, nullptr, x - scrolled_.x, y - scrolled_.y, std::max(width, 0), std::max(height, 0),
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

bool Form::Visible(HWND control) {
    return (GetWindowLongPtrW(control, GWL_STYLE) & WS_VISIBLE) != 0;
}

void Form::SetFonts() {
    for (HWND child = GetWindow(window_, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(metrics_->Font()), FALSE);
    }
}

// Themes have colours of their own, made for light dialogs: where the system's are dark, as in high contrast, the
// controls are drawn in those and without a theme.
void Form::SetThemes() const {
    constexpr int kDark = 96;
    using SetWindowThemeFunction = HRESULT(WINAPI*)(HWND, LPCWSTR, LPCWSTR);
    const HMODULE library = GetModuleHandleW(L"uxtheme.dll"); // not there: no themes
    if (library == nullptr) return;
    const auto setTheme =
        reinterpret_cast<SetWindowThemeFunction>(reinterpret_cast<void*>(GetProcAddress(library, "SetWindowTheme")));
    if (setTheme == nullptr) return;
    const wchar_t* const theme = Brightness(GetSysColor(COLOR_3DFACE)) < kDark ? L" " : nullptr;
    for (HWND child = GetWindow(window_, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        setTheme(child, theme, theme);
    }
}

void Form::RenewMetrics(int dpi) {
    auto before = std::move(metrics_); // its fonts are in use until the controls have the new ones
    metrics_ = std::make_unique<Metrics>(window_, dpi);
    SetFonts();
    SetThemes();
    MetricsChanged();
    LayoutNow();
}

INT_PTR CALLBACK Form::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_INITDIALOG) {
        auto* const form = reinterpret_cast<Form*>(lParam);
        form->window_ = window;
        SetWindowLongPtrW(window, DWLP_USER, lParam);
        return FALSE; // the focus is set when the window is shown
    }
    auto* const form = reinterpret_cast<Form*>(GetWindowLongPtrW(window, DWLP_USER));
    if (form == nullptr || form->metrics_ == nullptr) return FALSE;
    if (message == WM_NCDESTROY) {
        form->window_ = nullptr;
        Guarded(form->platform_, [&] { form->Gone(); });
        return FALSE;
    }
    bool handled = false;
    LRESULT result = 0;
    Guarded(form->platform_, [&] { handled = form->Handle(message, wParam, lParam, result); });
    if (!handled) return FALSE;
    // Colours and the like are answered by the procedure's own result, all else by this field.
    if (message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC) return static_cast<INT_PTR>(result);
    SetWindowLongPtrW(window, DWLP_MSGRESULT, static_cast<LONG_PTR>(result));
    return TRUE;
}

bool Form::Handle(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    if (const std::optional<LRESULT> answer = Message(message, wParam, lParam)) {
        result = *answer;
        return true;
    }
    if (const std::optional<LRESULT> answer = ScrollMessage(message, wParam, lParam)) {
        result = *answer;
        return true;
    }
    switch (message) {
    case WM_COMMAND:
        Command(LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HWND>(lParam));
        FollowFocus();
        return true;
    case WM_NOTIFY:
        result = Notify(*reinterpret_cast<const NMHDR*>(lParam));
        FollowFocus();
        return true;
    case WM_TIMER:
        TimerTick(wParam);
        return true;
    case WM_CLOSE:
        CloseRequested();
        return true;
    case WM_SIZE:
        LayoutNow();
        return false;
    case kDpiChanged:
        if (fixedDpi_ == 0) {
            const RECT& suggested = *reinterpret_cast<const RECT*>(lParam);
            RenewMetrics(HIWORD(wParam));
            SetWindowPos(window_, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
                         suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
        }
        return true;
    case WM_SETTINGCHANGE:
        if (wParam == SPI_SETNONCLIENTMETRICS) RenewMetrics(metrics_->Dpi());
        return false;
    case WM_SYSCOLORCHANGE:
        // The controls of the common library ask for colours once and are told of new ones by their parent only.
        for (HWND child = GetWindow(window_, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
            SendMessageW(child, message, wParam, lParam);
        }
        RenewMetrics(metrics_->Dpi());
        return false;
    case WM_CTLCOLORSTATIC: // labels, the group's title, the summary: a theme may draw them in colours of its own
        SetTextColor(reinterpret_cast<HDC>(wParam), GetSysColor(COLOR_BTNTEXT));
        SetBkColor(reinterpret_cast<HDC>(wParam), GetSysColor(COLOR_3DFACE));
        result = reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_3DFACE));
        return true;
    default:
        return false;
    }
}

} // namespace quorvex::dialogs
