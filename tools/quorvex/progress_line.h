#pragma once

#include "quorvex/console.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace quorvex::cli {

// One line on the error stream that is written over and over, if somebody looks at it; gone with the object.
class ProgressLine {
  public:
    explicit ProgressLine(Console& console) : console_(console) {}
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine();

    // total 0: unknown.
    void Show(std::uint64_t rows, std::uint64_t done, std::uint64_t total);
    void Show(const std::string& text);

  private:
    bool Due();

    Console& console_;
    const std::chrono::steady_clock::time_point began_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point shownAt_{};
    bool shown_ = false;
};

} // namespace quorvex::cli
