#pragma once

#include "dialogs/message_form_win.h"
#include "support/message_pump_win.h"
#include "testing/fake_platform.h"

#include <windows.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>

namespace quorvex::testing {

// The settable platform with what the dialogs need of a real one: requests that wait while messages run, real message
// boxes.
class DialogPlatform : public FakePlatform {
  public:
    std::atomic<bool> hold{false};         // requests wait until it is false or they are stopped
    std::atomic<bool> realMessages{false}; // otherwise messages are recorded only
    std::atomic<int> requests{0};
    std::function<void()> atMessage; // called as a recorded message would come up, on the host's thread
    std::atomic<int> stopCount{0};

    bool RequestRunning() const override { return running_; }
    std::wstring GetUrl(const std::wstring& url, int limitSeconds) override {
        ++requests;
        running_ = true;
        stopped_ = false;
        while (hold && !stopped_) {
            if (!support::PumpPendingMessages()) break;
            Sleep(2);
        }
        running_ = false;
        if (stopped_) return L"TimeOut";
        return FakePlatform::GetUrl(url, limitSeconds);
    }
    void StopRequest() override {
        ++stopCount;
        stopped_ = true;
    }
    int ShowMessage(const std::wstring& text, int style, const std::wstring& title) override {
        if (realMessages) return dialogs::TopMostMessageBox(*this, text, style, title);
        if (atMessage) atMessage();
        const std::lock_guard lock(mutex_);
        return FakePlatform::ShowMessage(text, style, title);
    }
    std::vector<Message> Messages() {
        const std::lock_guard lock(mutex_);
        return messages;
    }
    void PumpMessages() override { support::PumpPendingMessages(); }

  private:
    std::mutex mutex_;
    std::atomic<bool> running_{false};
    std::atomic<bool> stopped_{false};
};

// A service reply with so many addresses.
inline std::wstring ListReply(int addresses, const std::wstring& header = {},
                              const std::wstring& street = L"Mill Lane Wisbech") {
    std::wstring records;
    for (int n = 1; n <= addresses; ++n) {
        const std::wstring number = std::to_wstring(n);
        records += L"<record><id>AB1 3CD_" + number + L"_F</id><line>" + number + L" " + street + L"</line></record>";
    }
    return L"<xml><confirm>Yes</confirm>" + header + L"<recordcount>" + std::to_wstring(addresses) +
           L"</recordcount><addressdata>" + records + L"</addressdata></xml>";
}

// A confirmed record.
inline std::wstring RecordReply(const std::wstring& line1) {
    return L"<xml><confirm>Yes</confirm><line1>" + line1 + L"</line1><postcode>AB1 3CD</postcode></xml>";
}

inline std::wstring FailureReply(const std::wstring& error) {
    return L"<xml><confirm>No</confirm><credits_display_text>3 credits left</credits_display_text><errormessage>" +
           error + L"</errormessage></xml>";
}

// An advanced result: so many headings with two lines each.
inline std::wstring TreeReply(int headings, int recordCount) {
    std::wstring records;
    for (int n = 1; n <= headings; ++n) {
        const std::wstring number = std::to_wstring(n);
        records += L"<h>Street " + number + L"</h>";
        for (const wchar_t* house : {L"1", L"2"}) {
            records +=
                L"<l>" + std::wstring(house) + L" Street " + number + L"</l><id>AB1 3CD_" + number + house + L"_F</id>";
        }
    }
    return L"<xml><confirm>Yes</confirm><recordcount>" + std::to_wstring(recordCount) + L"</recordcount><records>" +
           records + L"</records></xml>";
}

} // namespace quorvex::testing
