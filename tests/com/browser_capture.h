#pragma once

#include "testing/temp_folder.h"

#include <array>
#include <string>
#include <vector>

namespace quorvex::testing {

// Stands in for the user's browser: notes the addresses that the shell is asked to open.
class BrowserCapture {
  public:
    BrowserCapture();
    ~BrowserCapture();
    BrowserCapture(const BrowserCapture&) = delete;
    BrowserCapture& operator=(const BrowserCapture&) = delete;

    // The addresses so far, waiting until there are so many of them (the handler runs on its own) or 10 seconds are
    // over.
    std::vector<std::string> Opened(std::size_t count) const;

  private:
    static constexpr std::array<const wchar_t*, 2> kKeys = {L"Software\\Classes\\http\\shell\\open\\command",
                                                            L"Software\\Classes\\https\\shell\\open\\command"};
    TempFolder folder_;
    std::array<std::wstring, 2> before_;
};

} // namespace quorvex::testing
