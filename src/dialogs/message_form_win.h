#pragma once

#include "support/platform.h"

#include <windows.h>

#include <optional>
#include <string>

namespace quorvex::dialogs {

inline constexpr int kNoButtonsGiven = -99; // stands for a missing style: a single OK button

// Shows a message above all windows, also those of other programs that are above all others, and returns the code of
// the pressed button. An empty title is the component's default title. Where nobody sees windows (services, web back
// ends) the message goes to the error log and the answer is the cautious one: No, Cancel, otherwise OK.
int TopMostMessageBox(support::Platform& platform, const std::wstring& prompt, int buttons = kNoButtonsGiven,
                      const std::wstring& title = {});

// The same with a line to type into; nothing when the user cancelled.
std::optional<std::wstring> TopMostInputBox(support::Platform& platform, const std::wstring& prompt,
                                            const std::wstring& title, const std::wstring& preset);

// The small window behind both: it takes the front place, shows its message from there and keeps the answer.
class frmTopMessage {
  public:
    enum Kind { MessageBoxKind = 1, InputBoxKind = 2 };

    explicit frmTopMessage(support::Platform& platform) : platform_(platform) {}
    ~frmTopMessage();
    frmTopMessage(const frmTopMessage&) = delete;
    frmTopMessage& operator=(const frmTopMessage&) = delete;

    std::wstring Prompt;
    int Buttons = 0;
    std::wstring Title;
    std::wstring Default;
    Kind DisplayType = MessageBoxKind;

    // Shows the message and returns when it is answered.
    void ShowModal();

    int PressedButton() const { return pressedButton_; } // 0 when no message could be shown
    const std::optional<std::wstring>& TypedText() const { return typedText_; }

  private:
    void Load(HWND host);
    void Activate();

    support::Platform& platform_;
    HWND window_ = nullptr;
    int pressedButton_ = 0;
    std::optional<std::wstring> typedText_;
};

} // namespace quorvex::dialogs
