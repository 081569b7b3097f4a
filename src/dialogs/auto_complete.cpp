#include "dialogs/auto_complete.h"

#include <algorithm>

namespace quorvex::dialogs {
namespace {

void CaretToEnd(ComboText& combo) {
    combo.caret = combo.text.size();
    combo.selected = 0;
}

void TypeCharacter(ComboText& combo, wchar_t character, const FindComboItem& findItem) {
    std::wstring typed = combo.selected != 0 ? combo.text.substr(0, combo.caret) : combo.text;
    typed += character;
    if (const std::optional<std::wstring> item = findItem(typed)) {
        combo.text = *item;
        combo.caret = std::min(typed.size(), combo.text.size());
        combo.selected = combo.text.size() - combo.caret;
    } else {
        combo.text = std::move(typed);
        CaretToEnd(combo);
    }
}

} // namespace

int AutoCompleteText(ComboText& combo, int keyAscii, const FindComboItem& findItem) {
    combo.caret = std::min(combo.caret, combo.text.size());
    if (keyAscii >= kFirstPrintableKey) {
        TypeCharacter(combo, static_cast<wchar_t>(keyAscii), findItem);
    } else if (keyAscii == kKeyBackspace) {
        if (combo.selected != 0) {
            combo.text.resize(combo.caret);
        } else if (!combo.text.empty()) {
            combo.text.pop_back();
        }
        CaretToEnd(combo);
    } else if (keyAscii == kKeyEnter) {
        CaretToEnd(combo);
        return kKeyEnter;
    } else {
        combo.selected = 0;
    }
    return 0;
}

} // namespace quorvex::dialogs
