#pragma once

#include "http/transport_win.h"
#include "testing/after_win.h"
#include "testing/fake_platform.h"
#include "testing/temp_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace quorvex::testing {

// Keeps the captions of the progress display, too; a test can act when something is shown.
class ShowingPlatform : public FakePlatform {
  public:
    std::vector<std::wstring> captions;
    std::function<void()> onProgress;
    std::function<void()> onMessage;

    int ShowMessage(const std::wstring& text, int style, const std::wstring& title) override {
        const int answer = FakePlatform::ShowMessage(text, style, title);
        if (onMessage) onMessage();
        return answer;
    }
    void ShowProgress(const std::wstring& caption, const std::wstring& text) override {
        FakePlatform::ShowProgress(caption, text);
        captions.push_back(caption);
        if (onProgress) onProgress();
    }
};

inline constexpr double kShortLimit = 0.6; // seconds, for requests that are to time out
inline constexpr double kLongLimit = 10;   // for those that are not

inline constexpr double kSoon = 2000; // milliseconds; "at once" on a machine that is busy otherwise

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
    TransportTest() { std::filesystem::current_path(folder_.Path()); }
    ~TransportTest() override { std::filesystem::current_path(before_); }

    std::wstring Path(const std::wstring& name) const { return folder_.File(name); }
    std::wstring Get(const std::wstring& url, double limit = kLongLimit) { return transport_.GetURL(url, limit); }

    // The request ends without a reply, soon after its limit or, where none is given, at once. Returns the time taken.
    double ExpectTimeOut(const std::wstring& url, double limit = 0, double soon = kSoon) {
        const double taken =
            Milliseconds([&] { EXPECT_EQ(Get(url, limit > 0 ? limit : kLongLimit), L"TimeOut") << url; });
        EXPECT_LT(taken, limit * 1000 + soon) << url;
        return taken;
    }

    ShowingPlatform platform_;
    http::Transport transport_{platform_};

  private:
    const TempFolder folder_;
    const std::filesystem::path before_ = std::filesystem::current_path();
};

} // namespace quorvex::testing
