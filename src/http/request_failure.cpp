#include "http/request_failure.h"

#include "http/wire_url.h"
#include "support/text.h"

#include <algorithm>

namespace quorvex::http {
namespace {

using Kind = RequestFailure::Kind;

// The system's numbers that have a plain meaning (winhttp.h, winerror.h).
const wchar_t* NetworkCause(std::uint32_t error) {
    switch (error) {
    case 12005: // invalid URL
    case 12006: // unrecognized scheme
        return L"not a web address";
    case 12007:
        return L"host name not resolved";
    case 12029:
        return L"connection refused or host not reachable";
    case 12030:
    case 12152: // invalid server response
        return L"connection broken off by the server or a device on the way";
    case 12002:
    case 10060:
        return L"no answer from the network";
    case 12175: // secure failure
    case 12037: // certificate date
    case 12038: // certificate name
    case 12044: // client certificate needed
    case 12045: // unknown certificate authority
    case 12057: // revocation could not be checked
    case 12157: // secure channel
    case 12169: // invalid certificate
    case 12170: // revoked
        return L"TLS failed";
    case 12166: // bad configuration script
    case 12167: // script could not be loaded
    case 12178: // proxy service
    case 12180: // detection failed
        return L"proxy settings could not be used";
    default:
        return L"network failure";
    }
}

std::wstring Cause(const RequestFailure& failure) {
    if (!failure.detail.empty()) return failure.detail;
    constexpr std::uint32_t kProxyLogin = 407;
    switch (failure.kind) {
    case Kind::TimedOut:
        return L"timed out";
    case Kind::Cancelled:
        return L"cancelled";
    case Kind::Cut:
        return L"reply cut off";
    case Kind::TooLong:
        return L"reply too long";
    case Kind::Status:
        return failure.status == kProxyLogin ? L"the proxy asks for a login" : L"error page";
    case Kind::NotAReply:
        return L"not a reply of the service";
    default:
        return NetworkCause(failure.systemError);
    }
}

const wchar_t* Stage(std::int16_t state) {
    switch (state) {
    case 5:
        return L"connecting and sending";
    case 6:
        return L"waiting for the reply";
    case 7:
    case 8:
        return L"reading the reply";
    case 13:
        return L"after the reply";
    default:
        return L"preparing";
    }
}

bool IsSecret(std::wstring_view name) {
    const std::wstring upper = support::UpperCase(name);
    return upper.ends_with(L"KEY") || upper == L"PASSWORD";
}

} // namespace

std::wstring MaskedUrl(std::wstring_view url) {
    std::wstring masked;
    for (;;) {
        const std::size_t end = std::min(url.find_first_of(L"?&"), url.size());
        const std::wstring_view part = url.substr(0, end);
        const std::size_t equals = part.find(L'=');
        const bool secret = equals != std::wstring_view::npos && IsSecret(part.substr(0, equals));
        masked += secret ? part.substr(0, equals + 1) : part;
        if (secret) masked += L"***";
        if (end == url.size()) return masked;
        masked.push_back(url[end]);
        url.remove_prefix(end + 1);
    }
}

std::wstring DescribeFailure(const RequestFailure& failure, std::wstring_view url) {
    std::wstring text = L"Web request failed: " + Cause(failure) + L"; stage: " + Stage(failure.stage);
    if (failure.systemError != 0) text += L"; Windows error " + std::to_wstring(failure.systemError);
    if (failure.status != 0) text += L"; status " + std::to_wstring(failure.status);
    const auto address = SplitUrl(url);
    text += L"; host " + (address ? address->host + L":" + std::to_wstring(address->port) : std::wstring(L"unknown"));
    return text + L"; " + std::to_wstring(failure.milliseconds) + L" ms; " + MaskedUrl(url);
}

} // namespace quorvex::http
