#pragma once

#include "http/deadline.h"
#include "http/request_failure.h"
#include "support/error.h"
#include "support/message_pump_win.h"
#include "support/platform.h"

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <string>

namespace quorvex::http {

class HttpRequest;

// Seconds since midnight of the local clock.
double SecondsSinceMidnight();

// True while a request or download of the calling thread is under way.
bool RequestRunning();
// Requests of this process that the system has not let go of. One that was given up lives on inside the system for a
// while, with a callback still to come: the DLL must not be unloaded before this is 0.
long OutstandingRequests();

// Limits that a test can shorten, and the clock by which they are measured.
struct TransportLimits {
    double downloadSilenceSeconds =
        60; // a download fails when no byte comes for so long; it may take any time otherwise
    DayClock clock = SecondsSinceMidnight;
};

// All web requests of one lookup object. While a request waits, the thread's messages are handled, so that windows stay
// alive and host code may run; what that code asks for in the same thread gets an empty reply. Requests of different
// threads run side by side. A failure is written to the error log. Nothing here throws.
class Transport {
  public:
    // LastState: the transfer's steps under the numbers that hosts' diagnostics know.
    static constexpr std::int16_t kRequesting = 5;
    static constexpr std::int16_t kRequestSent = 6;
    static constexpr std::int16_t kReceivingResponse = 7;
    static constexpr std::int16_t kResponseReceived = 8;
    static constexpr std::int16_t kError = 11;
    static constexpr std::int16_t kComplete = 13; // above the transfer's own states

    explicit Transport(support::Platform& platform, TransportLimits limits = {});
    ~Transport();
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;

    // GET of the URL; the decoded body with every "&amp;" made "&", once from the left. "TimeOut" when the reply was
    // not complete within the limit, the user cancelled, the thread was told to quit, or the network failed (at once
    // then). Empty for an empty URL and while another request of the thread is under way.
    // With Shift and Ctrl held down the call and the return are shown and put on the clipboard.
    std::wstring GetURL(const std::wstring& url, double limitSeconds);

    // Downloads to a file with progress. The bytes gather beside the target under "NAME.part" and take its name when
    // they are complete; an earlier target goes when the reply begins. False when it failed, was cancelled or cut, or
    // the server answered with an error page. A reply without a length gives an empty file and True.
    bool GetHTTPFile(const std::wstring& url, const std::wstring& targetFile, const std::wstring& progressCaption);

    // Asks the request under way to give up; without one it does nothing. From any thread.
    void StopRequest();

    bool Busy() const { return busy_; }
    bool CancelRequested() const { return cancelRequested_; }
    std::int16_t LastState() const { return lastState_; }
    bool ProxyChecked() const { return proxyChecked_; }
    const std::wstring& ReplyText() const { return replyText_; }
    const std::wstring& TargetFile() const { return targetFile_; }
    // Why the last request brought nothing; Kind::None if it did, or has not ended.
    const RequestFailure& Failure() const { return failure_; }

  private:
    // How much longer than the limit the system holds a silent connection: the limit decides, this only clears up.
    static constexpr int kNetworkGraceMilliseconds = 1000;

    void Begin();
    void End();
    // The first reason counts: what follows from it is not the cause.
    void Fail(RequestFailure::Kind kind, DWORD systemError = 0);
    void Fail(const support::Error& error);
    void LogFailure(const std::wstring& url);
    std::wstring FetchText(const std::wstring& url, double limitSeconds);
    bool Download(const std::wstring& url, const std::wstring& progressCaption);
    bool SaveBody(HttpRequest& request, const std::wstring& progressCaption);
    std::wstring NamedProxy();
    void ShowDiagnostics(const wchar_t* heading, const std::wstring& text, const wchar_t* title);
    // Sends and waits until the headers are there.
    bool Ask(HttpRequest& request, const Deadline& deadline);
    // Waits for the next bytes of the body; false when the request failed or was given up.
    bool NextPiece(HttpRequest& request, const Deadline& deadline);
    // Handles a few of the messages that are there; false when the request is to end.
    bool RunMessages(const Deadline& deadline);
    // False, with the reason kept, once the thread is told to quit, the request is cancelled or its time is over.
    bool Continues(support::PumpResult result, const Deadline& deadline);
    bool Succeeded(const HttpRequest& request);
    // False, with the reason kept, if the server sent an error page.
    bool NoteStatus(const HttpRequest& request);
    // Waits until the step that was started is done; false when it failed or was given up.
    bool Finish(HttpRequest& request, bool started, const Deadline& deadline);

    support::Platform& platform_;
    const TransportLimits limits_;
    const HANDLE wake_; // signalled by StopRequest, so that the wait ends at once
    std::atomic<bool> busy_{false};
    std::atomic<bool> cancelRequested_{false};
    std::int16_t lastState_ = 0;
    bool proxyChecked_ = false;
    std::wstring replyText_;
    std::wstring targetFile_;
    RequestFailure failure_;
    ULONGLONG began_ = 0;
};

} // namespace quorvex::http
