#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace quorvex::cli {

// One hive as programs of one bitness see it.
struct RegistryView {
    HKEY hive = HKEY_LOCAL_MACHINE;
    bool is64Bit = true;

    bool HasKey(const std::wstring& key) const;
    // A text value, the default one for nullptr; nothing if it is not there.
    std::optional<std::wstring> Text(const std::wstring& key, const wchar_t* name) const;
};

} // namespace quorvex::cli
