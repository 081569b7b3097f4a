#pragma once

#include "dialogs/progress_window_win.h"
#include "dialogs/zip_form_win.h"
#include "http/transport_win.h"
#include "support/platform.h"

namespace quorvex::server {

// The component's surroundings on Windows, one per lookup object.
class WindowsPlatform final : public support::Platform {
  public:
    // The provider must outlive the platform.
    explicit WindowsPlatform(database::DatabaseProvider& databases, http::TransportLimits limits = {});

    bool RequestRunning() const override;
    std::wstring GetUrl(const std::wstring& url, int limitSeconds) override;
    bool GetHttpFile(const std::wstring& url, const std::wstring& targetFile,
                     const std::wstring& progressCaption) override;
    void StopRequest() override;

    int ShowMessage(const std::wstring& text, int style, const std::wstring& title) override;
    void SetClipboardText(const std::wstring& text) override;
    int OpenWithShell(const std::wstring& file, const std::wstring& workingDirectory) override;
    support::UpdateChoice AskUpdateChoice(const std::wstring& caption, const std::wstring& dataFolder,
                                          bool internetIsAvailable) override;
    void ShowProgress(const std::wstring& caption, const std::wstring& text) override;
    void HideProgress() override;
    void ShowZipStatus(const std::wstring& title, const std::wstring& text, const std::wstring& status) override;
    void HideZipStatus() override;
    void PumpMessages() override;
    support::MailResult SendMail(const support::MailMessage& message) override;

    std::wstring ComputerName() const override;
    std::wstring UserName() const override;
    support::LocalTime Now() const override;
    void SleepMilliseconds(int milliseconds) const override;
    std::wstring DriveShareName(wchar_t driveLetter) const override;
    std::wstring DataAccessVersion() const override;
    std::wstring SystemVersion() const override;

    database::DatabaseProvider& Databases() override { return databases_; }

  private:
    database::DatabaseProvider& databases_;
    http::Transport transport_;
    dialogs::ProgressWindow progress_{*this, [this] { StopRequest(); }};
    dialogs::ZipForm zipForm_{*this};
};

} // namespace quorvex::server
