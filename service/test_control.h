#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>

namespace quorvex::service {

// The control page of "--test": makes following answers misbehave, and tells what was asked.
class TestControl {
  public:
    enum class Mode {
        None,
        Never,     // no answer until reset
        Slow,      // after a while
        Dribble,   // one byte at a time, a while between two
        Cut,       // half of what the length promises, then the connection ends
        Longer,    // Content-Length above what comes
        Shorter,   // Content-Length below what comes
        NoLength,  // no Content-Length; the end of the connection ends the answer
        ErrorPage, // status 500
        NoConfirm, // a reply without its "<confirm>"
        Empty      // no body at all
    };
    struct Order {
        Mode mode = Mode::None;
        std::chrono::milliseconds time{0};
        unsigned resets = 0; // how many there had been when the order was handed out
    };

    // Notes a request and tells how to answer it.
    Order Next(const std::string& target);
    // Waits the order's time; true when it is over, false when a reset since the order or the end of the service came
    // first. No time: until then.
    bool Wait(const Order& order);
    // Whether neither a reset nor the end of the service came since the order.
    bool Stands(const Order& order);
    void Stop();

    // The pages below "/test/"; false when there is no such page or its query cannot be read (answer then says why).
    bool Page(std::string_view target, std::string& answer);

  private:
    bool Give(std::string_view target, std::string& answer);
    void Reset();

    std::mutex mutex_;
    std::condition_variable changed_;
    unsigned resets_ = 0;
    bool stopped_ = false;
    Order order_;
    std::string onlyPath_; // part of the paths that the order is meant for
    int left_ = 0;         // answers that the order is still meant for
    std::size_t count_ = 0;
    std::deque<std::string> targets_; // the latest ones
};

} // namespace quorvex::service
