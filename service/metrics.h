#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace quorvex::service {

// Counts what was asked and how long it took. Any number of threads.
class Metrics {
  public:
    using Clock = std::chrono::steady_clock;

    void Note(const std::string& page, int status, const std::string& result, int credits,
              std::chrono::microseconds time);
    void NoteRejected(int status);

    struct Minute {
        std::uint64_t requests = 0;
        std::uint64_t errors = 0; // status 400 and above
        double seconds = 0;
    };
    static constexpr std::size_t kMinutes = 60;
    // The last hour, oldest first; the last one is the current minute.
    std::vector<Minute> LastHour() const;

    // The counters in the text format of Prometheus.
    std::string Text() const;

  private:
    static constexpr std::array<double, 10> kBounds = {0.001, 0.0025, 0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 1, 10};

    Minute& ThisMinute();

    mutable std::mutex mutex_;
    std::map<std::string, std::map<std::pair<int, std::string>, std::uint64_t>> requests_; // page; status and result
    std::map<int, std::uint64_t> rejected_;
    std::array<std::uint64_t, kBounds.size() + 1> times_{};
    double seconds_ = 0;
    std::uint64_t credits_ = 0;
    std::array<Minute, kMinutes> minutes_{};
    std::int64_t minute_ = 0; // the one of the latest entry
    Clock::time_point start_ = Clock::now();
};

// One line of the text format with the two lines that say what it is.
std::string MetricText(const std::string& name, const char* type, const char* help, double value);

} // namespace quorvex::service
