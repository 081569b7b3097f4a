#include "server/platform_win.h"

#include "dialogs/message_form_win.h"
#include "dialogs/update_choice_win.h"
#include "mail/mail.h"
#include "support/clipboard_win.h"
#include "support/message_pump_win.h"

#include <shellapi.h>
#include <windows.h>

#include <utility>

namespace quorvex::server {

WindowsPlatform::WindowsPlatform(http::TransportLimits limits) : transport_(platform_, std::move(limits)) {}

bool WindowsPlatform::RequestRunning() const {
    return http::RequestRunning();
}

std::wstring WindowsPlatform::GetUrl(const std::wstring& url, int limitSeconds) {
    return transport_.GetURL(url, limitSeconds);
}

bool WindowsPlatform::GetHttpFile(const std::wstring& url, const std::wstring& targetFile,
                                  const std::wstring& progressCaption) {
    return transport_.GetHTTPFile(url, targetFile, progressCaption);
}

void WindowsPlatform::StopRequest() {
    transport_.StopRequest();
}

int WindowsPlatform::ShowMessage(const std::wstring& text, int style, const std::wstring& title) {
    return dialogs::TopMostMessageBox(platform_, text, style, title);
}

void WindowsPlatform::SetClipboardText(const std::wstring& text) {
    support::SetClipboardText(text);
}

int WindowsPlatform::OpenWithShell(const std::wstring& file, const std::wstring& workingDirectory) {
    if (file.empty()) return SE_ERR_FNF; // the shell would open the working directory instead
    SHELLEXECUTEINFOW open{};
    open.cbSize = sizeof open;
    // The calling thread may end soon, or have no message loop: what the shell does for it must be done by then.
    open.fMask = SEE_MASK_NOASYNC | SEE_MASK_FLAG_NO_UI;
    open.lpVerb = L"open";
    open.lpFile = file.c_str();
    open.lpDirectory = workingDirectory.empty() ? nullptr : workingDirectory.c_str();
    open.nShow = SW_SHOW;
    ShellExecuteExW(&open);
    return static_cast<int>(reinterpret_cast<INT_PTR>(open.hInstApp));
}

update::UpdateChoice WindowsPlatform::AskUpdateChoice(const std::wstring& caption, const std::wstring& dataFolder,
                                                      bool internetIsAvailable) {
    return dialogs::AskUpdateChoice(platform_, caption, dataFolder, internetIsAvailable);
}

void WindowsPlatform::ShowProgress(const std::wstring& caption, const std::wstring& text) {
    progress_.Show(caption, text, RequestRunning()); // only a download can be cancelled
}

void WindowsPlatform::HideProgress() {
    progress_.Hide();
}

void WindowsPlatform::ShowZipStatus(const std::wstring& title, const std::wstring& text, const std::wstring& status) {
    zipForm_.Load();
    zipForm_.SetCaptions(title, text);
    zipForm_.SetStatus(status);
}

void WindowsPlatform::HideZipStatus() {
    zipForm_.Unload();
}

mail::MailResult WindowsPlatform::SendMail(const mail::MailMessage& message) {
    return mail::Send(message);
}

void WindowsPlatform::PumpMessages() {
    support::PumpPendingMessages();
}

} // namespace quorvex::server
