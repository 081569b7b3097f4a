#include "dialogs/address_form_win.h"

#include <algorithm>

namespace quorvex::dialogs {

// --- What is shown -----------------------------------------------------------------------------------------

void frmAddress::ShowView(View view) {
    view_ = view;
    ++viewStamp_;
    KillTimer(Window(), kTreeClick);
    ShowControls();
    SetTabOrder();
    LayoutNow();
    ShowDefaultButton();
}

// In the order of Tab, which is that of the eye; a label is right before the field that it names.
std::vector<HWND> frmAddress::ControlsOf(View view) const {
    switch (view) {
    case View::Postcode:
        return {c_.Label1,          c_.InpPostcode,   c_.Command2,        c_.Label2,  c_.AddressList,
                c_.ADVSearchButton, c_.BuyMoreButton, c_.DownloadNewList, c_.Command1};
    case View::Criteria:
        return {c_.RightTopSectionWarning,
                c_.OrganisationLabel,
                c_.Lines[0],
                c_.BuildingLabel,
                c_.Lines[1],
                c_.StreetLabel,
                c_.Lines[2],
                c_.AbbreviationsLabel,
                c_.WildcardLabel,
                c_.TopWarning,
                c_.OneOfLabel,
                c_.RightBottomSectionWarning,
                c_.TownLabel,
                c_.InpTownComb,
                c_.CountyLabel,
                c_.InpCountiesComb,
                c_.PostcodeAreaLabel,
                c_.InpPostcodeComb,
                c_.BottomWarning,
                c_.SummaryLabel,
                c_.CriteriaLabel,
                c_.ADVSearchLoadNewLists,
                c_.DownloadNewList,
                c_.Label10,
                c_.Command5,
                c_.ADVSearchFindButton,
                c_.Command11,
                c_.Frame1};
    case View::Results:
        break;
    }
    return {c_.Label2, c_.AdvResultsTree, c_.ADVSearchButton, c_.DownloadNewList, c_.Command11};
}

// Whether a control of the view is shown just now.
bool frmAddress::Wanted(HWND control) const {
    const std::vector<std::pair<HWND, bool>> sometimes = {
        {c_.BuyMoreButton, buyMoreVisible_},
        {c_.ADVSearchButton, settings_.advanced},
        {c_.DownloadNewList, downloadVisible_},
        {c_.ADVSearchLoadNewLists, !downloadVisible_}, // one download button is enough
        {c_.AbbreviationsLabel, !topMessage_},         // a message takes the place of the hints for its seconds
        {c_.WildcardLabel, !topMessage_},
        {c_.TopWarning, topMessage_},
        {c_.BottomWarning, bottomMessage_},
        {c_.RightTopSectionWarning, criteriaMissing_},
        {c_.RightBottomSectionWarning, placeMissing_},
    };
    for (const auto& [which, wanted] : sometimes) {
        if (which == control) return wanted;
    }
    return true;
}

void frmAddress::ShowControls() {
    const std::vector<HWND> shown = ControlsOf(view_);
    for (HWND child = GetWindow(Window(), GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        Show(child, std::find(shown.begin(), shown.end(), child) != shown.end() && Wanted(child));
    }
}

void frmAddress::SetTabOrder() {
    HWND before = HWND_TOP;
    for (const HWND control : ControlsOf(view_)) {
        SetWindowPos(control, before, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
        before = control;
    }
}

void frmAddress::SetInstruction(const std::wstring& text) {
    SetTextIfNew(c_.Label2, text);
}

void frmAddress::ShowSectionWarnings(bool criteria, bool place) {
    criteriaMissing_ = criteria;
    placeMissing_ = place;
    ShowControls();
}

void frmAddress::ShowTopMessage(bool visible) {
    topMessage_ = visible;
    ShowControls();
    if (visible) NotifyWinEvent(EVENT_SYSTEM_ALERT, c_.TopWarning, OBJID_CLIENT, CHILDID_SELF); // read aloud
}

void frmAddress::ShowBottomMessage(bool visible) {
    bottomMessage_ = visible;
    ShowControls();
    if (visible) NotifyWinEvent(EVENT_SYSTEM_ALERT, c_.BottomWarning, OBJID_CLIENT, CHILDID_SELF);
}

void frmAddress::ShowDownloadButton(bool visible) {
    if (downloadVisible_ == visible) return;
    downloadVisible_ = visible;
    ShowControls();
    LayoutNow();
}

void frmAddress::ShowSummary(const std::wstring& summary) {
    SetTextIfNew(c_.CriteriaLabel, summary);
    LayoutSummary();
}

// Enter goes where Command3 sends it; that button looks like the default one, or the one that has the focus.
void frmAddress::ShowDefaultButton() {
    const HWND focus = GetFocus();
    HWND target = nullptr;
    const std::vector<HWND> buttons = {c_.Command1,        c_.Command2,
                                       c_.ADVSearchButton, c_.BuyMoreButton,
                                       c_.DownloadNewList, c_.ADVSearchLoadNewLists,
                                       c_.Command5,        c_.ADVSearchFindButton,
                                       c_.Command11};
    if (std::find(buttons.begin(), buttons.end(), focus) != buttons.end()) {
        target = focus;
    } else if (view_ == View::Criteria) {
        target = c_.ADVSearchFindButton;
    } else if (view_ == View::Postcode) {
        target = WindowText(c_.Command1) == kCaptionSelect ? c_.Command1 : c_.Command2;
    }
    for (const HWND button : buttons) {
        const WPARAM style = button == target ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON;
        if ((static_cast<WPARAM>(GetWindowLongPtrW(button, GWL_STYLE)) & BS_TYPEMASK) != style) {
            SendMessageW(button, BM_SETSTYLE, style, TRUE);
        }
    }
}

} // namespace quorvex::dialogs
