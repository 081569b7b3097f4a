#include "dialogs/input_form_win.h"

#include "dialogs/modal_win.h"
#include "dialogs/window_text_win.h"

namespace quorvex::dialogs {
namespace {

enum Id : int { kPrompt = 100, kText1 = 101 };
constexpr int kWidth = 360; // pixels at 96 DPI

} // namespace

std::optional<std::wstring> InputForm::Ask(HWND owner, const std::wstring& prompt, const std::wstring& title,
                                           const std::wstring& preset) {
    prompt_ = prompt;
    preset_ = preset;
    Create(owner, title, WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME, WS_EX_DLGMODALFRAME);
    ModalSession session(Window(), owner);
    ShowWindow(Window(), SW_SHOW);
    SetWindowPos(Window(), HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    SetForegroundWindow(Window());
    SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(text1_), TRUE);
    session.Run(done_);
    session.Release();
    Destroy();
    return answer_;
}

void InputForm::CreateControls() {
    label_ = AddLabel(prompt_.c_str(), kPrompt, SS_NOPREFIX);
    text1_ = Add(WC_EDITW, preset_.c_str(), WS_TABSTOP | ES_AUTOHSCROLL, kText1, WS_EX_CLIENTEDGE);
    ok_ = AddButton(L"OK", IDOK, BS_DEFPUSHBUTTON);
    cancel_ = AddButton(L"Cancel", IDCANCEL);
}

SIZE InputForm::ClientSize() {
    const Metrics& u = Units();
    const int width = u.Scale(kWidth);
    const int prompt = u.WrappedHeight(prompt_, width - 2 * u.Margin());
    return {width, 2 * u.Margin() + 2 * u.Gap() + prompt + u.EditHeight() + u.ButtonHeight()};
}

void InputForm::Layout(int width, int height) {
    const Metrics& u = Units();
    const int inner = width - 2 * u.Margin();
    const int buttons = height - u.Margin() - u.ButtonHeight();
    const int edit = buttons - u.Gap() - u.EditHeight();
    const int okWidth = u.ButtonWidth(L"OK");
    const int cancelWidth = u.ButtonWidth(L"Cancel");
    Place(label_, u.Margin(), u.Margin(), inner, edit - u.Gap() - u.Margin());
    Place(text1_, u.Margin(), edit, inner, u.EditHeight());
    Place(cancel_, width - u.Margin() - cancelWidth, buttons, cancelWidth, u.ButtonHeight());
    Place(ok_, width - u.Margin() - cancelWidth - u.Gap() - okWidth, buttons, okWidth, u.ButtonHeight());
}

void InputForm::Command(int id, int code, HWND) {
    if (code != BN_CLICKED || (id != IDOK && id != IDCANCEL)) return;
    if (id == IDOK) answer_ = WindowText(text1_);
    Finish();
}

void InputForm::Finish() {
    done_ = true;
    WakeMessageLoop();
}

} // namespace quorvex::dialogs
