#pragma once

#include "dialogs/auto_complete.h"
#include "support/platform.h"

#include <windows.h>

namespace quorvex::dialogs {

// One key typed into a combo box with an edit field: completes the text from the combo's own list. Returns the key that
// the combo is to process, 13 or 0. A failure goes to the error log and gives 0.
int AutoCompleteComboBox(const support::Platform& platform, HWND combo, int keyAscii) noexcept;

} // namespace quorvex::dialogs
