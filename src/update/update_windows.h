#pragma once

#include "mail/mailer.h"

#include <string>

namespace quorvex::update {

// What the user chose in the update dialog. After ShowDetails and SendLogs the dialog is shown again.
enum class UpdateChoice { Cancel = 0, ApplyFromFolder = 1, Download = 2, ShowDetails = 3, SendLogs = 4 };

// The windows of an update run beside its progress. Nothing here throws.
class UpdateWindows {
  public:
    virtual ~UpdateWindows() = default;

    virtual UpdateChoice AskUpdateChoice(const std::wstring& caption, const std::wstring& dataFolder,
                                         bool internetIsAvailable) = 0;
    // The status window of an extraction: its caption, its text and a line that says what is being done. The first call
    // shows it; HideZipStatus removes it.
    virtual void ShowZipStatus(const std::wstring& title, const std::wstring& text, const std::wstring& status) = 0;
    virtual void HideZipStatus() = 0;
};

// What an update run needs beside the lookup object.
struct Surroundings {
    UpdateWindows& windows;
    mail::Mailer& mailer;
};

} // namespace quorvex::update
