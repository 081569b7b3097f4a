#pragma once

#include "dialogs/form_win.h"
#include "dialogs/modal_win.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::dialogs {

// The whole per cent that a progress text ends with ("... 42%"); nothing without one.
std::optional<int> PercentOf(std::wstring_view text);

// The visible part of the internet access window: how far a download is, as text and as a bar, and Command1 to cancel
// it.
class frmInternetAccessForm final : public Form {
  public:
    frmInternetAccessForm(support::Platform& platform, std::function<void()> onCancel, int dpi = 0)
        : Form(platform, dpi), onCancel_(std::move(onCancel)) {}

    // Makes and shows the window, modal to the host until it is gone; the messages run in the waits of the work itself.
    void Open(const std::wstring& caption, const std::wstring& text);
    void SetOnTop();
    // A new caption is a new piece of work: an earlier cancel is over then.
    void SetProgress(const std::wstring& caption, const std::wstring& text);
    void AllowCancel(bool allowed);
    bool CancelRequested() const { return cancelRequested_; }
    void CloseForm();

  protected:
    void CreateControls() override;
    void Layout(int width, int height) override;
    SIZE ClientSize() override;
    void Command(int id, int code, HWND control) override;
    void CloseRequested() override { Cancel(); }

  private:
    void Cancel();

    std::function<void()> onCancel_;
    std::unique_ptr<ModalSession> session_;
    bool cancelAllowed_ = true;
    bool cancelRequested_ = false;
    HWND label_ = nullptr;
    HWND bar_ = nullptr; // shown while the text says a share
    HWND Command1 = nullptr;
};

// The progress window of a platform: shown by the first call, updated by the next ones, gone after Hide.
class ProgressWindow {
  public:
    // onCancel runs when the user presses Cancel; it is to raise the transport's stop flag.
    ProgressWindow(support::Platform& platform, std::function<void()> onCancel)
        : platform_(platform), onCancel_(std::move(onCancel)) {}

    // cancellable: the work that is shown now ends early when the user cancels.
    void Show(const std::wstring& caption, const std::wstring& text, bool cancellable = true);
    void Hide();
    bool CancelRequested() const { return form_ != nullptr && form_->CancelRequested(); }
    HWND Window() const { return form_ == nullptr ? nullptr : form_->Window(); }

  private:
    support::Platform& platform_;
    std::function<void()> onCancel_;
    std::unique_ptr<frmInternetAccessForm> form_;
};

} // namespace quorvex::dialogs
