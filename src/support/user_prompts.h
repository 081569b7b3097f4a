#pragma once

#include <string>

namespace quorvex::support {

// Message-box styles and answers, as Windows numbers them.
inline constexpr int kStyleOk = 0;
inline constexpr int kStyleYesNo = 4;
inline constexpr int kStyleCritical = 16;
inline constexpr int kStyleQuestion = 32;
inline constexpr int kStyleInformation = 64;
inline constexpr int kAnswerOk = 1;
inline constexpr int kAnswerYes = 6;
inline constexpr int kAnswerNo = 7;

// What is shown or handed to the user. Nothing here throws.
class UserPrompts {
  public:
    virtual ~UserPrompts() = default;

    // A message box above all windows; returns the pressed button. An empty title is the component's default title.
    virtual int ShowMessage(const std::wstring& text, int style, const std::wstring& title) = 0;
    virtual void SetClipboardText(const std::wstring& text) = 0;
    // The shell's "open" on a file or address with the given working directory. Returns the shell's result; above 32 is
    // success.
    virtual int OpenWithShell(const std::wstring& file, const std::wstring& workingDirectory) = 0;
};

} // namespace quorvex::support
