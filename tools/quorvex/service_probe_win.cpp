#include "quorvex/service_probe.h"

#include "http/proxy_file_win.h"
#include "http/wire_url.h"
#include "support/text.h"

#include <windows.h>
#include <winhttp.h>

#include <memory>
#include <type_traits>

namespace quorvex::cli {
namespace {

struct CloseHandle {
    void operator()(HINTERNET handle) const { WinHttpCloseHandle(handle); }
};
using Handle = std::unique_ptr<std::remove_pointer_t<HINTERNET>, CloseHandle>;

struct Explanation {
    const wchar_t* cause;
    const wchar_t* advice;
};

Explanation Explain(DWORD error) {
    switch (error) {
    case ERROR_WINHTTP_NAME_NOT_RESOLVED:
        return {L"the host's name is not known", L"check the address and the name server"};
    case ERROR_WINHTTP_CANNOT_CONNECT:
        return {L"no connection", L"the service does not run there, or a firewall refuses the connection"};
    case ERROR_WINHTTP_TIMEOUT:
        return {L"no answer in time", L"a firewall or proxy may swallow the request"};
    case ERROR_WINHTTP_SECURE_FAILURE:
        return {L"the secure connection failed", L"the certificate is not trusted here, or the clock is wrong"};
    default:
        return {L"the request failed", L"check the address and the network"};
    }
}

Probe Failed() {
    const DWORD error = GetLastError();
    const Explanation explanation = Explain(error);
    Probe probe;
    probe.cause = std::wstring(explanation.cause) + L" (" + std::to_wstring(error) + L")";
    probe.advice = explanation.advice;
    return probe;
}

DWORD Status(HINTERNET request) {
    DWORD status = 0;
    DWORD size = sizeof(status);
    WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER, WINHTTP_HEADER_NAME_BY_INDEX,
                        &status, &size, WINHTTP_NO_HEADER_INDEX);
    return status;
}

void CompareClock(HINTERNET request, Probe& probe) {
    SYSTEMTIME server{};
    DWORD size = sizeof(server);
    probe.hasDate = WinHttpQueryHeaders(request, WINHTTP_QUERY_DATE | WINHTTP_QUERY_FLAG_SYSTEMTIME,
                                        WINHTTP_HEADER_NAME_BY_INDEX, &server, &size, WINHTTP_NO_HEADER_INDEX) != 0;
    if (!probe.hasDate) return;
    FILETIME theirs;
    FILETIME ours;
    SystemTimeToFileTime(&server, &theirs);
    GetSystemTimeAsFileTime(&ours);
    const auto seconds = [](const FILETIME& time) {
        return static_cast<long long>(
            ((static_cast<unsigned long long>(time.dwHighDateTime) << 32) | time.dwLowDateTime) / 10000000U);
    };
    probe.clockAhead = seconds(ours) - seconds(theirs);
}

bool ReadBody(HINTERNET request, std::string& body) {
    constexpr std::size_t kMost = 1U << 20;
    for (;;) {
        char piece[4096];
        DWORD read = 0;
        if (!WinHttpReadData(request, piece, sizeof(piece), &read)) return false;
        if (read == 0 || body.size() > kMost) return true;
        body.append(piece, read);
    }
}

Handle OpenSession(int limitMilliseconds) {
    const std::wstring proxy = NamedProxy();
    Handle session(WinHttpOpen(L"quorvex",
                               proxy.empty() ? WINHTTP_ACCESS_TYPE_DEFAULT_PROXY : WINHTTP_ACCESS_TYPE_NAMED_PROXY,
                               proxy.empty() ? WINHTTP_NO_PROXY_NAME : proxy.c_str(), WINHTTP_NO_PROXY_BYPASS, 0));
    if (session) {
        WinHttpSetTimeouts(session.get(), limitMilliseconds, limitMilliseconds, limitMilliseconds, limitMilliseconds);
    }
    return session;
}

} // namespace

Probe ProbeUrl(const std::wstring& url, int limitSeconds) {
    const auto wire = http::SplitUrl(url);
    if (!wire) {
        Probe probe;
        probe.cause = L"is not an http or https address";
        probe.advice = L"check the address";
        return probe;
    }
    const ULONGLONG began = GetTickCount64();
    const Handle session = OpenSession(limitSeconds * 1000);
    const Handle connection(session ? WinHttpConnect(session.get(), wire->host.c_str(), wire->port, 0) : nullptr);
    const Handle request(
        connection ? WinHttpOpenRequest(connection.get(), L"GET", wire->target.c_str(), nullptr, WINHTTP_NO_REFERER,
                                        WINHTTP_DEFAULT_ACCEPT_TYPES,
                                        WINHTTP_FLAG_ESCAPE_DISABLE | (wire->secure ? WINHTTP_FLAG_SECURE : 0U))
                   : nullptr);
    Probe probe;
    const bool answered =
        request &&
        WinHttpSendRequest(request.get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0, 0, 0) &&
        WinHttpReceiveResponse(request.get(), nullptr) && ReadBody(request.get(), probe.body);
    if (!answered) return Failed();
    probe.status = static_cast<int>(Status(request.get()));
    probe.milliseconds = static_cast<long>(GetTickCount64() - began);
    CompareClock(request.get(), probe);
    return probe;
}

std::wstring NamedProxy() {
    return http::ProxyFromFile();
}

} // namespace quorvex::cli
