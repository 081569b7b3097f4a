#include "dialogs/auto_complete.h"

#include "support/text.h"

#include <gtest/gtest.h>

#include <vector>

namespace quorvex::dialogs {
namespace {

class AutoComplete : public ::testing::Test {
  protected:
    std::vector<std::wstring> items{L"Bath", L"Cambridge", L"Canterbury", L"Carlisle"};
    ComboText combo;

    int Press(int key) {
        return AutoCompleteText(combo, key, [this](const std::wstring& typed) -> std::optional<std::wstring> {
            for (const std::wstring& item : items) {
                if (support::UpperCase(item).starts_with(support::UpperCase(typed))) return item;
            }
            return std::nullopt;
        });
    }
    void Type(const std::wstring& keys) {
        for (const wchar_t key : keys) EXPECT_EQ(Press(key), 0);
    }
};

TEST_F(AutoComplete, WithoutAMatchWhatWasTypedStays) {
    Type(L"ca");
    EXPECT_EQ(combo.text, L"Cambridge");
    Type(L"z");
    EXPECT_EQ(combo.text, L"Caz"); // "Ca" came from the item, "z" from the key
    EXPECT_EQ(combo.selected, 0u);
    EXPECT_EQ(combo.caret, 3u);
    Type(L"q");
    EXPECT_EQ(combo.text, L"Cazq");
}

TEST_F(AutoComplete, BackspaceTakesTheCompletionFirstAndThenCharacters) {
    Type(L"can");
    EXPECT_EQ(Press(kKeyBackspace), 0);
    EXPECT_EQ(combo.text, L"Can");
    EXPECT_EQ(combo.caret, 3u);
    Press(kKeyBackspace);
    EXPECT_EQ(combo.text, L"Ca");
    Press(kKeyBackspace);
    Press(kKeyBackspace);
    Press(kKeyBackspace); // nothing left to take
    EXPECT_EQ(combo.text, L"");
}

TEST_F(AutoComplete, EnterPassesOnAndOtherControlKeysAreSwallowed) {
    Type(L"ba");
    EXPECT_EQ(Press(kKeyEnter), kKeyEnter);
    EXPECT_EQ(combo.text, L"Bath");
    EXPECT_EQ(combo.caret, 4u);
    EXPECT_EQ(combo.selected, 0u);
    combo.caret = 1;
    combo.selected = 2;
    EXPECT_EQ(Press(3), 0); // Ctrl+C
    EXPECT_EQ(combo.text, L"Bath");
    EXPECT_EQ(combo.selected, 0u);
}

TEST_F(AutoComplete, ACaretOutsideTheTextDoesNoHarm) {
    combo = {L"ab", 9, 1};
    Type(L"c");
    EXPECT_EQ(combo.text, L"abc");
}

} // namespace
} // namespace quorvex::dialogs
