#include "quorvex/environment.h"

#include "support/text.h"

#include <windows.h>

namespace quorvex::cli {

std::optional<std::string> EnvironmentText(const char* name) {
    const std::wstring wide = support::FromLatin1(name);
    const DWORD needed = GetEnvironmentVariableW(wide.c_str(), nullptr, 0);
    if (needed <= 1) return std::nullopt;
    std::wstring value(needed, L'\0');
    value.resize(GetEnvironmentVariableW(wide.c_str(), value.data(), needed));
    return support::ToUtf8(value);
}

} // namespace quorvex::cli
