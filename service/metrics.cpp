#include "service/metrics.h"

#include "support/text.h"

namespace quorvex::service {
namespace {

std::string NumberOf(double value) {
    return support::ToUtf8(support::NumberText(value));
}

std::string Described(const std::string& name, const char* type, const char* help) {
    return "# HELP " + name + " " + help + "\n# TYPE " + name + " " + type + "\n";
}

std::int64_t MinuteOf(Metrics::Clock::duration time) {
    return std::chrono::duration_cast<std::chrono::minutes>(time).count();
}

} // namespace

std::string MetricText(const std::string& name, const char* type, const char* help, double value) {
    return Described(name, type, help) + name + " " + NumberOf(value) + "\n";
}

// Empties the minutes that passed without a request.
Metrics::Minute& Metrics::ThisMinute() {
    const std::int64_t now = MinuteOf(Clock::now() - start_);
    for (std::int64_t step = 0; minute_ < now && step < static_cast<std::int64_t>(kMinutes); ++step)
        minutes_[static_cast<std::size_t>(++minute_) % kMinutes] = {};
    if (minute_ < now) { // longer ago than all that is kept
        minutes_ = {};
        minute_ = now;
    }
    return minutes_[static_cast<std::size_t>(minute_) % kMinutes];
}

void Metrics::Note(const std::string& page, int status, const std::string& result, int credits,
                   std::chrono::microseconds time) {
    const double seconds = std::chrono::duration<double>(time).count();
    std::size_t bucket = 0;
    while (bucket < kBounds.size() && seconds > kBounds[bucket]) ++bucket;
    const std::lock_guard lock(mutex_);
    ++requests_[page][{status, result}];
    ++times_[bucket];
    seconds_ += seconds;
    credits_ += static_cast<std::uint64_t>(credits);
    Minute& minute = ThisMinute();
    ++minute.requests;
    minute.errors += status >= 400 ? 1 : 0;
    minute.seconds += seconds;
}

void Metrics::NoteRejected(int status) {
    const std::lock_guard lock(mutex_);
    ++rejected_[status];
    ++ThisMinute().errors;
}

std::vector<Metrics::Minute> Metrics::LastHour() const {
    const std::lock_guard lock(mutex_);
    const std::int64_t now = MinuteOf(Clock::now() - start_);
    std::vector<Minute> hour(kMinutes);
    for (std::size_t i = 0; i < kMinutes; ++i) {
        const std::int64_t minute = now - static_cast<std::int64_t>(kMinutes - 1 - i);
        if (minute >= 0 && minute <= minute_ && minute_ - minute < static_cast<std::int64_t>(kMinutes))
            hour[i] = minutes_[static_cast<std::size_t>(minute) % kMinutes];
    }
    return hour;
}

std::string Metrics::Text() const {
    const std::lock_guard lock(mutex_);
    std::string text = Described("quorvex_requests_total", "counter", "Requests answered.");
    for (const auto& [page, counts] : requests_) {
        for (const auto& [key, count] : counts) {
            text += "quorvex_requests_total{page=\"" + page + "\",status=\"" + std::to_string(key.first) +
                    "\",result=\"" + key.second + "\"} " + std::to_string(count) + "\n";
        }
    }
    text += Described("quorvex_requests_rejected_total", "counter", "Requests that could not be read.");
    for (const auto& [status, count] : rejected_) {
        text += "quorvex_requests_rejected_total{status=\"" + std::to_string(status) + "\"} " + std::to_string(count) +
                "\n";
    }
    text += Described("quorvex_request_seconds", "histogram", "Time from a request's last byte to its answer.");
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i <= kBounds.size(); ++i) {
        sum += times_[i];
        text += "quorvex_request_seconds_bucket{le=\"" + (i < kBounds.size() ? NumberOf(kBounds[i]) : "+Inf") + "\"} " +
                std::to_string(sum) + "\n";
    }
    text += "quorvex_request_seconds_sum " + NumberOf(seconds_) + "\nquorvex_request_seconds_count " +
            std::to_string(sum) + "\n";
    text += MetricText("quorvex_credits_taken_total", "counter", "Credits taken for answers.",
                       static_cast<double>(credits_));
    return text;
}

} // namespace quorvex::service
