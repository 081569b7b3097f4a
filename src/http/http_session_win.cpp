#include "http/http_session_win.h"

#include "http/transport_win.h"
#include "object/quorvex.h"
#include "support/error.h"
#include "support/machine_win.h"

namespace quorvex::http {
namespace {

constexpr DWORD kAutomaticProxy = 4; // Windows 8.1 and later: what the user's browser settings say

struct Shared {
    std::atomic<bool> running{false};
    std::atomic<long> outstanding{0};
    HINTERNET session = nullptr; // touched only by the holder of the slot
    std::wstring proxy;
};

Shared& State() {
    static Shared state;
    return state;
}

void CloseKept(Shared& state) {
    if (state.session != nullptr) WinHttpCloseHandle(state.session);
    state.session = nullptr;
}

// Windows 7 and 8 offer TLS 1.2 only when they are told to.
void EnableModernTls(HINTERNET session) {
    const support::WindowsVersion version = support::SystemVersionNumbers();
    if (version.major > 6 || (version.major == 6 && version.minor > 2)) return;
    DWORD protocols =
        WINHTTP_FLAG_SECURE_PROTOCOL_TLS1 | WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_1 | WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2;
    WinHttpSetOption(session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols, sizeof protocols);
}

// The network stack's threads come back through this module's code for the last time when the count of outstanding
// requests is down already, and a process that gives up COM unloads its components without asking them. So the module
// stays from the first request on.
void KeepModuleLoaded() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&KeepModuleLoaded), &module);
}

HINTERNET OpenSession(const std::wstring& proxy) {
    KeepModuleLoaded();
    const std::wstring agent = L"QuorvexLookup/" + object::GetVersion();
    const auto open = [&agent](DWORD access, const wchar_t* name) {
        return WinHttpOpen(agent.c_str(), access, name, WINHTTP_NO_PROXY_BYPASS, WINHTTP_FLAG_ASYNC);
    };
    if (!proxy.empty()) return open(WINHTTP_ACCESS_TYPE_NAMED_PROXY, proxy.c_str());
    const HINTERNET automatic = open(kAutomaticProxy, WINHTTP_NO_PROXY_NAME);
    return automatic != nullptr ? automatic : open(WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, WINHTTP_NO_PROXY_NAME);
}

} // namespace

RequestSlot::RequestSlot() : held_(!State().running.exchange(true)) {}

RequestSlot::~RequestSlot() {
    if (held_) State().running = false;
}

bool RequestRunning() {
    return State().running;
}

std::atomic<long>& OutstandingCounter() {
    return State().outstanding;
}

long OutstandingRequests() {
    return State().outstanding;
}

HINTERNET SessionFor(const std::wstring& proxy) {
    Shared& state = State();
    if (state.session == nullptr || state.proxy != proxy) {
        CloseKept(state);
        state.session = OpenSession(proxy);
        if (state.session == nullptr) {
            throw support::Error(static_cast<long>(GetLastError()), L"Cannot open an HTTP session");
        }
        state.proxy = proxy;
        EnableModernTls(state.session);
    }
    return state.session;
}

} // namespace quorvex::http
