#include "service/access_log.h"

#include "service/json_text.h"
#include "support/error.h"
#include "support/text.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>

namespace quorvex::service {
namespace {

std::string Milliseconds(std::chrono::microseconds time) {
    std::array<char, 32> text{};
    const int size = std::snprintf(text.data(), text.size(), "%lld.%03lld", static_cast<long long>(time.count() / 1000),
                                   static_cast<long long>(time.count() % 1000));
    return {text.data(), static_cast<std::size_t>(size)};
}

std::tm Utc(std::chrono::system_clock::time_point now) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    return utc;
}

std::string IsoTime(std::chrono::system_clock::time_point now) {
    const std::tm utc = Utc(now);
    std::array<char, 40> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &utc)};
}

std::string CombinedTime(std::chrono::system_clock::time_point now) {
    const std::tm utc = Utc(now);
    std::array<char, 40> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%d/%b/%Y:%H:%M:%S +0000", &utc)};
}

} // namespace

AccessLog::AccessLog(std::string file, Format format) : name_(std::move(file)), format_(format) {
    Reopen();
}

AccessLog::~AccessLog() {
    if (file_ == nullptr) return;
    std::fflush(file_);
    if (file_ != stdout) std::fclose(file_);
}

void AccessLog::Reopen() {
    if (name_.empty()) return;
    std::FILE* const fresh = name_ == "-" ? stdout : std::fopen(name_.c_str(), "ae");
    if (fresh == nullptr) {
        throw support::Error(
            support::kErrorPathAccess,
            support::FromUtf8("the access log " + name_ + " cannot be written: " + std::strerror(errno)));
    }
    const std::lock_guard lock(mutex_);
    if (file_ != nullptr && file_ != stdout) std::fclose(file_);
    file_ = fresh;
}

std::string AccessLog::Line(const AccessEntry& entry, Format format, std::chrono::system_clock::time_point now) {
    const std::string account = JsonText(entry.account.empty() ? "-" : entry.account);
    if (format == Format::Combined) {
        return entry.client + " - " + account + " [" + CombinedTime(now) + "] \"" + JsonText(entry.method) + " " +
               entry.page + " HTTP/1.1\" " + std::to_string(entry.status) + " " + std::to_string(entry.bytes) +
               " \"-\" \"" + JsonText(entry.agent) + "\" " + entry.result + " " + std::to_string(entry.credits) + " " +
               Milliseconds(entry.time) + "\n";
    }
    const auto sinceEpoch = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count();
    const std::string fraction = std::to_string(1000 + sinceEpoch % 1000).substr(1);
    return "{\"time\":\"" + IsoTime(now) + "." + fraction + "Z\",\"client\":\"" + entry.client + "\",\"key\":\"" +
           account + "\",\"method\":\"" + JsonText(entry.method) + "\",\"page\":\"" + entry.page +
           "\",\"status\":" + std::to_string(entry.status) + ",\"result\":\"" + entry.result +
           "\",\"credits\":" + std::to_string(entry.credits) + ",\"bytes\":" + std::to_string(entry.bytes) +
           ",\"ms\":" + Milliseconds(entry.time) + ",\"request\":\"" + JsonText(entry.request) + "\"}\n";
}

void AccessLog::Write(const AccessEntry& entry) {
    if (name_.empty()) return;
    const std::string line = Line(entry, format_, std::chrono::system_clock::now());
    const std::lock_guard lock(mutex_);
    ++unflushed_;
    if (std::fwrite(line.data(), 1, line.size(), file_) == line.size()) return;
    std::clearerr(file_);
    ++lost_;
}

void AccessLog::Flush() {
    const std::lock_guard lock(mutex_);
    if (file_ == nullptr || unflushed_ == 0) return;
    if (std::fflush(file_) != 0) {
        lost_ += unflushed_;
        std::clearerr(file_);
    }
    unflushed_ = 0;
}

std::uint64_t AccessLog::Lost() const {
    const std::lock_guard lock(mutex_);
    return lost_;
}

} // namespace quorvex::service
