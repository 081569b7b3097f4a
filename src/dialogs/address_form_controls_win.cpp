#include "dialogs/address_form_win.h"
#include "dialogs/combo_win.h"

namespace quorvex::dialogs {
namespace {

constexpr wchar_t kTip[] =
    L"Enter post code or words in address, and optionally enter house NO/Name 'PE13 2QL,8' for NO 8";

} // namespace

// --- Controls, in tab order; a label stands right before the field that it names ---------------------------

void frmAddress::CreateControls() {
    CreatePostcodeControls();
    CreateCriteriaControls();
    CreateTip();
    advSearch_.FormLoad(c_);
    if (settings_.advanced) advSearch_.SetPath(settings_.path);
    ShowControls();
    SetTabOrder();
}

void frmAddress::CreatePostcodeControls() {
    c_.Label1 = AddLabel(L"&Postcode:", kLabel1);
    c_.InpPostcode = Add(WC_EDITW, L"", WS_TABSTOP | ES_AUTOHSCROLL, kInpPostcode, WS_EX_CLIENTEDGE);
    c_.Command2 = AddButton(kCaptionFind, kCommand2);
    c_.Label2 = AddLabel(kEnterPostcode, kLabel2, SS_NOPREFIX);
    c_.AddressList =
        Add(WC_LISTBOXW, kAddressListName, WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT,
            kAddressList, WS_EX_CLIENTEDGE);
    c_.ADVSearchButton = AddButton(L"&Advanced Find", kADVSearchButton);
    c_.BuyMoreButton = AddButton(L"Manage Account", kBuyMoreButton);
    c_.Command1 = AddButton(kCaptionCancel, kCommand1);
}

void frmAddress::CreateCriteriaControls() {
    const auto label = [this](const wchar_t* text) { return AddLabel(text, kCriteriaText); };
    const auto line = [this](int id) { return Add(WC_EDITW, L"", WS_TABSTOP | ES_AUTOHSCROLL, id, WS_EX_CLIENTEDGE); };
    const auto combo = [this](int id) {
        return Add(WC_COMBOBOXW, L"", WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWN | CBS_AUTOHSCROLL, id);
    };
    c_.RightTopSectionWarning = AddLabel(L"Enter some criteria!", kRightTopSectionWarning, SS_RIGHT);
    c_.OrganisationLabel = label(L"&Organisation Name");
    c_.Lines[0] = line(kLines0);
    c_.BuildingLabel = label(L"&Building Name/No");
    c_.Lines[1] = line(kLines1);
    c_.StreetLabel = label(L"&Street/Road/Av");
    c_.Lines[2] = line(kLines2);
    c_.AbbreviationsLabel = label(L"RD, CL and AV are all valid abbreviations");
    c_.WildcardLabel = label(L"Enter whole words or \"some*\" to get \"Something\"");
    c_.TopWarning = AddLabel(L"", kTopWarning, SS_NOPREFIX);
    c_.OneOfLabel = label(L"And one of ...");
    c_.RightBottomSectionWarning = AddLabel(L"Select one of these!", kRightBottomSectionWarning, SS_RIGHT);
    c_.TownLabel = label(L"&Town");
    c_.InpTownComb = combo(kInpTownComb);
    c_.CountyLabel = label(L"Co&unty/City");
    c_.InpCountiesComb = combo(kInpCountiesComb);
    c_.PostcodeAreaLabel = label(L"&Postcode area");
    c_.InpPostcodeComb = combo(kInpPostcodeComb);
    c_.BottomWarning = AddLabel(L"", kBottomWarning, SS_NOPREFIX);
    c_.SummaryLabel = label(L"Summary");
    // A field rather than a label: a long summary can be scrolled and copied.
    c_.CriteriaLabel = Add(WC_EDITW, L"Summary", ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL, kCriteriaLabel);
    SendMessageW(c_.CriteriaLabel, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0);
    c_.ADVSearchLoadNewLists = AddButton(kCaptionDownload, kADVSearchLoadNewLists);
    c_.DownloadNewList = AddButton(kCaptionDownload, kDownloadNewList);
    c_.Label10 = AddButton(kCaptionHelp, kLabel10, BS_OWNERDRAW);
    c_.Command5 = AddButton(L"Clear", kCommand5);
    c_.ADVSearchFindButton = AddButton(kCaptionFind, kADVSearchFindButton);
    c_.AdvResultsTree = Add(WC_TREEVIEWW, L"Addresses found",
                            WS_TABSTOP | TVS_HASBUTTONS | TVS_LINESATROOT | TVS_HASLINES | TVS_SHOWSELALWAYS,
                            kAdvResultsTree, WS_EX_CLIENTEDGE);
    c_.Command11 = AddButton(kCaptionCancel, kCommand11);
    c_.Frame1 = Add(WC_BUTTONW, L"Advanced Search", BS_GROUPBOX, kFrame1);
    for (const HWND control : {EditOf(c_.InpTownComb), EditOf(c_.InpCountiesComb), EditOf(c_.InpPostcodeComb),
                               c_.AddressList, c_.AdvResultsTree}) {
        WatchKeys(control);
    }
}

void frmAddress::CreateTip() {
    tip_ = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, 0, 0, 0, 0,
                           Window(), nullptr, OwnModule(), nullptr);
    std::wstring text = kTip;
    TTTOOLINFOW tool{};
    tool.cbSize = TTTOOLINFOW_V1_SIZE; // the size that controls of every version know
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = Window();
    tool.uId = reinterpret_cast<UINT_PTR>(c_.InpPostcode);
    tool.lpszText = text.data();
    SendMessageW(tip_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    // The lines of the list have one tip between them, which is told where the pointer is.
    tool.uFlags = TTF_SUBCLASS;
    tool.hwnd = c_.AddressList;
    tool.uId = 0;
    text.clear();
    tool.lpszText = text.data();
    SendMessageW(tip_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

void frmAddress::MetricsChanged() {
    for (const HWND warning :
         {c_.TopWarning, c_.BottomWarning, c_.RightTopSectionWarning, c_.RightBottomSectionWarning}) {
        SendMessageW(warning, WM_SETFONT, reinterpret_cast<WPARAM>(Units().BoldFont()), FALSE);
    }
    SendMessageW(c_.Label10, WM_SETFONT, reinterpret_cast<WPARAM>(Units().LinkFont()), FALSE);
    icons_.Make(Units().Scale(16));
    TreeView_SetImageList(c_.AdvResultsTree, icons_.Handle(), TVSIL_NORMAL);
    SendMessageW(c_.AdvResultsTree, TVM_SETITEMHEIGHT, static_cast<WPARAM>(Units().LineHeight() + Units().Scale(6)), 0);
    SendMessageW(c_.AddressList, LB_SETITEMHEIGHT, 0, Units().LineHeight() + Units().Scale(2));
    for (const HWND combo : {c_.InpTownComb, c_.InpCountiesComb, c_.InpPostcodeComb})
        SendMessageW(combo, CB_SETITEMHEIGHT, 0, Units().LineHeight() + Units().Scale(2));
    tippedLine_ = -1;
    SendMessageW(tip_, TTM_SETMAXTIPWIDTH, 0, Units().Scale(300));
}

} // namespace quorvex::dialogs
