#include "dialogs/zip_form_win.h"

#include "dialogs/modal_win.h"
#include "dialogs/window_text_win.h"

namespace quorvex::dialogs {
namespace {

enum Id : int { kText = 100, kStatus };
constexpr int kWidth = 340; // pixels at 96 DPI

} // namespace

void ZipForm::Load() {
    if (Window() != nullptr) return;
    Create(HostWindow(), L"", WS_POPUP | WS_CAPTION | DS_MODALFRAME, WS_EX_DLGMODALFRAME);
    ShowWindow(Window(), SW_SHOWNOACTIVATE);
    UpdateWindow(Window());
}

void ZipForm::SetCaptions(const std::wstring& title, const std::wstring& text) {
    SetTextIfNew(Window(), title);
    SetTextIfNew(text_, text);
    UpdateWindow(text_);
}

void ZipForm::SetStatus(const std::wstring& status) {
    SetTextIfNew(status_, status);
    UpdateWindow(status_);
}

void ZipForm::CreateControls() {
    text_ = AddLabel(L"", kText, SS_NOPREFIX | SS_CENTER);
    status_ = AddLabel(L"", kStatus, SS_NOPREFIX | SS_CENTER | SS_PATHELLIPSIS);
}

SIZE ZipForm::ClientSize() {
    const Metrics& u = Units();
    return {u.Scale(kWidth), 5 * u.Margin() + 2 * u.LineHeight()};
}

void ZipForm::Layout(int width, int height) {
    const Metrics& u = Units();
    const int line = (height - 5 * u.Margin()) / 2;
    Place(text_, u.Margin(), 2 * u.Margin(), width - 2 * u.Margin(), line);
    Place(status_, u.Margin(), 3 * u.Margin() + line, width - 2 * u.Margin(), line);
}

} // namespace quorvex::dialogs
