#include "com/browser_capture.h"

#include "testing/wait.h"
#include <windows.h>

#include <fstream>

namespace quorvex::testing {
namespace {

std::wstring DefaultValue(const wchar_t* key) {
    std::array<wchar_t, 1024> text{};
    DWORD bytes = sizeof text;
    RegGetValueW(HKEY_LOCAL_MACHINE, key, nullptr, RRF_RT_ANY | RRF_NOEXPAND, nullptr, text.data(), &bytes);
    return text.data();
}

void SetDefaultValue(const wchar_t* key, const std::wstring& text) {
    const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, key, nullptr, REG_SZ, text.c_str(), bytes), ERROR_SUCCESS);
}

} // namespace

BrowserCapture::BrowserCapture() {
    for (std::size_t i = 0; i < kKeys.size(); ++i) {
        before_[i] = DefaultValue(kKeys[i]);
        SetDefaultValue(kKeys[i], L"cmd.exe /c echo \"%1\">>\"" + folder_.File(L"opened.txt") + L"\"");
    }
}

BrowserCapture::~BrowserCapture() {
    for (std::size_t i = 0; i < kKeys.size(); ++i) SetDefaultValue(kKeys[i], before_[i]);
}

std::vector<std::string> BrowserCapture::Opened(std::size_t count) const {
    std::vector<std::string> lines;
    WaitUntil([&] {
        lines.clear();
        std::ifstream file(folder_.Path() / L"opened.txt");
        for (std::string line; std::getline(file, line);) {
            while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.pop_back();
            lines.push_back(line);
        }
        return lines.size() >= count;
    });
    return lines;
}

} // namespace quorvex::testing
