#pragma once

#include <windows.h>
#include <winhttp.h>

#include <string>

namespace quorvex::http {

// The proxy that the user's browser settings name for a URL.
struct UserProxy {
    std::wstring servers; // as WINHTTP_PROXY_INFO has them; empty: go directly
    std::wstring bypass;
};

// The user's settings, as WinHttpGetIEProxyConfigForCurrentUser tells them.
struct ProxySettings {
    bool detect = false;
    std::wstring scriptUrl;
    std::wstring servers;
    std::wstring bypass;
};
ProxySettings SettingsOfUser();

// Asks the configuration script or the network's own configuration where the settings say so, and falls back to the
// servers named in them. It may take some seconds at the first URL of a network that does not answer.
UserProxy ProxyOfUser(HINTERNET session, const std::wstring& url, const ProxySettings& settings);

} // namespace quorvex::http
