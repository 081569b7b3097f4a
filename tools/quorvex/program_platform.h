#pragma once

#include "database/jet/jet_provider.h"
#include "quorvex/console.h"
#include "quorvex/progress_line.h"
#include "quorvex/web_client.h"
#include "support/platform.h"
#include "support/system_machine.h"
#include "update/update_windows.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::cli {

// What the lookups find around them inside the program: nobody to ask, progress on the error stream, the embedded
// engine. Messages are kept for the report instead of being shown.
class ProgramPlatform final : private support::WebAccess,
                              private support::UserPrompts,
                              private support::ProgressDisplay,
                              private update::UpdateWindows,
                              private mail::Mailer {
  public:
    explicit ProgramPlatform(Console& console) : console_(console) {}
    ProgramPlatform(const ProgramPlatform&) = delete;
    ProgramPlatform& operator=(const ProgramPlatform&) = delete;

    support::Platform& Surroundings() { return platform_; }
    update::Surroundings UpdateSurroundings() { return {*this, *this}; }
    database::DatabaseProvider& Databases() { return databases_; }

    update::UpdateChoice updateChoice = update::UpdateChoice::ApplyFromFolder;
    std::vector<std::wstring> messages;

  private:
    bool RequestRunning() const override { return false; }
    std::wstring GetUrl(const std::wstring& url, int limitSeconds) override;
    bool GetHttpFile(const std::wstring& url, const std::wstring& targetFile,
                     const std::wstring& progressCaption) override;
    void StopRequest() override {}

    int ShowMessage(const std::wstring& text, int style, const std::wstring& title) override;
    void SetClipboardText(const std::wstring&) override {}
    int OpenWithShell(const std::wstring&, const std::wstring&) override { return 0; }
    // The choice that was made on the command line.
    update::UpdateChoice AskUpdateChoice(const std::wstring&, const std::wstring&, bool) override {
        return updateChoice;
    }
    void ShowProgress(const std::wstring& caption, const std::wstring& text) override;
    void HideProgress() override { progress_.reset(); }
    void ShowZipStatus(const std::wstring&, const std::wstring&, const std::wstring&) override {}
    void HideZipStatus() override {}
    void PumpMessages() override {}

    mail::MailResult SendMail(const mail::MailMessage&) override { return {}; }

    WebClient& Web();

    Console& console_;
    support::SystemMachine machine_;
    support::Platform platform_{*this, *this, *this, machine_, {}};
    database::JetProvider databases_;
    std::unique_ptr<WebClient> web_; // made for the first request
    std::optional<ProgressLine> progress_;
};

} // namespace quorvex::cli
