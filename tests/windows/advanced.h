#pragma once

#include "dialogs/combo_win.h"
#include "testing/temp_folder.h"
#include "windows/picker.h"

#include <commctrl.h>

#include <cstring>

namespace quorvex::testing {

// A picker with the advanced view open.
class AdvancedTest : public PickerTest {
  protected:
    TempFolder folder;

    void OpenCriteria(bool errors = false) {
        OpenAdvanced(folder.Text(), L"ADV", errors);
        Find();
        ASSERT_TRUE(Becomes(dialogs::kFrame1, true));
    }
    void OpenFilled(bool errors = false) {
        OpenCriteria(errors);
        FillIn();
    }
    void FillIn() {
        ASSERT_TRUE(Filled(dialogs::kInpPostcodeComb, 2));
        Type(Control(dialogs::kLines0), L"acme ltd*");
        Choose(dialogs::kInpTownComb, L"Bath");
        ASSERT_TRUE(Enabled(dialogs::kADVSearchFindButton, true));
    }
    // As a user picks an item from the list.
    void Choose(int combo, const std::wstring& item) {
        SendMessageW(Control(combo), CB_SELECTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(item.c_str()));
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(combo, CBN_SELCHANGE), reinterpret_cast<LPARAM>(Control(combo)));
    }
    HWND Edit(int combo) const { return dialogs::EditOf(Control(combo)); }
    std::wstring Selected(int combo) const {
        DWORD start = 0;
        DWORD end = 0;
        SendMessageW(Edit(combo), EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
        return TextOf(Control(combo)).substr(start, end - start);
    }
    HWND Tree() const { return Control(dialogs::kAdvResultsTree); }
    HTREEITEM Item(UINT relation, HTREEITEM from) const {
        return reinterpret_cast<HTREEITEM>(
            SendMessageW(Tree(), TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(from)));
    }
    bool Expanded(HTREEITEM item) const {
        return (SendMessageW(Tree(), TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item), TVIS_EXPANDED) &
                TVIS_EXPANDED) != 0;
    }
    void ClickItem(HTREEITEM item, int times) {
        RECT box{};
        std::memcpy(&box, &item, sizeof item); // how the message is told its item
        SendMessageW(Tree(), TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&box));
        MouseClick(Tree(), {(box.left + box.right) / 2, (box.top + box.bottom) / 2}, times);
    }
    void SearchTree() {
        ClickId(dialog, dialogs::kADVSearchFindButton);
        ASSERT_TRUE(Becomes(dialogs::kAdvResultsTree, true));
    }
};

} // namespace quorvex::testing
