#pragma once

#include "testing/fake_platform.h"

#include <utility>
#include <vector>

namespace quorvex::testing {

// A platform that also records what an update run asks of its windows and of the mail program.
class UpdatePlatform : public FakePlatform {
  public:
    struct Question {
        std::wstring caption;
        std::wstring dataFolder;
        bool internetIsAvailable = false;
    };
    std::vector<update::UpdateChoice> choices; // in order, then Cancel
    std::vector<Question> questions;
    std::vector<std::pair<std::wstring, std::wstring>> windows; // caption, text of each change of the progress window
    std::vector<std::wstring> downloadCaptions;
    mail::MailResult mailResult;
    std::vector<mail::MailMessage> mails;
    std::function<void()> onPump;
    std::function<void()> onQuestion; // while the dialog is open

    update::UpdateChoice AskUpdateChoice(const std::wstring& caption, const std::wstring& dataFolder,
                                         bool internetIsAvailable) override {
        questions.push_back({caption, dataFolder, internetIsAvailable});
        if (onQuestion) onQuestion();
        return questions.size() <= choices.size() ? choices[questions.size() - 1] : update::UpdateChoice::Cancel;
    }
    void ShowProgress(const std::wstring& caption, const std::wstring& text) override {
        windows.emplace_back(caption, text);
        FakePlatform::ShowProgress(caption, text);
    }
    void PumpMessages() override {
        FakePlatform::PumpMessages();
        if (onPump) onPump();
    }
    bool GetHttpFile(const std::wstring& url, const std::wstring& file, const std::wstring& caption) override {
        downloadCaptions.push_back(caption);
        return FakePlatform::GetHttpFile(url, file, caption);
    }
    mail::MailResult SendMail(const mail::MailMessage& message) override {
        mails.push_back(message);
        return mailResult;
    }
};

} // namespace quorvex::testing
