#pragma once

#include "dialogs/progress_window_win.h"
#include "dialogs/zip_form_win.h"
#include "http/transport_win.h"
#include "mail/mailer.h"
#include "support/machine_win.h"
#include "support/platform.h"
#include "update/update_windows.h"

namespace quorvex::server {

// The component's surroundings on Windows, one per lookup object.
class WindowsPlatform final : private support::WebAccess,
                              private support::UserPrompts,
                              private support::ProgressDisplay,
                              private update::UpdateWindows,
                              private mail::Mailer {
  public:
    explicit WindowsPlatform(http::TransportLimits limits = {});
    WindowsPlatform(const WindowsPlatform&) = delete;
    WindowsPlatform& operator=(const WindowsPlatform&) = delete;

    support::Platform& Surroundings() { return platform_; }
    update::Surroundings UpdateSurroundings() { return {*this, *this}; }

  private:
    bool RequestRunning() const override;
    std::wstring GetUrl(const std::wstring& url, int limitSeconds) override;
    bool GetHttpFile(const std::wstring& url, const std::wstring& targetFile,
                     const std::wstring& progressCaption) override;
    void StopRequest() override;

    int ShowMessage(const std::wstring& text, int style, const std::wstring& title) override;
    void SetClipboardText(const std::wstring& text) override;
    int OpenWithShell(const std::wstring& file, const std::wstring& workingDirectory) override;

    void ShowProgress(const std::wstring& caption, const std::wstring& text) override;
    void HideProgress() override;
    void PumpMessages() override;

    update::UpdateChoice AskUpdateChoice(const std::wstring& caption, const std::wstring& dataFolder,
                                         bool internetIsAvailable) override;
    void ShowZipStatus(const std::wstring& title, const std::wstring& text, const std::wstring& status) override;
    void HideZipStatus() override;

    mail::MailResult SendMail(const mail::MailMessage& message) override;

    support::WindowsMachine machine_;
    support::Platform platform_{*this, *this, *this, machine_, {}};
    http::Transport transport_;
    dialogs::ProgressWindow progress_{platform_, [this] { StopRequest(); }};
    dialogs::ZipForm zipForm_{platform_};
};

} // namespace quorvex::server
