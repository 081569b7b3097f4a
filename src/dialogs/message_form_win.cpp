#include "dialogs/message_form_win.h"

#include "dialogs/activation_win.h"
#include "dialogs/input_form_win.h"
#include "dialogs/modal_win.h"
#include "support/error.h"
#include "support/log.h"
#include "support/process_state.h"

namespace quorvex::dialogs {
namespace {

// Puts the message box above all windows as it comes up: a box does not share its owner's place everywhere.
class BoxOnTop {
  public:
    BoxOnTop() : hook_(SetWindowsHookExW(WH_CBT, &BoxOnTop::Event, nullptr, GetCurrentThreadId())) {}
    ~BoxOnTop() {
        if (hook_ != nullptr) UnhookWindowsHookEx(hook_);
    }
    BoxOnTop(const BoxOnTop&) = delete;
    BoxOnTop& operator=(const BoxOnTop&) = delete;

  private:
    static LRESULT CALLBACK Event(int code, WPARAM wParam, LPARAM lParam) noexcept {
        if (code == HCBT_ACTIVATE) {
            const HWND window = reinterpret_cast<HWND>(wParam);
            if (GetClassLongPtrW(window, GCW_ATOM) == reinterpret_cast<ULONG_PTR>(WC_DIALOG)) {
                SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
            }
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    HHOOK hook_;
};

int CautiousAnswer(int buttons) {
    switch (buttons & MB_TYPEMASK) {
    case MB_OK:
        return IDOK;
    case MB_YESNO:
        return IDNO;
    default:
        return IDCANCEL;
    }
}

// What fits a screen of a text that somebody else wrote, a server's error page for instance: a box as large as all of
// it would have its button below the screen's edge.
std::wstring Shown(const std::wstring& prompt) {
    constexpr std::size_t kMostCharacters = 2000;
    constexpr int kMostLines = 40;
    std::size_t end = 0;
    for (int lines = 1; end < prompt.size() && end < kMostCharacters; ++end) {
        if (prompt[end] == L'\n' && ++lines > kMostLines) break;
    }
    return end == prompt.size() ? prompt : prompt.substr(0, end) + L"\x2026";
}

std::wstring TitleOrDefault(const std::wstring& title) {
    return title.empty() ? support::Process().messageTitle.Get() : title;
}

} // namespace

int TopMostMessageBox(support::Platform& platform, const std::wstring& prompt, int buttons, const std::wstring& title) {
    frmTopMessage form(platform);
    form.Prompt = prompt;
    form.Buttons = buttons == kNoButtonsGiven ? 0 : buttons;
    form.Title = TitleOrDefault(title);
    form.ShowModal();
    if (form.PressedButton() > 0) return form.PressedButton();
    support::LogError(platform, support::Error(0, {}), L"Message that could not be shown: " + prompt);
    return CautiousAnswer(form.Buttons);
}

std::optional<std::wstring> TopMostInputBox(support::Platform& platform, const std::wstring& prompt,
                                            const std::wstring& title, const std::wstring& preset) {
    frmTopMessage form(platform);
    form.Prompt = prompt;
    form.Title = TitleOrDefault(title);
    form.Default = preset;
    form.DisplayType = frmTopMessage::InputBoxKind;
    form.ShowModal();
    return form.TypedText();
}

frmTopMessage::~frmTopMessage() {
    if (window_ != nullptr) DestroyWindow(window_);
}

void frmTopMessage::ShowModal() {
    if (!UserCanSeeWindows()) return;
    const HWND host = HostWindow();
    Load(host);
    if (window_ == nullptr) return;
    ModalSession session(window_, host);
    Activate();
    session.Release();
    ShowWindow(window_, SW_HIDE);
    session.RestoreFocus();
}

// The window has no size: it lends its place above all others to the message and is not seen itself.
void frmTopMessage::Load(HWND host) {
    const POINT at = CentredPosition(host, {0, 0});
    window_ = CreateWindowExW(WS_EX_TOPMOST | WS_EX_TOOLWINDOW, WC_STATICW, Title.c_str(), WS_POPUP, at.x, at.y, 0, 0,
                              nullptr, nullptr, OwnModule(), nullptr);
    if (window_ == nullptr) return;
    SetWindowPos(window_, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    ShowWindow(window_, SW_SHOW);
    SetForegroundWindow(window_);
}

void frmTopMessage::Activate() {
    const ActivationContext themed;
    if (DisplayType == InputBoxKind) {
        InputForm input(platform_);
        typedText_ = input.Ask(window_, Prompt, Title, Default);
        return;
    }
    const BoxOnTop onTop;
    pressedButton_ = MessageBoxW(window_, Shown(Prompt).c_str(), Title.c_str(),
                                 static_cast<UINT>(Buttons) | MB_TOPMOST | MB_SETFOREGROUND);
}

} // namespace quorvex::dialogs
