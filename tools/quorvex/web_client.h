#pragma once

#include "support/platform.h"

#include <memory>
#include <string>

namespace quorvex::cli {

// Web requests of the program: WinHTTP with the component's own transport on Windows, libcurl elsewhere. Nothing
// throws; Ctrl+C ends a request as if it had timed out.
class WebClient {
  public:
    WebClient() = default;
    WebClient(const WebClient&) = delete;
    WebClient& operator=(const WebClient&) = delete;
    virtual ~WebClient() = default;

    // As support::Platform defines them.
    virtual std::wstring GetUrl(const std::wstring& url, int limitSeconds) = 0;
    virtual bool GetHttpFile(const std::wstring& url, const std::wstring& targetFile, const std::wstring& caption) = 0;
};

// The platform shows a download's progress and must outlive the client.
std::unique_ptr<WebClient> MakeWebClient(support::Platform& platform);

} // namespace quorvex::cli
