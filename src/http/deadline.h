#pragma once

#include <chrono>
#include <functional>

namespace quorvex::http {

// Seconds since midnight, local time.
using DayClock = std::function<double()>;

// When a waiting request has had its time. The limit is measured with the seconds-since-midnight clock, so a request
// that crosses midnight does not time out by it: intended. Such a request ends at the latest after kMidnightFactor
// limits by a clock that only runs forward, so that a dead connection does not hold the host until the next day.
class Deadline {
  public:
    Deadline(DayClock clock, double limitSeconds);

    bool Passed() const;
    // How long to sleep before it is worth asking again: the time left, at most one second.
    int MillisecondsToSleep() const;
    // The longest that this request can take, in milliseconds.
    int LongestMilliseconds() const;

    static constexpr double kMidnightFactor = 10;

  private:
    double Elapsed() const; // by the day's clock; negative after midnight

    DayClock clock_;
    double limitSeconds_;
    double start_;
    std::chrono::steady_clock::time_point lastMoment_;
};

} // namespace quorvex::http
