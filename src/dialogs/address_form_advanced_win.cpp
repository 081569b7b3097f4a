#include "dialogs/address_form_win.h"

#include "dialogs/auto_complete_win.h"

namespace quorvex::dialogs {
namespace {

// Posted to the dialog itself: what a control reports is acted on when the control is done with it.
constexpr UINT kPlaceChosen = WM_APP + 1; // wParam: field
constexpr UINT kPlaceLeft = WM_APP + 2;   // wParam: field
constexpr wchar_t kHelpTitle[] = L"Help on Advanced Search";

} // namespace

// --- The view ----------------------------------------------------------------------------------------------

void frmAddress::AdvSearchShow() {
    if (Searching()) return;
    if (advSearch_.Busy()) {
        afterwards_ = kADVSearchButton;
        return;
    }
    if (AddressObj.LocalMode()) { // reached by "ADV" in the plain dialog
        AddressObj.platform.user.ShowMessage(L"The Advanced search is not available in Local Mode",
                                             support::kStyleCritical, kErrorTitle);
        return;
    }
    ShowView(View::Criteria);
    SetFocus(c_.Lines[0]);
    advSearch_.OneLostFocus();
    advSearch_.loadcombodata();
}

void frmAddress::ShowTree(const std::wstring& instruction) {
    SetTextIfNew(c_.Label2, instruction);
    ShowView(View::Results);
    SetFocus(c_.AdvResultsTree);
}

void frmAddress::Command11_Click() {
    if (advSearch_.Busy()) AddressObj.platform.web.StopRequest();
    const auto lines = static_cast<std::size_t>(SendMessageW(c_.AddressList, LB_GETCOUNT, 0, 0));
    SetInstruction(lines > 0 ? PickInstruction(lines, listed_) : kEnterPostcode);
    ShowView(View::Postcode);
    SetFocus(c_.InpPostcode);
}

void frmAddress::Command5_Click() {
    advSearch_.ClearFields();
    SetFocus(c_.Lines[0]);
}

void frmAddress::Label10_Click() {
    const int style = support::kStyleYesNo | support::kStyleQuestion;
    if (AddressObj.platform.user.ShowMessage(L"Are you sure you want help?", style, kHelpTitle) != support::kAnswerYes)
        return;
    gotoHelp_ = true;
    SetCaption(kCaptionOpeningHelp);
    AddressObj.platform.progress.PumpMessages();
    Close();
}

// --- Messages ----------------------------------------------------------------------------------------------

bool frmAddress::AdvancedCommand(int id, int code) {
    if (const int field = id - kInpTownComb + lookups::kTown;
        field >= lookups::kTown && field <= lookups::kPostcodeArea) {
        return PlaceCommand(field, code);
    }
    if (const int field = id - kLines0 + lookups::kOrganisation;
        field >= lookups::kOrganisation && field <= lookups::kStreet) {
        if (view_ != View::Criteria) return true;
        if (code == EN_CHANGE) advSearch_.Inp_Keyup(field);
        if (code == EN_KILLFOCUS) advSearch_.Inp_LostFocus(field);
        return true;
    }
    if (code != BN_CLICKED) return false;
    switch (id) {
    case kADVSearchFindButton:
        advSearch_.Find();
        return true;
    case kADVSearchLoadNewLists:
    case kDownloadNewList:
        advSearch_.LoadUpdatedList();
        return true;
    case kCommand5:
        Command5_Click();
        return true;
    case kCommand11:
        Command11_Click();
        return true;
    case kLabel10:
        Label10_Click();
        return true;
    default:
        return false;
    }
}

bool frmAddress::PlaceCommand(int field, int code) {
    if (view_ != View::Criteria) return true;
    if (code == CBN_SELCHANGE) PostMessageW(Window(), kPlaceChosen, static_cast<WPARAM>(field), 0);
    if (code == CBN_EDITCHANGE) advSearch_.Inp_Keyup(field);
    if (code == CBN_KILLFOCUS) PostMessageW(Window(), kPlaceLeft, static_cast<WPARAM>(field), 0);
    return true;
}

LRESULT frmAddress::Notify(const NMHDR& header) {
    return header.hwndFrom == c_.AdvResultsTree && !closed_ ? TreeNotify(header) : 0;
}

std::optional<LRESULT> frmAddress::Message(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_GETMINMAXINFO:
    case WM_ENTERSIZEMOVE:
    case WM_EXITSIZEMOVE:
        return SizeMessage(message, lParam);
    case WM_SETCURSOR:
        if (reinterpret_cast<HWND>(wParam) == c_.AddressList) TipForLine();
        // The STOP button works while all else waits.
        if (waits_ == 0 || reinterpret_cast<HWND>(wParam) == c_.Command2 || LOWORD(lParam) != HTCLIENT)
            return std::nullopt;
        SetCursor(LoadCursorW(nullptr, IDC_WAIT));
        return TRUE;
    case WM_DRAWITEM:
        return DrawHelpLink(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
    case WM_HELP:
        if (view_ != View::Postcode && !closed_) Label10_Click();
        return TRUE;
    case kPlaceChosen:
        if (InCriteria()) advSearch_.Inp_Click(static_cast<int>(wParam));
        return 0;
    case kPlaceLeft:
        if (InCriteria()) CheckPlaceLeft(static_cast<int>(wParam));
        return 0;
    case kNodePicked:
        if (InResults() && TreeView_GetSelection(c_.AdvResultsTree) == reinterpret_cast<HTREEITEM>(lParam))
            advSearch_.SelectFromTree();
        return 0;
    default:
        return std::nullopt;
    }
}

// --- Place fields ------------------------------------------------------------------------------------------

int frmAddress::PlaceFieldOf(HWND control) const {
    for (const int field : {lookups::kTown, lookups::kCounty, lookups::kPostcodeArea}) {
        const HWND combo = advSearch_.PlaceField(field);
        if (control != nullptr && (control == combo || GetParent(control) == combo)) return field;
    }
    return 0;
}

// A place that is no value of its list keeps the focus, unless the user leaves the view, clears it, or turns to another
// window.
void frmAddress::CheckPlaceLeft(int field) {
    const HWND focus = GetFocus();
    if (focus == nullptr || !IsChild(Window(), focus) || PlaceFieldOf(focus) == field) return;
    if (focus == c_.Command11 || focus == c_.Command5 || focus == c_.Label10) return;
    if (advSearch_.Inp_Validate(field)) {
        advSearch_.Inp_LostFocus(field);
    } else {
        SetFocus(advSearch_.PlaceField(field));
    }
}

void frmAddress::PlaceEnter(int field) {
    const HWND combo = advSearch_.PlaceField(field);
    SendMessageW(combo, CB_SHOWDROPDOWN, FALSE, 0);
    AutoCompleteComboBox(Host(), combo, kKeyEnter);
    advSearch_.Inp_KeyPress(field);
}

} // namespace quorvex::dialogs
