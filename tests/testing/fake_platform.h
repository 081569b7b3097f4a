#pragma once

#include "database/database.h"
#include "mail/mailer.h"
#include "support/error.h"
#include "support/platform.h"
#include "update/update_windows.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quorvex::testing {

// A platform made of answers that a test sets and records that it reads. Time moves only when told to.
class FakePlatform : public support::WebAccess,
                     public support::UserPrompts,
                     public support::ProgressDisplay,
                     public support::Machine,
                     public update::UpdateWindows,
                     public mail::Mailer,
                     public database::DatabaseProvider,
                     public support::Platform {
  public:
    FakePlatform() : support::Platform{*this, *this, *this, *this, {}} {}
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    update::Surroundings UpdateSurroundings() { return {*this, *this}; }

    // --- Web ---------------------------------------------------------------------------------------------------
    std::map<std::wstring, std::wstring> replies;                  // by URL, asked first
    std::function<std::wstring(const std::wstring& url)> onGetUrl; // asked next; without both the reply is "TimeOut"
    std::function<bool(const std::wstring& url, const std::wstring& file)> onGetHttpFile;
    std::vector<std::wstring> urls;
    std::vector<int> limits;
    std::vector<std::pair<std::wstring, std::wstring>> downloads; // URL, target file
    bool requestRunning = false;
    int stops = 0;

    bool RequestRunning() const override { return requestRunning; }
    std::wstring GetUrl(const std::wstring& url, int limitSeconds) override {
        urls.push_back(url);
        limits.push_back(limitSeconds);
        const auto reply = replies.find(url);
        if (reply != replies.end()) return reply->second;
        return onGetUrl ? onGetUrl(url) : L"TimeOut";
    }
    bool GetHttpFile(const std::wstring& url, const std::wstring& targetFile, const std::wstring&) override {
        downloads.emplace_back(url, targetFile);
        return onGetHttpFile && onGetHttpFile(url, targetFile);
    }
    void StopRequest() override { ++stops; }

    // --- User --------------------------------------------------------------------------------------------------
    struct Message {
        std::wstring text;
        int style = 0;
        std::wstring title;
    };
    std::vector<Message> messages;
    std::vector<int> answers; // to the messages in order, then kAnswerOk
    std::vector<std::wstring> clipboard;
    std::vector<std::pair<std::wstring, std::wstring>> opened; // file or address, working directory
    int shellResult = 33;
    update::UpdateChoice updateChoice = update::UpdateChoice::Cancel;
    std::vector<std::wstring> progress;
    bool progressShown = false;
    std::vector<std::wstring> zipStatus; // title, text and status of each change
    bool zipStatusShown = false;
    int pumps = 0;

    int ShowMessage(const std::wstring& text, int style, const std::wstring& title) override {
        messages.push_back({text, style, title});
        return messages.size() <= answers.size() ? answers[messages.size() - 1] : support::kAnswerOk;
    }
    void SetClipboardText(const std::wstring& text) override { clipboard.push_back(text); }
    int OpenWithShell(const std::wstring& file, const std::wstring& workingDirectory) override {
        opened.emplace_back(file, workingDirectory);
        return shellResult;
    }
    update::UpdateChoice AskUpdateChoice(const std::wstring&, const std::wstring&, bool) override {
        return updateChoice;
    }
    void ShowProgress(const std::wstring&, const std::wstring& text) override {
        progress.push_back(text);
        progressShown = true;
    }
    void HideProgress() override { progressShown = false; }
    void ShowZipStatus(const std::wstring& title, const std::wstring& text, const std::wstring& status) override {
        zipStatus.push_back(title + L"|" + text + L"|" + status);
        zipStatusShown = true;
    }
    void HideZipStatus() override { zipStatusShown = false; }
    void PumpMessages() override { ++pumps; }
    mail::MailResult SendMail(const mail::MailMessage&) override { return {}; }

    // --- Machine -----------------------------------------------------------------------------------------------
    std::wstring computerName = L"COUNTER-1";
    std::wstring userName = L"clerk";
    support::LocalTime now{2026, 3, 7, 9, 5, 8, 6}; // a Saturday
    mutable std::vector<int> sleeps;                // milliseconds; nobody waits
    std::map<wchar_t, std::wstring> shares;
    std::wstring dataAccessVersion = L"2.81.1117.0";
    std::wstring systemVersion = L"10.0";

    std::wstring ComputerName() const override { return computerName; }
    std::wstring UserName() const override { return userName; }
    support::LocalTime Now() const override { return now; }
    void SleepMilliseconds(int milliseconds) const override { sleeps.push_back(milliseconds); }
    std::wstring DriveShareName(wchar_t driveLetter) const override {
        const auto share = shares.find(driveLetter);
        return share == shares.end() ? std::wstring() : share->second;
    }
    std::wstring DataAccessVersion() const override { return dataAccessVersion; }
    std::wstring SystemVersion() const override { return systemVersion; }

    // --- Local data --------------------------------------------------------------------------------------------
    database::DatabaseProvider* databases = nullptr;

    database::DatabaseProvider& Databases() const {
        if (databases == nullptr) throw support::Error(support::kErrorInternal, L"This test has no databases");
        return *databases;
    }
    std::unique_ptr<database::Connection> CreateConnection() override { return Databases().CreateConnection(); }
    std::unique_ptr<database::Recordset> CreateRecordset() override { return Databases().CreateRecordset(); }
    std::wstring Name() const override { return Databases().Name(); }
};

} // namespace quorvex::testing
