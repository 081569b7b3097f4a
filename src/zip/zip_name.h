#pragma once

#include <string>
#include <string_view>

namespace quorvex::zip {

// The name of a zip entry as text: UTF-8 when the entry says so, otherwise ASCII only. Throws Error for other bytes.
std::wstring DecodeEntryName(std::string_view bytes, bool isUtf8);

// True when the name is a plain file name on every Windows file system: no folder, drive or stream, no reserved device,
// no character that Windows refuses, no blank or full stop at its end.
bool IsPlainFileName(std::wstring_view name);

} // namespace quorvex::zip
