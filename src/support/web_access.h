#pragma once

#include <string>

namespace quorvex::support {

// The web as the portable rooms need it. Nothing here throws.
class WebAccess {
  public:
    virtual ~WebAccess() = default;

    // True while a request waits for its reply.
    virtual bool RequestRunning() const = 0;
    // GET of the URL: the decoded body with every "&amp;" made "&", or "TimeOut" if the reply was not complete within
    // limitSeconds, the user cancelled or the network failed.
    virtual std::wstring GetUrl(const std::wstring& url, int limitSeconds) = 0;
    // Downloads to a file, showing progress under the caption. False if it failed or was cancelled; the target does not
    // exist then.
    virtual bool GetHttpFile(const std::wstring& url, const std::wstring& targetFile,
                             const std::wstring& progressCaption) = 0;
    // Makes the waiting request give up as if it had timed out.
    virtual void StopRequest() = 0;
};

} // namespace quorvex::support
