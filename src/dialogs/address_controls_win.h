#pragma once

#include <windows.h>

#include <array>

namespace quorvex::dialogs {

// The controls of the address selection dialog under their documented names.
struct AddressControls {
    // Postcode view.
    HWND Label1 = nullptr;
    HWND InpPostcode = nullptr;
    HWND Command2 = nullptr; // Find, STOP
    HWND Label2 = nullptr;   // the instruction line
    HWND AddressList = nullptr;
    HWND BuyMoreButton = nullptr;
    HWND ADVSearchButton = nullptr;
    HWND DownloadNewList = nullptr;
    HWND Command1 = nullptr; // Cancel, Select
    // Advanced view: criteria.
    HWND OrganisationLabel = nullptr;
    HWND BuildingLabel = nullptr;
    HWND StreetLabel = nullptr;
    HWND TownLabel = nullptr;
    HWND CountyLabel = nullptr;
    HWND PostcodeAreaLabel = nullptr;
    std::array<HWND, 3> Lines{};
    HWND AbbreviationsLabel = nullptr;
    HWND WildcardLabel = nullptr;
    HWND TopWarning = nullptr;
    HWND RightTopSectionWarning = nullptr;
    HWND OneOfLabel = nullptr;
    HWND RightBottomSectionWarning = nullptr;
    HWND InpTownComb = nullptr;
    HWND InpCountiesComb = nullptr;
    HWND InpPostcodeComb = nullptr;
    HWND BottomWarning = nullptr;
    HWND SummaryLabel = nullptr;
    HWND CriteriaLabel = nullptr;
    HWND ADVSearchLoadNewLists = nullptr;
    HWND Label10 = nullptr; // Help?
    HWND Command5 = nullptr;
    HWND ADVSearchFindButton = nullptr;
    HWND Command11 = nullptr;
    HWND Frame1 = nullptr;
    // Advanced view: results.
    HWND AdvResultsTree = nullptr;
};

// Control numbers. Command3 and Command4 have no window: they are what Enter and Esc come in as.
enum AddressControlId : int {
    kCommand3 = IDOK,
    kCommand4 = IDCANCEL,
    kLabel1 = 100,
    kInpPostcode,
    kCommand2,
    kLabel2,
    kAddressList,
    kBuyMoreButton,
    kADVSearchButton,
    kDownloadNewList,
    kCommand1,
    kCriteriaText,
    kLines0,
    kLines1,
    kLines2,
    kInpTownComb,
    kInpCountiesComb,
    kInpPostcodeComb,
    kTopWarning,
    kBottomWarning,
    kRightTopSectionWarning,
    kRightBottomSectionWarning,
    kCriteriaLabel,
    kADVSearchLoadNewLists,
    kLabel10,
    kCommand5,
    kADVSearchFindButton,
    kCommand11,
    kFrame1,
    kAdvResultsTree,
};

enum AddressTimer : UINT_PTR { kTimer1 = 1, kClearError = 2, kLoadCombos = 3, kTreeClick = 4 };
inline constexpr UINT kNodePicked = WM_APP + 3; // posted to the dialog; lParam: the item that was picked
inline constexpr UINT kTimer1Milliseconds = 100;
inline constexpr UINT kLoadCombosMilliseconds = 250;

} // namespace quorvex::dialogs
