#include "service/test_control.h"

#include "service/query.h"
#include "support/text.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace quorvex::service {
namespace {

using Mode = TestControl::Mode;

constexpr std::size_t kKeptTargets = 1000;
constexpr double kLongestWaitMs = 600000;
constexpr int kAlways = std::numeric_limits<int>::max();

constexpr std::array<std::pair<const wchar_t*, Mode>, 10> kModes = {{
    {L"never", Mode::Never},
    {L"slow", Mode::Slow},
    {L"dribble", Mode::Dribble},
    {L"cut", Mode::Cut},
    {L"longer", Mode::Longer},
    {L"shorter", Mode::Shorter},
    {L"nolength", Mode::NoLength},
    {L"error", Mode::ErrorPage},
    {L"noconfirm", Mode::NoConfirm},
    {L"empty", Mode::Empty},
}};

double NumberOr(const std::wstring& text, double otherwise) {
    return support::IsNumber(text) ? support::ParseNumber(text) : otherwise;
}

} // namespace

TestControl::Order TestControl::Next(const std::string& target) {
    const std::string path = PathOf(target);
    const std::lock_guard lock(mutex_);
    ++count_;
    targets_.push_back(target);
    if (targets_.size() > kKeptTargets) targets_.pop_front();
    if (left_ == 0 || path.find(onlyPath_) == std::string::npos) return {};
    if (left_ != kAlways) --left_;
    Order order = order_;
    order.resets = resets_;
    return order;
}

bool TestControl::Wait(const Order& order) {
    std::unique_lock lock(mutex_);
    const auto over = [&] { return stopped_ || resets_ != order.resets; };
    if (order.time.count() > 0) return !changed_.wait_for(lock, order.time, over);
    changed_.wait(lock, over);
    return false;
}

bool TestControl::Stands(const Order& order) {
    const std::lock_guard lock(mutex_);
    return !stopped_ && resets_ == order.resets;
}

void TestControl::Stop() {
    const std::lock_guard lock(mutex_);
    stopped_ = true;
    changed_.notify_all();
}

void TestControl::Reset() {
    ++resets_;
    order_ = {};
    onlyPath_.clear();
    left_ = 0;
    count_ = 0;
    targets_.clear();
    changed_.notify_all();
}

bool TestControl::Give(std::string_view target, std::string& answer) {
    const Query query(target, {"mode", "ms", "count", "page"});
    const auto mode = std::find_if(kModes.begin(), kModes.end(),
                                   [&query](const auto& entry) { return entry.first == query["mode"]; });
    const double ms = NumberOr(query["ms"], query["ms"].empty() ? 0 : -1);
    const double count = NumberOr(query["count"], query["count"].empty() ? 1 : -1);
    if (mode == kModes.end() || ms < 0 || ms > kLongestWaitMs || count < 0 || count > 1e9) {
        answer = "mode=never|slow|dribble|cut|longer|shorter|nolength|error|noconfirm|empty, ms=0 to 600000, "
                 "count=answers (0: until reset), page=part of the path\n";
        return false;
    }
    order_ = {mode->second, std::chrono::milliseconds(static_cast<int>(ms)), 0};
    left_ = count < 1 ? kAlways : static_cast<int>(count);
    onlyPath_ = PathOf(support::ToUtf8(query["page"]));
    answer = "ok\n";
    return true;
}

bool TestControl::Page(std::string_view target, std::string& answer) {
    const std::string page = PathOf(target);
    const std::lock_guard lock(mutex_);
    if (page == "/test/next") return Give(target, answer);
    if (page == "/test/reset") {
        Reset();
        answer = "ok\n";
        return true;
    }
    if (page == "/test/count") {
        answer = std::to_string(count_) + "\n";
        return true;
    }
    if (page == "/test/last") {
        answer = targets_.empty() ? "" : targets_.back() + "\n";
        return true;
    }
    if (page == "/test/requests") {
        for (const std::string& asked : targets_) answer += asked + "\n";
        return true;
    }
    answer = "next, reset, count, last, requests\n";
    return false;
}

} // namespace quorvex::service
