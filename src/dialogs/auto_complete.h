#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace quorvex::dialogs {

inline constexpr int kKeyBackspace = 8;
inline constexpr int kKeyEnter = 13;
inline constexpr int kFirstPrintableKey = 32;

// Text, caret and selection of a combo's edit field. With a selection the caret counts as standing at its beginning.
struct ComboText {
    std::wstring text;
    std::size_t caret = 0;
    std::size_t selected = 0;
};

// The whole text of the first item that begins with the typed text, case ignored.
using FindComboItem = std::function<std::optional<std::wstring>(const std::wstring& typed)>;

// What one key makes of a combo's text: the first item that begins with what is typed, its rest selected. Returns the
// key that the combo is to process: 13 for Enter, 0 (used up) for all others.
int AutoCompleteText(ComboText& combo, int keyAscii, const FindComboItem& findItem);

} // namespace quorvex::dialogs
