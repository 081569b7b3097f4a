#pragma once

#include <windows.h>
#include <winhttp.h>

#include <atomic>
#include <memory>
#include <string>

namespace quorvex::http {

// The right of a thread to run a request. A thread has one at a time: host code that runs while it waits cannot begin
// another. Requests of different threads run side by side.
class RequestSlot {
  public:
    RequestSlot();
    ~RequestSlot();
    RequestSlot(const RequestSlot&) = delete;
    RequestSlot& operator=(const RequestSlot&) = delete;

    bool Held() const { return held_; }

  private:
    bool held_;
};

// Requests whose last callback has not come yet; see OutstandingRequests().
std::atomic<long>& OutstandingCounter();

// An asynchronous session of the system with its pooled connections. Requests share it and keep it open.
class HttpSession {
  public:
    // Goes through the given proxy (host:port), or by the user's settings if it is empty. Throws support::Error.
    explicit HttpSession(const std::wstring& proxy);
    ~HttpSession();
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;

    HINTERNET Handle() const { return handle_; }
    const std::wstring& Proxy() const { return proxy_; }
    // True if requests must be told the user's proxy one by one: Windows 7 and 8 have no session that follows the
    // browser's settings.
    bool AsksForProxy() const { return asksForProxy_; }

  private:
    const std::wstring proxy_;
    bool asksForProxy_ = false;
    HINTERNET handle_ = nullptr;
};

// The session of this process for the proxy, kept for the next request. Throws support::Error.
std::shared_ptr<HttpSession> SessionFor(const std::wstring& proxy);

} // namespace quorvex::http
