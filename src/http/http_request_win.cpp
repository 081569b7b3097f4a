#include "http/http_request_win.h"

#include "http/http_session_win.h"
#include "http/user_proxy_win.h"
#include "http/wire_url.h"
#include "support/error.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <optional>

namespace quorvex::http {
namespace {

constexpr DWORD kPieceBytes = 65536;

[[noreturn]] void Fail(const wchar_t* what) {
    throw support::Error(static_cast<long>(GetLastError()), what);
}

} // namespace

// What the callback and the waiting side share. It lives until both are done with it: the system may still write into
// the buffer after the waiting side has given up.
struct HttpRequest::State {
    StepSignal done;
    std::atomic<DWORD> error{0};
    std::atomic<DWORD> available{0}; // by the last AwaitData
    std::atomic<DWORD> pieceBytes{0};
    std::array<char, kPieceBytes> piece; // written by the system only
};

HttpRequest::HttpRequest(std::shared_ptr<HttpSession> session, const std::wstring& url, int networkMilliseconds)
    : session_(std::move(session)), state_(std::make_shared<State>()) {
    const std::optional<WireUrl> address = SplitUrl(url);
    if (!address) throw support::Error(ERROR_WINHTTP_INVALID_URL, L"Not a web address");
    connection_ = WinHttpConnect(session_->Handle(), address->host.c_str(), address->port, 0);
    if (connection_ == nullptr) Fail(L"Not a host");
    // The target is escaped already; the system's own escaping would go further.
    const DWORD flags =
        WINHTTP_FLAG_ESCAPE_DISABLE | WINHTTP_FLAG_ESCAPE_DISABLE_QUERY | (address->secure ? WINHTTP_FLAG_SECURE : 0U);
    request_ = WinHttpOpenRequest(connection_, L"GET", address->target.c_str(), nullptr, WINHTTP_NO_REFERER,
                                  WINHTTP_DEFAULT_ACCEPT_TYPES, flags);
    if (request_ == nullptr) {
        const DWORD error = GetLastError();
        WinHttpCloseHandle(connection_);
        throw support::Error(static_cast<long>(error), L"Cannot open a request");
    }
    Configure(networkMilliseconds);
    if (session_->AsksForProxy()) UseProxy(url);
}

void HttpRequest::UseProxy(const std::wstring& url) {
    UserProxy proxy = ProxyOfUser(session_->Handle(), url, SettingsOfUser());
    if (proxy.servers.empty()) return;
    WINHTTP_PROXY_INFO info{WINHTTP_ACCESS_TYPE_NAMED_PROXY, proxy.servers.data(),
                            proxy.bypass.empty() ? nullptr : proxy.bypass.data()};
    WinHttpSetOption(request_, WINHTTP_OPTION_PROXY, &info, sizeof info);
}

void HttpRequest::Configure(int networkMilliseconds) {
    WinHttpSetTimeouts(request_, networkMilliseconds, networkMilliseconds, networkMilliseconds, networkMilliseconds);
    DWORD response = static_cast<DWORD>(networkMilliseconds);
    WinHttpSetOption(request_, WINHTTP_OPTION_RECEIVE_RESPONSE_TIMEOUT, &response, sizeof response);
    // A server that asks for a client certificate gets the answer that there is none, instead of the request failing.
    WinHttpSetOption(request_, WINHTTP_OPTION_CLIENT_CERT_CONTEXT, WINHTTP_NO_CLIENT_CERT_CONTEXT, 0);

    // The callback's own share of the state. Its release is the callback's last act, when the handle is closing.
    auto context = std::make_unique<std::shared_ptr<State>>(state_);
    context_ = reinterpret_cast<DWORD_PTR>(context.get());
    const bool set = WinHttpSetOption(request_, WINHTTP_OPTION_CONTEXT_VALUE, &context_, sizeof context_) &&
                     WinHttpSetStatusCallback(request_, OnStatus,
                                              WINHTTP_CALLBACK_FLAG_ALL_COMPLETIONS | WINHTTP_CALLBACK_FLAG_HANDLES,
                                              0) != WINHTTP_INVALID_STATUS_CALLBACK;
    if (!set) {
        const DWORD error = GetLastError();
        WinHttpCloseHandle(request_);
        WinHttpCloseHandle(connection_);
        throw support::Error(static_cast<long>(error), L"Cannot watch a request");
    }
    static_cast<void>(context.release()); // the callback frees it
    ++OutstandingCounter();
}

HttpRequest::~HttpRequest() {
    WinHttpCloseHandle(request_);
    WinHttpCloseHandle(connection_);
}

void CALLBACK HttpRequest::OnStatus(HINTERNET, DWORD_PTR context, DWORD status, void* info, DWORD length) noexcept {
    auto* const share = reinterpret_cast<std::shared_ptr<State>*>(context);
    if (share == nullptr) return;
    State& state = **share;
    switch (status) {
    case WINHTTP_CALLBACK_STATUS_SENDREQUEST_COMPLETE:
    case WINHTTP_CALLBACK_STATUS_HEADERS_AVAILABLE:
        break;
    case WINHTTP_CALLBACK_STATUS_DATA_AVAILABLE:
        state.available = *static_cast<const DWORD*>(info);
        break;
    case WINHTTP_CALLBACK_STATUS_READ_COMPLETE:
        state.pieceBytes = length;
        break;
    case WINHTTP_CALLBACK_STATUS_REQUEST_ERROR:
        state.error = static_cast<const WINHTTP_ASYNC_RESULT*>(info)->dwError;
        break;
    case WINHTTP_CALLBACK_STATUS_HANDLE_CLOSING:
        delete share;
        --OutstandingCounter();
        return;
    default:
        return;
    }
    state.done.Raise();
}

bool HttpRequest::Started(BOOL ok) {
    if (!ok) state_->error = GetLastError();
    return ok != FALSE;
}

bool HttpRequest::Send() {
    state_->done.Clear();
    return Started(
        WinHttpSendRequest(request_, WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0, 0, context_));
}

bool HttpRequest::ReceiveResponse() {
    state_->done.Clear();
    return Started(WinHttpReceiveResponse(request_, nullptr));
}

bool HttpRequest::AwaitData() {
    state_->done.Clear();
    return Started(WinHttpQueryDataAvailable(request_, nullptr));
}

bool HttpRequest::Read() {
    state_->done.Clear();
    state_->pieceBytes = 0;
    const DWORD bytes = std::clamp<DWORD>(state_->available, 1, kPieceBytes);
    return Started(WinHttpReadData(request_, state_->piece.data(), bytes, nullptr));
}

StepSignal& HttpRequest::StepDone() {
    return state_->done;
}

DWORD HttpRequest::Error() const {
    return state_->error;
}

std::string_view HttpRequest::Piece() const {
    return {state_->piece.data(), state_->pieceBytes};
}

DWORD HttpRequest::Status() const {
    DWORD status = 0;
    DWORD size = sizeof status;
    WinHttpQueryHeaders(request_, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER, WINHTTP_HEADER_NAME_BY_INDEX,
                        &status, &size, WINHTTP_NO_HEADER_INDEX);
    return status;
}

std::wstring HttpRequest::Header(DWORD which) const {
    std::wstring text(64, L'\0');
    for (;;) {
        DWORD bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        if (WinHttpQueryHeaders(request_, which, WINHTTP_HEADER_NAME_BY_INDEX, text.data(), &bytes,
                                WINHTTP_NO_HEADER_INDEX)) {
            text.resize(bytes / sizeof(wchar_t));
            return text;
        }
        const std::size_t needed = bytes / sizeof(wchar_t) + 1;
        if (GetLastError() != ERROR_INSUFFICIENT_BUFFER || needed <= text.size()) return {};
        text.resize(needed);
    }
}

std::wstring HttpRequest::ContentType() const {
    return Header(WINHTTP_QUERY_CONTENT_TYPE);
}

std::uint64_t HttpRequest::ContentLength() const {
    constexpr std::size_t kDigits = 19;                             // all of them fit 64 bits
    if (!Header(WINHTTP_QUERY_TRANSFER_ENCODING).empty()) return 0; // the pieces tell where the body ends
    const std::wstring text = Header(WINHTTP_QUERY_CONTENT_LENGTH);
    if (text.size() > kDigits || text.find_first_not_of(L"0123456789") != std::wstring::npos) return 0;
    std::uint64_t length = 0;
    for (const wchar_t digit : text) length = length * 10 + static_cast<std::uint64_t>(digit - L'0');
    return length;
}

} // namespace quorvex::http
