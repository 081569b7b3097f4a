#pragma once

#include "dialogs/form_win.h"

#include <optional>
#include <string>

namespace quorvex::dialogs {

// A question with a line to type into.
class InputForm final : public Form {
  public:
    explicit InputForm(support::Platform& platform, int dpi = 0) : Form(platform, dpi) {}

    // Nothing when the user cancelled. Shown above all windows when its owner is.
    std::optional<std::wstring> Ask(HWND owner, const std::wstring& prompt, const std::wstring& title,
                                    const std::wstring& preset);

  protected:
    void CreateControls() override;
    void Layout(int width, int height) override;
    SIZE ClientSize() override;
    void Command(int id, int code, HWND control) override;
    void CloseRequested() override { Finish(); }
    void Gone() override { Finish(); }

  private:
    void Finish();

    std::wstring prompt_;
    std::wstring preset_;
    std::optional<std::wstring> answer_;
    bool done_ = false;
    HWND label_ = nullptr;
    HWND text1_ = nullptr;
    HWND ok_ = nullptr;
    HWND cancel_ = nullptr;
};

} // namespace quorvex::dialogs
