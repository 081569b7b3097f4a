#pragma once

#include <chrono>
#include <thread>

namespace quorvex::testing {

inline constexpr std::chrono::milliseconds kPatience{10000};

// Looks again and again until the condition holds; false if the patience ran out first.
template <typename Condition>
bool WaitUntil(const Condition& condition, std::chrono::milliseconds patience = kPatience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

} // namespace quorvex::testing
