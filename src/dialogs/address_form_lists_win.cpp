#include "dialogs/address_form_win.h"
#include "dialogs/auto_complete_win.h"
#include "dialogs/combo_win.h"
#include "dialogs/guard_win.h"
#include "support/clipboard_win.h"

#include <windowsx.h>

namespace quorvex::dialogs {
namespace {

constexpr wchar_t kFormProperty[] = L"QuorvexForm";
constexpr wchar_t kProcedureProperty[] = L"QuorvexProcedure";
constexpr WPARAM kCopyKey = 3; // Ctrl+C

WNDPROC FormerProcedure(HWND control) {
    return reinterpret_cast<WNDPROC>(GetPropW(control, kProcedureProperty));
}

POINT PointerIn(HWND control) {
    const DWORD at = GetMessagePos();
    POINT point{GET_X_LPARAM(at), GET_Y_LPARAM(at)};
    ScreenToClient(control, &point);
    return point;
}

} // namespace

// --- Keys --------------------------------------------------------------------------------------------------

void frmAddress::WatchKeys(HWND control) {
    SetPropW(control, kFormProperty, this);
    const LONG_PTR former =
        SetWindowLongPtrW(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&frmAddress::ControlProcedure));
    SetPropW(control, kProcedureProperty, reinterpret_cast<HANDLE>(former));
}

LRESULT CALLBACK frmAddress::ControlProcedure(HWND control, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    const WNDPROC former = FormerProcedure(control);
    auto* const form = static_cast<frmAddress*>(GetPropW(control, kFormProperty));
    if (message == WM_NCDESTROY) {
        RemovePropW(control, kFormProperty);
        RemovePropW(control, kProcedureProperty);
        SetWindowLongPtrW(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(former));
    } else if (form != nullptr && (message == WM_CHAR || message == WM_KEYDOWN)) {
        bool usedUp = false;
        Guarded(form->Host(), [&] { usedUp = form->ControlKey(control, message, wParam); });
        if (usedUp) return 0;
    }
    return CallWindowProcW(former, control, message, wParam, lParam);
}

// True when the key is used up here.
bool frmAddress::ControlKey(HWND control, UINT message, WPARAM key) {
    if (closed_) return false;
    if (PlaceFieldOf(control) != 0) return PlaceKey(control, message, key);
    if (message != WM_CHAR) return false;
    if (key == kCopyKey) {
        if (const std::wstring text = HighlightedText(); !text.empty()) support::SetClipboardText(text);
        return true;
    }
    return control == c_.AddressList && ListKey(key);
}

bool frmAddress::PlaceKey(HWND edit, UINT message, WPARAM key) {
    const HWND combo = GetParent(edit);
    if (key == VK_RETURN) {
        // Comes here only while the list is open; Enter then closes it and goes on to the default button.
        if (message == WM_KEYDOWN) Command3_Click();
        return true;
    }
    if (key == VK_ESCAPE) return message == WM_CHAR || CloseOpenList(combo);
    if (message != WM_CHAR) return false;
    const int result = AutoCompleteComboBox(Host(), combo, static_cast<int>(key));
    advSearch_.Inp_KeyPress(PlaceFieldOf(edit));
    return result == 0;
}

// Esc closes the list and leaves the text; false when no list is open.
bool frmAddress::CloseOpenList(HWND combo) {
    if (SendMessageW(combo, CB_GETDROPPEDSTATE, 0, 0) == 0) return false;
    const std::wstring text = WindowText(combo);
    SendMessageW(combo, CB_SHOWDROPDOWN, FALSE, 0);
    SetTextIfNew(combo, text);
    return true;
}

bool frmAddress::ListKey(WPARAM key) {
    if (key < kFirstPrintableKey) return false;
    const ULONGLONG now = GetTickCount64();
    if (now - typedAt_ > 2ULL * GetDoubleClickTime()) typed_.clear();
    typedAt_ = now;
    typed_ += static_cast<wchar_t>(key);
    GoToTyped();
    return true;
}

