#include "quorvex/service_probe.h"

#include "http/wire_url.h"
#include "object/tag_reader.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <curl/curl.h>

#include <ctime>
#include <memory>

namespace quorvex::cli {
namespace {

std::wstring AdviceFor(CURLcode code) {
    switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return L"check the address and the name server";
    case CURLE_COULDNT_CONNECT:
        return L"the service does not run there, or a firewall refuses the connection";
    case CURLE_OPERATION_TIMEDOUT:
        return L"a firewall or proxy may swallow the request";
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CONNECT_ERROR:
        return L"the certificate is not trusted here, or the clock is wrong";
    default:
        return L"check the address and the network";
    }
}

std::size_t Append(const char* bytes, std::size_t one, std::size_t size, void* body) {
    static_cast<std::string*>(body)->append(bytes, one * size);
    return one * size;
}

std::size_t ReadDate(const char* bytes, std::size_t one, std::size_t size, void* probe) {
    const std::wstring line = support::FromLatin1({bytes, one * size});
    if (support::UpperCase(line).starts_with(L"DATE:")) {
        const std::time_t server = curl_getdate(support::ToUtf8(line.substr(5)).c_str(), nullptr);
        auto& result = *static_cast<Probe*>(probe);
        result.hasDate = server != -1;
        if (result.hasDate) result.clockAhead = static_cast<long long>(std::time(nullptr) - server);
    }
    return one * size;
}

} // namespace

Probe ProbeUrl(const std::wstring& url, int limitSeconds) {
    Probe probe;
    const auto wire = http::SplitUrl(url);
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(), &curl_easy_cleanup);
    if (!wire || !handle) {
        probe.cause = L"is not an http or https address";
        probe.advice = L"check the address";
        return probe;
    }
    const std::string address = support::ToUtf8((wire->secure ? L"https://" : L"http://") + wire->host + L":" +
                                                std::to_wstring(wire->port) + wire->target);
    curl_easy_setopt(handle.get(), CURLOPT_URL, address.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_TIMEOUT, static_cast<long>(limitSeconds));
    curl_easy_setopt(handle.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, &Append);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEDATA, &probe.body);
    curl_easy_setopt(handle.get(), CURLOPT_HEADERFUNCTION, &ReadDate);
    curl_easy_setopt(handle.get(), CURLOPT_HEADERDATA, &probe);
    const CURLcode code = curl_easy_perform(handle.get());
    if (code != CURLE_OK) {
        probe.cause = support::FromUtf8(curl_easy_strerror(code));
        probe.advice = AdviceFor(code);
        return probe;
    }
    long status = 0;
    curl_off_t microseconds = 0;
    curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(handle.get(), CURLINFO_TOTAL_TIME_T, &microseconds);
    probe.status = static_cast<int>(status);
    probe.milliseconds = static_cast<long>(microseconds / 1000);
    return probe;
}

std::wstring NamedProxy() {
    try {
        const std::wstring text = support::DecodeReply(support::ReadFileBytes(L"RegServerProxySettings.xml"), {});
        return std::wstring(support::Trim(object::ReadElement(text, L"Proxy_Port_80")));
    } catch (const support::Error&) {
        return {};
    }
}

} // namespace quorvex::cli
