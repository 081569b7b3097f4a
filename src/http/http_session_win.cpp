#include "http/http_session_win.h"

#include "http/transport_win.h"
#include "object/quorvex.h"
#include "support/error.h"
#include "support/lock_win.h"
#include "support/machine_win.h"

#include <algorithm>
#include <vector>

namespace quorvex::http {
namespace {

constexpr DWORD kAutomaticProxy = 4; // Windows 8.1 and later: what the user's browser settings say

struct Shared {
    SRWLOCK lock = SRWLOCK_INIT; // guards the two below
    std::vector<DWORD> threads;  // that have a request under way
    std::shared_ptr<HttpSession> session;
    std::atomic<long> outstanding{0};
};

Shared& State() {
    static Shared state;
    return state;
}

// Windows 7 and 8 offer TLS 1.2 only when they are told to.
void EnableModernTls(HINTERNET session) {
    const support::WindowsVersion version = support::SystemVersionNumbers();
    if (version.major > 6 || (version.major == 6 && version.minor > 2)) return;
    DWORD protocols =
        WINHTTP_FLAG_SECURE_PROTOCOL_TLS1 | WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_1 | WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2;
    WinHttpSetOption(session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols, sizeof protocols);
}

HINTERNET Open(DWORD access, const wchar_t* proxy) {
    const std::wstring agent = L"QuorvexLookup/" + object::GetVersion();
    return WinHttpOpen(agent.c_str(), access, proxy, WINHTTP_NO_PROXY_BYPASS, WINHTTP_FLAG_ASYNC);
}

} // namespace

RequestSlot::RequestSlot() {
    Shared& state = State();
    const support::Locked locked(state.lock);
    const DWORD thread = GetCurrentThreadId();
    held_ = std::find(state.threads.begin(), state.threads.end(), thread) == state.threads.end();
    if (held_) state.threads.push_back(thread);
}

RequestSlot::~RequestSlot() {
    if (!held_) return;
    Shared& state = State();
    const support::Locked locked(state.lock);
    std::erase(state.threads, GetCurrentThreadId());
}

bool RequestRunning() {
    Shared& state = State();
    const support::Locked locked(state.lock);
    return std::find(state.threads.begin(), state.threads.end(), GetCurrentThreadId()) != state.threads.end();
}

std::atomic<long>& OutstandingCounter() {
    return State().outstanding;
}

long OutstandingRequests() {
    return State().outstanding;
}

HttpSession::HttpSession(const std::wstring& proxy) : proxy_(proxy) {
    if (!proxy.empty()) {
        handle_ = Open(WINHTTP_ACCESS_TYPE_NAMED_PROXY, proxy.c_str());
    } else {
        handle_ = Open(kAutomaticProxy, WINHTTP_NO_PROXY_NAME);
        asksForProxy_ = handle_ == nullptr;
        if (asksForProxy_) handle_ = Open(WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, WINHTTP_NO_PROXY_NAME);
    }
    if (handle_ == nullptr) throw support::Error(static_cast<long>(GetLastError()), L"Cannot open an HTTP session");
    EnableModernTls(handle_);
}

HttpSession::~HttpSession() {
    WinHttpCloseHandle(handle_);
}

std::shared_ptr<HttpSession> SessionFor(const std::wstring& proxy) {
    Shared& state = State();
    std::shared_ptr<HttpSession> before; // let go of outside the lock
    const support::Locked locked(state.lock);
    if (state.session == nullptr || state.session->Proxy() != proxy) {
        before = std::move(state.session);
        state.session = std::make_shared<HttpSession>(proxy);
    }
    return state.session;
}

} // namespace quorvex::http
