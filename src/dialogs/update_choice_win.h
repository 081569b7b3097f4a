#pragma once

#include "dialogs/form_win.h"
#include "update/update_windows.h"

#include <string>

namespace quorvex::dialogs {

// The update dialog: download new packages, apply those that are in the folder, or leave it; beside these, a look at
// the state of the data and mail with the logs for support.
class UpdateChoiceForm final : public Form {
  public:
    explicit UpdateChoiceForm(support::Platform& platform, int dpi = 0) : Form(platform, dpi) {}

    // Without internet the first choice cannot be made. Closing the window is Cancel.
    update::UpdateChoice Ask(const std::wstring& caption, const std::wstring& dataFolder, bool internetIsAvailable);

  protected:
    void CreateControls() override;
    void Layout(int width, int height) override;
    SIZE ClientSize() override;
    void Command(int id, int code, HWND control) override;
    void CloseRequested() override { Choose(update::UpdateChoice::Cancel); }
    void Gone() override { Choose(update::UpdateChoice::Cancel); }

  private:
    void Choose(update::UpdateChoice choice);
    int TallButtonHeight() const;

    std::wstring folderText_;
    bool internet_ = false;
    update::UpdateChoice choice_ = update::UpdateChoice::Cancel;
    bool done_ = false;
    HWND question_ = nullptr;
    HWND download_ = nullptr;
    HWND apply_ = nullptr;
    HWND details_ = nullptr;
    HWND sendLogs_ = nullptr;
    HWND cancel_ = nullptr;
};

update::UpdateChoice AskUpdateChoice(support::Platform& platform, const std::wstring& caption,
                                     const std::wstring& dataFolder, bool internetIsAvailable);

} // namespace quorvex::dialogs
