#include "http/transport_win.h"

#include "http/http_request_win.h"
#include "http/http_session_win.h"
#include "http/proxy_file_win.h"
#include "support/error.h"
#include "support/log.h"
#include "support/message_pump_win.h"
#include "support/text.h"
#include "support/window_helpers_win.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace quorvex::http {
namespace {

constexpr wchar_t kTimeOut[] = L"TimeOut";
constexpr double kDaySeconds = 86400;
constexpr DWORD kUnnoticedMilliseconds = 3;
constexpr int kMessageDose = 16;
constexpr ULONGLONG kMessageDoseMilliseconds = 5;
constexpr DWORD kFirstErrorStatus = 400;
// What a 32-bit host can hold several times over; no service page comes near it.
constexpr std::size_t kReplyLimitBytes = 128U * 1024 * 1024;

} // namespace

double SecondsSinceMidnight() {
    SYSTEMTIME time;
    GetLocalTime(&time);
    return time.wHour * 3600.0 + time.wMinute * 60.0 + time.wSecond + time.wMilliseconds / 1000.0;
}

Transport::Transport(support::Platform& platform, TransportLimits limits)
    : platform_(platform), limits_(std::move(limits)), wake_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
    if (wake_ == nullptr) {
        throw support::Error(static_cast<long>(GetLastError()), L"Cannot create an event");
    }
}

Transport::~Transport() {
    CloseHandle(wake_);
}

std::wstring Transport::GetURL(const std::wstring& url, double limitSeconds) {
    const RequestSlot slot;
    if (!slot.Held()) return {};
    Begin();
    if (!url.empty()) {
        try {
            replyText_ = FetchText(url, std::clamp(limitSeconds, 0.0, kDaySeconds));
        } catch (const support::Error& error) {
            Fail(error);
            replyText_ = kTimeOut;
        } catch (const std::exception&) { // no memory for such a reply
            Fail(RequestFailure::Kind::TooLong);
            replyText_ = kTimeOut;
        }
        if (replyText_ == kTimeOut && lastState_ != kComplete) lastState_ = kError;
    }
    End();
    LogFailure(url);
    ShowDiagnostics(L"Return:\r\n", replyText_, L"Postcode Return (on clipboard)");
    return support::ReplaceAll(replyText_, L"&amp;", L"&");
}

void Transport::StopRequest() {
    if (!busy_) return;
    cancelRequested_ = true;
    SetEvent(wake_);
}

void Transport::Begin() {
    lastState_ = 0;
    proxyChecked_ = false;
    cancelRequested_ = false;
    replyText_.clear();
    targetFile_.clear();
    failure_ = {};
    began_ = GetTickCount64();
    busy_ = true;
}

void Transport::End() {
    busy_ = false;
    cancelRequested_ = false;
}

void Transport::Fail(RequestFailure::Kind kind, DWORD systemError) {
    if (failure_.kind != RequestFailure::Kind::None) return;
    failure_.kind = kind;
    failure_.systemError = systemError;
    failure_.stage = lastState_;
    failure_.milliseconds = static_cast<std::int64_t>(GetTickCount64() - began_);
}

void Transport::Fail(const support::Error& error) {
    Fail(RequestFailure::Kind::Network, static_cast<DWORD>(error.Number()));
    if (failure_.detail.empty()) failure_.detail = error.Description();
}

void Transport::LogFailure(const std::wstring& url) {
    if (failure_.kind == RequestFailure::Kind::None) return;
    const long number = failure_.systemError != 0 ? static_cast<long>(failure_.systemError) : support::kErrorTimeOut;
    support::LogError(platform_, support::Error(number, DescribeFailure(failure_, url)));
}

std::wstring Transport::NamedProxy() {
    proxyChecked_ = true;
    return ProxyFromFile();
}

void Transport::ShowDiagnostics(const wchar_t* heading, const std::wstring& text, const wchar_t* title) {
    if (!support::IsKeyDown(VK_SHIFT) || !support::IsKeyDown(VK_CONTROL)) return;
    platform_.user.SetClipboardText(text);
    platform_.user.ShowMessage(heading + text, support::kStyleInformation, title);
}

