#include "dialogs/update_choice_win.h"

#include "dialogs/modal_win.h"

#include <algorithm>

namespace quorvex::dialogs {
namespace {

enum Id : int { kQuestion = 100, kDownload = 101, kApply = 102, kDetails = 103, kSendLogs = 104 };
constexpr int kWidth = 400; // pixels at 96 DPI, more for a long folder
constexpr int kWidest = 720;
constexpr wchar_t kQuestionText[] = L"How do you want to bring the postcode and address data up to date?";
constexpr wchar_t kDownloadText[] = L"&Download new updates from the internet and apply them";
constexpr wchar_t kDetailsText[] = L"De&tails...";
constexpr wchar_t kSendLogsText[] = L"&Send Logs to Support...";
constexpr wchar_t kCancelText[] = L"Cancel";
constexpr wchar_t kApplyText[] = L"Apply updates from files already in directory";

} // namespace

update::UpdateChoice UpdateChoiceForm::Ask(const std::wstring& caption, const std::wstring& dataFolder,
                                           bool internetIsAvailable) {
    // "&" in a folder's name is no mnemonic.
    folderText_ = std::wstring(kApplyText) + L"\r\n";
    for (const wchar_t c : dataFolder) folderText_.append(c == L'&' ? 2 : 1, c);
    internet_ = internetIsAvailable;
    const HWND host = HostWindow();
    Create(host, caption, WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME, WS_EX_DLGMODALFRAME);
    EnableWindow(download_, internet_);
    ModalSession session(Window(), host);
    ShowWindow(Window(), SW_SHOW);
    BringToFront(Window());
    SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(internet_ ? download_ : apply_), TRUE);
    session.Run(done_);
    session.Release();
    Destroy();
    session.RestoreFocus();
    return choice_;
}

void UpdateChoiceForm::CreateControls() {
    question_ = AddLabel(kQuestionText, kQuestion);
    download_ = AddButton(kDownloadText, kDownload, BS_MULTILINE);
    apply_ = AddButton(folderText_.c_str(), kApply, BS_MULTILINE);
    details_ = AddButton(kDetailsText, kDetails);
    sendLogs_ = AddButton(kSendLogsText, kSendLogs);
    cancel_ = AddButton(kCancelText, IDCANCEL);
}

int UpdateChoiceForm::TallButtonHeight() const {
    return 2 * Units().LineHeight() + Units().Scale(16);
}

SIZE UpdateChoiceForm::ClientSize() {
    const Metrics& u = Units();
    const int needed = static_cast<int>(u.TextSize(folderText_).cx) + u.Scale(32) + 2 * u.Margin();
    const int width = std::clamp(needed, u.Scale(kWidth), u.Scale(kWidest));
    const int question = u.WrappedHeight(kQuestionText, width - 2 * u.Margin());
    return {width, 2 * u.Margin() + question + 4 * u.Gap() + 2 * TallButtonHeight() + u.ButtonHeight()};
}

void UpdateChoiceForm::Layout(int width, int height) {
    const Metrics& u = Units();
    const int inner = width - 2 * u.Margin();
    int y = u.Margin();
    const int question = u.WrappedHeight(kQuestionText, inner);
    Place(question_, u.Margin(), y, inner, question);
    y += question + u.Gap();
    Place(download_, u.Margin(), y, inner, TallButtonHeight());
    y += TallButtonHeight() + u.Gap();
    Place(apply_, u.Margin(), y, inner, TallButtonHeight());
    y = height - u.Margin() - u.ButtonHeight();
    const int detailsWidth = u.ButtonWidth(kDetailsText);
    const int cancelWidth = u.ButtonWidth(kCancelText);
    Place(details_, u.Margin(), y, detailsWidth, u.ButtonHeight());
    Place(sendLogs_, u.Margin() + detailsWidth + u.Gap(), y, u.ButtonWidth(kSendLogsText), u.ButtonHeight());
    Place(cancel_, width - u.Margin() - cancelWidth, y, cancelWidth, u.ButtonHeight());
}

void UpdateChoiceForm::Command(int id, int code, HWND) {
    if (code != BN_CLICKED) return;
    if (id == kDownload) Choose(update::UpdateChoice::Download);
    if (id == kApply) Choose(update::UpdateChoice::ApplyFromFolder);
    if (id == kDetails) Choose(update::UpdateChoice::ShowDetails);
    if (id == kSendLogs) Choose(update::UpdateChoice::SendLogs);
    if (id == IDCANCEL) Choose(update::UpdateChoice::Cancel);
}

void UpdateChoiceForm::Choose(update::UpdateChoice choice) {
    choice_ = choice;
    done_ = true;
    WakeMessageLoop();
}

update::UpdateChoice AskUpdateChoice(support::Platform& platform, const std::wstring& caption,
                                     const std::wstring& dataFolder, bool internetIsAvailable) {
    if (!UserCanSeeWindows()) return update::UpdateChoice::Cancel;
    return UpdateChoiceForm(platform).Ask(caption, dataFolder, internetIsAvailable);
}

} // namespace quorvex::dialogs
