#pragma once

#include "support/files.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <system_error>

namespace quorvex::testing {

// A new folder of its own, removed with all its files at the end.
class TempFolder {
  public:
    TempFolder() {
        static std::atomic<int> count{0};
        do { // two processes may look at the clock at the same moment
            const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
            const std::string name = "quorvex-" + std::to_string(now) + "-" + std::to_string(++count);
            folder_ = std::filesystem::temp_directory_path() / name;
        } while (!std::filesystem::create_directory(folder_));
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    const std::filesystem::path& Path() const { return folder_; }
    // As hosts write folders: no separator at the end.
    std::wstring Text() const { return support::FromPath(folder_); }
    std::wstring File(const std::wstring& name) const { return Text() + L"\\" + name; }

  private:
    std::filesystem::path folder_;
};

} // namespace quorvex::testing
