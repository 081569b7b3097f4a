#pragma once

#include "support/platform.h"

#include <string>

namespace quorvex::update {

// The progress window of a run: a caption and a text that change independently. Gone with the object.
class Progress {
  public:
    explicit Progress(support::Platform& platform) : platform_(platform) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { Hide(); }

    void SetCaption(const std::wstring& caption) {
        caption_ = caption;
        Show();
    }
    void SetText(const std::wstring& text) {
        text_ = text;
        Show();
    }
    void Hide() {
        if (shown_) platform_.progress.HideProgress();
        shown_ = false;
    }

  private:
    void Show() {
        shown_ = true;
        platform_.progress.ShowProgress(caption_, text_);
        platform_.progress.PumpMessages();
    }

    support::Platform& platform_;
    std::wstring caption_;
    std::wstring text_;
    bool shown_ = false;
};

} // namespace quorvex::update
