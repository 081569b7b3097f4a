#include "dialogs/progress_window_win.h"

#include "support/window_helpers_win.h"

namespace quorvex::dialogs {
namespace {

enum Id : int { kLabel = 100, kCommand1 = IDCANCEL };
constexpr int kWidth = 380; // pixels at 96 DPI
constexpr int kTextLines = 2;
constexpr wchar_t kCancelCaption[] = L"&Cancel";

} // namespace

void frmInternetAccessForm::Open(const std::wstring& caption, const std::wstring& text) {
    const HWND host = HostWindow();
    Create(host, caption, WS_POPUP | WS_CAPTION | DS_MODALFRAME, WS_EX_DLGMODALFRAME);
    SetProgress(caption, text);
    session_ = std::make_unique<ModalSession>(Window(), host);
    ShowWindow(Window(), SW_SHOW);
    SetForegroundWindow(Window());
    UpdateWindow(Window());
}

void frmInternetAccessForm::SetOnTop() {
    support::SetTopMost(Window(), true);
}

void frmInternetAccessForm::SetProgress(const std::wstring& caption, const std::wstring& text) {
    if (TextOf(Window()) != caption) {
        SetText(Window(), caption);
        cancelRequested_ = false;
        AllowCancel(cancelAllowed_);
    }
    SetText(label_, text);
    UpdateWindow(label_); // long work may let no messages run before its next step
}

void frmInternetAccessForm::AllowCancel(bool allowed) {
    cancelAllowed_ = allowed;
    EnableWindow(Command1, allowed && !cancelRequested_);
}

void frmInternetAccessForm::CloseForm() {
    if (session_ != nullptr) session_->Release();
    Destroy();
    if (session_ != nullptr) session_->RestoreFocus();
    session_.reset();
}

void frmInternetAccessForm::CreateControls() {
    label_ = AddLabel(L"", kLabel, SS_NOPREFIX);
    Command1 = AddButton(kCancelCaption, kCommand1);
}

SIZE frmInternetAccessForm::ClientSize() {
    const Metrics& u = Units();
    return {u.Scale(kWidth), 2 * u.Margin() + kTextLines * u.LineHeight() + u.Gap() + u.ButtonHeight()};
}

void frmInternetAccessForm::Layout(int width, int height) {
    const Metrics& u = Units();
    const int buttonWidth = u.ButtonWidth(kCancelCaption);
    const int buttons = height - u.Margin() - u.ButtonHeight();
    Place(label_, u.Margin(), u.Margin(), width - 2 * u.Margin(), buttons - u.Gap() - u.Margin());
    Place(Command1, width - u.Margin() - buttonWidth, buttons, buttonWidth, u.ButtonHeight());
}

void frmInternetAccessForm::Command(int id, int code, HWND) {
    if (id == kCommand1 && code == BN_CLICKED) Cancel();
}

void frmInternetAccessForm::Cancel() {
    if (!cancelAllowed_ || cancelRequested_) return;
    cancelRequested_ = true;
    EnableWindow(Command1, FALSE);
    if (onCancel_) onCancel_();
}

void ProgressWindow::Show(const std::wstring& caption, const std::wstring& text, bool cancellable) {
    if (form_ == nullptr) {
        if (!UserCanSeeWindows()) return;
        auto form = std::make_unique<frmInternetAccessForm>(platform_, onCancel_);
        form->Open(caption, text);
        form_ = std::move(form);
    } else {
        form_->SetProgress(caption, text);
    }
    form_->AllowCancel(cancellable);
}

void ProgressWindow::Hide() {
    if (form_ == nullptr) return;
    form_->CloseForm();
    form_.reset();
}

} // namespace quorvex::dialogs