std::wstring Transport::FetchText(const std::wstring& url, double limitSeconds) {
    const std::wstring proxy = NamedProxy();
    ShowDiagnostics(L"Call:\r\n", url, L"Postcode Call (on clipboard)");
    // From here on: time spent reading the message is not the network's.
    const Deadline deadline(limits_.clock, limitSeconds);
    HttpRequest request(SessionFor(proxy), url, deadline.LongestMilliseconds() + kNetworkGraceMilliseconds);
    if (!Ask(request, deadline)) return kTimeOut;

    lastState_ = kReceivingResponse;
    const std::uint64_t stated = request.ContentLength();
    std::string body;
    if (stated <= kReplyLimitBytes) body.reserve(static_cast<std::size_t>(stated));
    // With the last stated byte the reply is whole: asking for the end, too, would cost a turn of its own.
    while (stated == 0 || body.size() < stated) {
        // A network faster than the reader would never let the wait see a message.
        if (!body.empty() && !RunMessages(deadline)) return kTimeOut;
        if (!NextPiece(request, deadline)) return kTimeOut;
        const std::string_view piece = request.Piece();
        if (piece.empty()) break;
        if (body.size() + piece.size() > kReplyLimitBytes) {
            Fail(RequestFailure::Kind::TooLong);
            return kTimeOut;
        }
        body.append(piece);
    }
    // Half an answer could pass for a whole one (an address list without its end): it counts as none.
    if (body.size() < stated) {
        Fail(RequestFailure::Kind::Cut);
        return kTimeOut;
    }
    if (stated != 0) body.resize(static_cast<std::size_t>(stated));
    lastState_ = kComplete;
    NoteStatus(request); // an error page is still the reply: its text may say more than its number
    return support::DecodeReply(body, support::ToUtf8(request.ContentType()));
}

bool Transport::Ask(HttpRequest& request, const Deadline& deadline) {
    lastState_ = kRequesting;
    if (!Finish(request, request.Send(), deadline)) return false;
    lastState_ = kRequestSent;
    if (!Finish(request, request.ReceiveResponse(), deadline)) return false;
    lastState_ = kResponseReceived;
    return true;
}

// Reading without asking first waits for a full buffer, under some systems inside the call: a server that sends a byte
// now and then would hold the thread.
bool Transport::NextPiece(HttpRequest& request, const Deadline& deadline) {
    return Finish(request, request.AwaitData(), deadline) && Finish(request, request.Read(), deadline);
}

bool Transport::RunMessages(const Deadline& deadline) {
    // A window that never validates itself, or a timer that outruns its handler, keeps the queue full for ever: a few
    // messages at a time, or the rest of the reply would never be read.
    const ULONGLONG end = GetTickCount64() + kMessageDoseMilliseconds;
    support::PumpResult result = support::PumpResult::Ran;
    for (int n = 0; n < kMessageDose && result == support::PumpResult::Ran && GetTickCount64() < end; ++n) {
        result = support::PumpOneMessage();
        if (!Continues(result, deadline)) return false;
    }
    return true;
}

bool Transport::Continues(support::PumpResult result, const Deadline& deadline) {
    if (result == support::PumpResult::Quit || cancelRequested_) {
        Fail(RequestFailure::Kind::Cancelled);
        return false;
    }
    if (!deadline.Passed()) return true;
    Fail(RequestFailure::Kind::TimedOut);
    return false;
}

bool Transport::Succeeded(const HttpRequest& request) {
    if (request.Error() != 0) Fail(RequestFailure::Kind::Network, request.Error());
    return request.Error() == 0;
}

bool Transport::NoteStatus(const HttpRequest& request) {
    if (request.Status() < kFirstErrorStatus) return true;
    failure_.status = request.Status();
    Fail(RequestFailure::Kind::Status);
    return false;
}

bool Transport::Finish(HttpRequest& request, bool started, const Deadline& deadline) {
    if (!started) return Succeeded(request);
    // Most steps are done before anybody could notice that no message was handled.
    StepSignal& done = request.StepDone();
    if (done.WaitBriefly(kUnnoticedMilliseconds)) return Succeeded(request);
    support::PumpResult message = support::PumpResult::Empty;
    while (Continues(message, deadline)) {
        const DWORD milliseconds = static_cast<DWORD>(deadline.MillisecondsToSleep());
        const support::WaitResult result = support::WaitForEitherOrMessages(done.Event(), wake_, milliseconds);
        if (done.Raised()) return Succeeded(request);
        // One at a time: the message may be the click on STOP, and nothing may come after it.
        message = result == support::WaitResult::Messages ? support::PumpOneMessage() : support::PumpResult::Empty;
    }
    return false;
}

} // namespace quorvex::http
