#include "http/deadline.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quorvex::http {
namespace {

constexpr double kDaySeconds = 86400;
constexpr double kLongestSleepSeconds = 1;
// The clock tells whole milliseconds, cut off: a request begun late in one has not had its time yet when the limit's
// number is reached.
constexpr double kClockUnitSeconds = 0.001;

std::chrono::steady_clock::duration Seconds(double seconds) {
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(seconds));
}

} // namespace

Deadline::Deadline(DayClock clock, double limitSeconds)
    : clock_(std::move(clock)), limitSeconds_(limitSeconds), start_(clock_()),
      lastMoment_(std::chrono::steady_clock::now() + Seconds(limitSeconds * kMidnightFactor)) {}

double Deadline::Elapsed() const {
    return clock_() - start_;
}

bool Deadline::Passed() const {
    return Elapsed() > limitSeconds_ + kClockUnitSeconds / 2 || std::chrono::steady_clock::now() >= lastMoment_;
}

int Deadline::MillisecondsToSleep() const {
    const double seconds = std::clamp(limitSeconds_ - Elapsed(), 0.0, kLongestSleepSeconds);
    return static_cast<int>(std::ceil(seconds * 1000)) + 1;
}

int Deadline::LongestMilliseconds() const {
    const bool crossesMidnight = start_ + limitSeconds_ >= kDaySeconds;
    return static_cast<int>(limitSeconds_ * (crossesMidnight ? kMidnightFactor : 1) * 1000);
}

} // namespace quorvex::http
