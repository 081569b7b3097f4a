#pragma once

#include <string>

namespace quorvex::support {

// Puts a text on the clipboard in place of what is there. False when another program held the clipboard all the time.
bool SetClipboardText(const std::wstring& text);

} // namespace quorvex::support
