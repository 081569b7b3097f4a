#include "dialogs/progress_window_win.h"

#include "dialogs/window_text_win.h"
#include "support/text.h"
#include "support/window_helpers_win.h"

#include <algorithm>

namespace quorvex::dialogs {
namespace {

enum Id : int { kLabel = 100, kBar = 101, kCommand1 = IDCANCEL };
constexpr int kWidth = 380; // pixels at 96 DPI
constexpr int kTextLines = 2;
constexpr int kBarHeight = 14;
constexpr wchar_t kCancelCaption[] = L"&Cancel";

} // namespace

std::optional<int> PercentOf(std::wstring_view text) {
    text = support::Trim(text);
    if (!text.ends_with(L'%')) return std::nullopt;
    text.remove_suffix(1);
    const std::size_t digits = text.find_last_not_of(L"0123456789") + 1;
    const std::wstring number(text.substr(digits));
    if (number.empty() || number.size() > 3) return std::nullopt;
    return std::min(std::stoi(number), 100);
}

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
    if (WindowText(Window()) != caption) {
        SetTextIfNew(Window(), caption);
        cancelRequested_ = false;
        AllowCancel(cancelAllowed_);
    }
    SetTextIfNew(label_, text);
    const std::optional<int> percent = PercentOf(text);
    Show(bar_, percent.has_value());
    SendMessageW(bar_, PBM_SETPOS, static_cast<WPARAM>(percent.value_or(0)), 0);
    UpdateWindow(label_); // long work may let no messages run before its next step
    UpdateWindow(bar_);
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
    bar_ = Add(PROGRESS_CLASSW, L"", PBS_SMOOTH, kBar);
    Show(bar_, false);
    Command1 = AddButton(kCancelCaption, kCommand1);
}

SIZE frmInternetAccessForm::ClientSize() {
    const Metrics& u = Units();
    return {u.Scale(kWidth),
            2 * u.Margin() + kTextLines * u.LineHeight() + 2 * u.Gap() + u.Scale(kBarHeight) + u.ButtonHeight()};
}

void frmInternetAccessForm::Layout(int width, int height) {
    const Metrics& u = Units();
    const int buttonWidth = u.ButtonWidth(kCancelCaption);
    const int buttons = height - u.Margin() - u.ButtonHeight();
    const int inner = width - 2 * u.Margin();
    Place(label_, u.Margin(), u.Margin(), inner, kTextLines * u.LineHeight());
    Place(bar_, u.Margin(), buttons - u.Gap() - u.Scale(kBarHeight), inner, u.Scale(kBarHeight));
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
