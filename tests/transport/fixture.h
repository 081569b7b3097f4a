#pragma once

#include "localdata/database.h"
#include "support/platform.h"
#include "transport/socket_server.h"
#include "web/transport_win.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace quorvex::testing {

// Records what the transport shows; a test can act when something is shown.
class RecordingPlatform : public support::Platform {
  public:
    struct Message {
        std::wstring text;
        int style;
        std::wstring title;
    };
    std::vector<Message> messages;
    std::vector<std::wstring> clipboard;
    std::vector<std::pair<std::wstring, std::wstring>> progress;
    int hidden = 0;
    std::function<void()> onProgress;
    std::function<void()> onMessage;

    bool RequestRunning() const override { return false; }
    std::wstring GetUrl(const std::wstring&, int) override { return {}; }
    bool GetHttpFile(const std::wstring&, const std::wstring&, const std::wstring&) override { return false; }
    void StopRequest() override {}
    int ShowMessage(const std::wstring& text, int style, const std::wstring& title) override {
        messages.push_back({text, style, title});
        if (onMessage) onMessage();
        return support::kAnswerOk;
    }
    void SetClipboardText(const std::wstring& text) override { clipboard.push_back(text); }
    int OpenWithShell(const std::wstring&, const std::wstring&) override { return 0; }
    support::UpdateChoice AskUpdateChoice(const std::wstring&, const std::wstring&, bool) override { return {}; }
    void ShowProgress(const std::wstring& caption, const std::wstring& text) override {
        progress.emplace_back(caption, text);
        if (onProgress) onProgress();
    }
    void HideProgress() override { ++hidden; }
    void PumpMessages() override {}
    std::wstring ComputerName() const override { return {}; }
    std::wstring UserName() const override { return {}; }
    support::LocalTime Now() const override { return {}; }
    void SleepMilliseconds(int) const override {}
    std::wstring DriveShareName(wchar_t) const override { return {}; }
    std::wstring DataAccessVersion() const override { return {}; }
    std::wstring SystemVersion() const override { return {}; }
    localdata::DatabaseProvider& Databases() override { throw std::logic_error("no databases here"); }
};

inline constexpr double kShortLimit = 0.6; // seconds, for requests that are to time out
inline constexpr double kLongLimit = 10;   // for those that are not

// Milliseconds that an action takes.
template <typename Action>
double Milliseconds(Action action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// Each test in a current directory of its own, empty and gone afterwards: the proxy file is looked for there.
class TransportTest : public ::testing::Test {
  protected:
    TransportTest();
    ~TransportTest() override;

    std::wstring Path(const std::wstring& name) const { return (folder_ / name).wstring(); }
    std::wstring Get(const std::wstring& url, double limit = kLongLimit) { return transport_.GetURL(url, limit); }

    RecordingPlatform platform_;
    web::Transport transport_{platform_};

  private:
    std::filesystem::path before_;
    std::filesystem::path folder_;
};

// Calls the action from the thread's message loop after some milliseconds, once.
class After {
  public:
    After(unsigned milliseconds, std::function<void()> action);
    ~After();
    After(const After&) = delete;
    After& operator=(const After&) = delete;

    bool Fired() const { return fired_; }

  private:
    static void CALLBACK OnTimer(HWND, UINT, UINT_PTR id, DWORD);

    std::function<void()> action_;
    UINT_PTR id_;
    bool fired_ = false;
};

} // namespace quorvex::testing
