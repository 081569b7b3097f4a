#pragma once

#include <windows.h>
#include <winhttp.h>

#include <atomic>
#include <string>

namespace quorvex::http {

// What all requests of the process share: the right to run the one request, and the session with its pooled
// connections.

// Holds the process's one request while it lives, when nobody held it before.
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

// The asynchronous session that goes through the given proxy (host:port), or by the system's settings when it is empty.
// Kept for the next request. Call it with the slot held only. Throws support::Error.
HINTERNET SessionFor(const std::wstring& proxy);

} // namespace quorvex::http