// "15" goes to number 15 if there is one, then to what begins so.
void frmAddress::GoToTyped() {
    for (const wchar_t* ending : {L" ", L",", L""}) {
        const std::wstring wanted = typed_ + ending;
        const LRESULT line = SendMessageW(c_.AddressList, LB_FINDSTRING, static_cast<WPARAM>(-1),
                                          reinterpret_cast<LPARAM>(wanted.c_str()));
        if (line == LB_ERR) continue;
        SendMessageW(c_.AddressList, LB_SETCURSEL, static_cast<WPARAM>(line), 0);
        return;
    }
}

std::wstring frmAddress::HighlightedText() const {
    if (view_ == View::Results) return advSearch_.SelectedText();
    const LRESULT line = SendMessageW(c_.AddressList, LB_GETCURSEL, 0, 0);
    return line == LB_ERR ? std::wstring() : LineText(c_.AddressList, static_cast<int>(line));
}

// --- The list of addresses ---------------------------------------------------------------------------------

// False below the last line. The list itself takes any place for one on the nearest line.
bool frmAddress::PointerIsOnLine(int& line) const {
    const POINT at = PointerIn(c_.AddressList);
    const LRESULT nearest = SendMessageW(c_.AddressList, LB_ITEMFROMPOINT, 0, MAKELPARAM(at.x, at.y));
    line = LOWORD(nearest);
    RECT box{};
    if (SendMessageW(c_.AddressList, LB_GETITEMRECT, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(&box)) ==
        LB_ERR) {
        return false;
    }
    return at.y >= box.top && at.y < box.bottom;
}

// A line that is wider than the list shows all of itself where the pointer rests.
void frmAddress::TipForLine() {
    int line = -1;
    if (!PointerIsOnLine(line)) line = -1;
    if (line == tippedLine_) return;
    tippedLine_ = line;
    std::wstring text;
    TTTOOLINFOW tool{};
    tool.cbSize = TTTOOLINFOW_V1_SIZE;
    tool.uFlags = TTF_SUBCLASS;
    tool.hwnd = c_.AddressList;
    RECT client{};
    GetClientRect(c_.AddressList, &client);
    if (line >= 0) {
        SendMessageW(c_.AddressList, LB_GETITEMRECT, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(&tool.rect));
        text = LineText(c_.AddressList, line);
        if (Units().TextSize(text).cx + Units().Scale(4) <= client.right) text.clear();
    }
    tool.lpszText = text.data(); // empty: no tip
    SendMessageW(tip_, TTM_SETTOOLINFOW, 0, reinterpret_cast<LPARAM>(&tool));
}

// --- Results tree ------------------------------------------------------------------------------------------

LRESULT frmAddress::TreeNotify(const NMHDR& header) {
    switch (header.code) {
    case static_cast<UINT>(NM_CLICK):
    case static_cast<UINT>(NM_DBLCLK): {
        TVHITTESTINFO hit{};
        hit.pt = PointerIn(c_.AdvResultsTree);
        clicked_ = TreeView_HitTest(c_.AdvResultsTree, &hit);
        if (clicked_ == nullptr || (hit.flags & TVHT_ONITEM) == 0) return 0;
        TreeView_SelectItem(c_.AdvResultsTree, clicked_);
        TreeClicked(header.code);
        return 0;
    }
    case static_cast<UINT>(TVN_KEYDOWN):
        KillTimer(Window(), kTreeClick);
        // Enter does nothing here; the space bar picks the node for those who work without a mouse.
        if (reinterpret_cast<const NMTVKEYDOWN&>(header).wVKey != VK_SPACE) return 0;
        clicked_ = TreeView_GetSelection(c_.AdvResultsTree);
        TreeClicked(static_cast<UINT>(NM_DBLCLK));
        return 1;
    default:
        return 0;
    }
}

// A click waits for the second one: that would otherwise go to the host's window, once this one has closed.
void frmAddress::TreeClicked(UINT code) {
    KillTimer(Window(), kTreeClick);
    if (code == static_cast<UINT>(NM_CLICK)) {
        SetTimer(Window(), kTreeClick, GetDoubleClickTime(), nullptr);
    } else {
        PostMessageW(Window(), kNodePicked, 0, reinterpret_cast<LPARAM>(clicked_));
    }
}

} // namespace quorvex::dialogs
