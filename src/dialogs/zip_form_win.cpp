#include "dialogs/zip_form_win.h"

#include "dialogs/modal_win.h"
#include "dialogs/window_text_win.h"

namespace quorvex::dialogs {
namespace {

enum Id : int { kText = 100 };
constexpr int kWidth = 340; // pixels at 96 DPI
constexpr int kTextLines = 2;

} // namespace

void ZipForm::Load() {
    Create(HostWindow(), L"", WS_POPUP | WS_CAPTION | DS_MODALFRAME, WS_EX_DLGMODALFRAME);
    ShowWindow(Window(), SW_SHOWNOACTIVATE);
    UpdateWindow(Window());
}

void ZipForm::SetCaptions(const std::wstring& title, const std::wstring& text) {
    SetTextIfNew(Window(), title);
    SetTextIfNew(text_, text);
    UpdateWindow(text_);
}

void ZipForm::CreateControls() {
    text_ = AddLabel(L"", kText, SS_NOPREFIX | SS_CENTER);
}

SIZE ZipForm::ClientSize() {
    const Metrics& u = Units();
    return {u.Scale(kWidth), 4 * u.Margin() + kTextLines * u.LineHeight()};
}

void ZipForm::Layout(int width, int height) {
    const Metrics& u = Units();
    Place(text_, u.Margin(), 2 * u.Margin(), width - 2 * u.Margin(), height - 4 * u.Margin());
}

} // namespace quorvex::dialogs
