#include "http/user_proxy_win.h"

#include <utility>

namespace quorvex::http {
namespace {

std::wstring TakeGlobal(LPWSTR text) {
    if (text == nullptr) return {};
    std::wstring taken(text);
    GlobalFree(text);
    return taken;
}

bool Configured(HINTERNET session, const std::wstring& url, DWORD flags, const std::wstring& script, UserProxy& proxy) {
    WINHTTP_AUTOPROXY_OPTIONS options{};
    options.dwFlags = flags;
    if (flags == WINHTTP_AUTOPROXY_AUTO_DETECT) {
        options.dwAutoDetectFlags = WINHTTP_AUTO_DETECT_TYPE_DHCP | WINHTTP_AUTO_DETECT_TYPE_DNS_A;
    } else {
        options.lpszAutoConfigUrl = script.c_str();
    }
    WINHTTP_PROXY_INFO info{};
    // Without the user's credentials first: the service behind the call caches only such answers.
    BOOL found = WinHttpGetProxyForUrl(session, url.c_str(), &options, &info);
    if (!found && GetLastError() == ERROR_WINHTTP_LOGIN_FAILURE) {
        options.fAutoLogonIfChallenged = TRUE;
        found = WinHttpGetProxyForUrl(session, url.c_str(), &options, &info);
    }
    if (!found) return false;
    const bool direct = info.dwAccessType != WINHTTP_ACCESS_TYPE_NAMED_PROXY;
    proxy = {TakeGlobal(info.lpszProxy), TakeGlobal(info.lpszProxyBypass)};
    if (direct) proxy = {};
    return true;
}

} // namespace

ProxySettings SettingsOfUser() {
    WINHTTP_CURRENT_USER_IE_PROXY_CONFIG config{};
    if (!WinHttpGetIEProxyConfigForCurrentUser(&config)) return {};
    return {config.fAutoDetect != FALSE, TakeGlobal(config.lpszAutoConfigUrl), TakeGlobal(config.lpszProxy),
            TakeGlobal(config.lpszProxyBypass)};
}

UserProxy ProxyOfUser(HINTERNET session, const std::wstring& url, const ProxySettings& settings) {
    UserProxy proxy;
    if (settings.detect && Configured(session, url, WINHTTP_AUTOPROXY_AUTO_DETECT, {}, proxy)) return proxy;
    if (!settings.scriptUrl.empty() &&
        Configured(session, url, WINHTTP_AUTOPROXY_CONFIG_URL, settings.scriptUrl, proxy)) {
        return proxy;
    }
    return {settings.servers, settings.bypass};
}

} // namespace quorvex::http
