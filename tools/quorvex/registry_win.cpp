#include "quorvex/registry_win.h"

namespace quorvex::cli {
namespace {

// A key open for reading.
class OpenKey {
  public:
    OpenKey(const RegistryView& view, const std::wstring& key) {
        const REGSAM side = view.is64Bit ? KEY_WOW64_64KEY : KEY_WOW64_32KEY;
        if (RegOpenKeyExW(view.hive, key.c_str(), 0, KEY_READ | side, &key_) != ERROR_SUCCESS) key_ = nullptr;
    }
    ~OpenKey() {
        if (key_ != nullptr) RegCloseKey(key_);
    }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;

    HKEY Get() const { return key_; }

  private:
    HKEY key_ = nullptr;
};

} // namespace

bool RegistryView::HasKey(const std::wstring& key) const {
    return OpenKey(*this, key).Get() != nullptr;
}

std::optional<std::wstring> RegistryView::Text(const std::wstring& key, const wchar_t* name) const {
    const OpenKey open(*this, key);
    if (open.Get() == nullptr) return std::nullopt;
    DWORD bytes = 0;
    constexpr DWORD kTexts = RRF_RT_REG_SZ; // texts with variables come expanded
    if (RegGetValueW(open.Get(), nullptr, name, kTexts, nullptr, nullptr, &bytes) != ERROR_SUCCESS) return std::nullopt;
    std::wstring text(bytes / sizeof(wchar_t) + 1, L'\0');
    bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    if (RegGetValueW(open.Get(), nullptr, name, kTexts, nullptr, text.data(), &bytes) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return text.substr(0, text.find(L'\0'));
}

} // namespace quorvex::cli
