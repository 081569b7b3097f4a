#pragma once

#include "http/step_signal_win.h"

#include <windows.h>
#include <winhttp.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace quorvex::http {

class HttpSession;

// One asynchronous GET, step by step: Send, ReceiveResponse, then AwaitData and Read until nothing comes. Each step is
// started by a call that returns at once, and ends when StepDone() is raised. Giving the object up at any point
// abandons the request.
class HttpRequest {
  public:
    // networkMilliseconds: after this silence the system itself gives up, so that an abandoned request does not stay
    // for ever. Throws support::Error, also if the URL is not http or
    // https.
    HttpRequest(std::shared_ptr<HttpSession> session, const std::wstring& url, int networkMilliseconds);
    ~HttpRequest();
    HttpRequest(const HttpRequest&) = delete;
    HttpRequest& operator=(const HttpRequest&) = delete;

    // False when the step failed at once.
    bool Send();
    bool ReceiveResponse();
    bool AwaitData(); // ends when there are bytes to read, or none will come
    bool Read();      // takes what AwaitData found

    StepSignal& StepDone();
    // The system's number of the failure of the last step, 0 when it went well.
    DWORD Error() const;
    // The bytes that the last Read brought; empty when there are no more. Valid until the next step.
    std::string_view Piece() const;

    // Known after ReceiveResponse.
    DWORD Status() const;
    std::wstring ContentType() const;
    // Length of the whole body; 0 when the reply does not state it.
    std::uint64_t ContentLength() const;

  private:
    struct State;
    static void CALLBACK OnStatus(HINTERNET handle, DWORD_PTR context, DWORD status, void* info, DWORD length) noexcept;
    void Configure(int networkMilliseconds);
    void UseProxy(const std::wstring& url);
    bool Started(BOOL ok);
    std::wstring Header(DWORD which) const;

    std::shared_ptr<HttpSession> session_;
    std::shared_ptr<State> state_;
    HINTERNET connection_ = nullptr;
    HINTERNET request_ = nullptr;
    DWORD_PTR context_ = 0;
};

} // namespace quorvex::http
