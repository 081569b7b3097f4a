#pragma once

#include "dialogs/form_win.h"

#include <string>

namespace quorvex::dialogs {

// The status window that stands while an archive is unpacked.
class ZipForm final : public Form {
  public:
    explicit ZipForm(support::Platform& platform, int dpi = 0) : Form(platform, dpi) {}

    // Does nothing when it stands already.
    void Load();
    void SetCaptions(const std::wstring& title, const std::wstring& text);
    void SetStatus(const std::wstring& status);
    void Unload() { Destroy(); }

  protected:
    void CreateControls() override;
    void Layout(int width, int height) override;
    SIZE ClientSize() override;
    void Command(int, int, HWND) override {}
    void CloseRequested() override {} // it goes when the work is done

  private:
    HWND text_ = nullptr;
    HWND status_ = nullptr;
};

} // namespace quorvex::dialogs
