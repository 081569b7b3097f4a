#include "dialogs/address_form_win.h"

#include <algorithm>

namespace quorvex::dialogs {
namespace {

constexpr int kLoadWidthTwips = 5625;
constexpr int kLoadHeightTwips = 7275;
constexpr DWORD kStyle = WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME;
constexpr wchar_t kTip[] =
    L"Enter post code or words in address, and optionally enter house NO/Name 'PE13 2QL,8' for NO 8";
constexpr wchar_t kHelp[] = L"Help?";
constexpr wchar_t kDownload[] = L"Download Updated Lists";

int Brightness(COLORREF colour) {
    return (GetRValue(colour) * 299 + GetGValue(colour) * 587 + GetBValue(colour) * 114) / 1000;
}

// The system's link colour where it can be read on a dialog: some themes leave it as faint as the background.
COLORREF LinkColour() {
    constexpr int kReadable = 90;
    const COLORREF link = GetSysColor(COLOR_HOTLIGHT);
    const int contrast = Brightness(link) - Brightness(GetSysColor(COLOR_3DFACE));
    return contrast > kReadable || contrast < -kReadable ? link : GetSysColor(COLOR_BTNTEXT);
}

} // namespace

// --- Controls, in tab order; a label stands right before the field that it names ---------------------------

void frmAddress::CreateControls() {
    CreatePostcodeControls();
    CreateCriteriaControls();
    CreateTip();
    advSearch_.FormLoad(c_);
    if (settings_.advanced) advSearch_.SetPath(settings_.path);
    ShowControls();
}

void frmAddress::CreatePostcodeControls() {
    c_.Label1 = AddLabel(L"Postcode:", kLabel1);
    c_.InpPostcode = Add(WC_EDITW, L"", WS_TABSTOP | ES_AUTOHSCROLL, kInpPostcode, WS_EX_CLIENTEDGE);
    c_.Command2 = AddButton(kCaptionFind, kCommand2);
    c_.Label2 = AddLabel(kEnterPostcode, kLabel2, SS_NOPREFIX);
    c_.AddressList =
        Add(WC_LISTBOXW, L"Addresses", WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT,
            kAddressList, WS_EX_CLIENTEDGE);
    c_.ADVSearchButton = AddButton(L"&Advanced Find", kADVSearchButton);
    c_.BuyMoreButton = AddButton(L"Manage Account", kBuyMoreButton);
    c_.Command1 = AddButton(kCaptionCancel, kCommand1);
}

void frmAddress::CreateCriteriaControls() {
    const auto label = [this](const wchar_t* text) { return AddLabel(text, kCriteriaText, SS_NOPREFIX); };
    const auto line = [this](int id) { return Add(WC_EDITW, L"", WS_TABSTOP | ES_AUTOHSCROLL, id, WS_EX_CLIENTEDGE); };
    const auto combo = [this](int id) {
        return Add(WC_COMBOBOXW, L"", WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWN | CBS_AUTOHSCROLL, id);
    };
    c_.RightTopSectionWarning = AddLabel(L"Enter some criteria!", kRightTopSectionWarning, SS_RIGHT);
    c_.OrganisationLabel = label(L"Organisation Name");
    c_.Lines[0] = line(kLines0);
    c_.BuildingLabel = label(L"Building Name/No");
    c_.Lines[1] = line(kLines1);
    c_.StreetLabel = label(L"Street/Road/Av");
    c_.Lines[2] = line(kLines2);
    c_.AbbreviationsLabel = label(L"RD, CL and AV are all valid abbreviations");
    c_.WildcardLabel = label(L"Enter whole words or \"some*\" to get \"Something\"");
    c_.TopWarning = AddLabel(L"", kTopWarning, SS_NOPREFIX);
    c_.OneOfLabel = label(L"And one of ...");
    c_.RightBottomSectionWarning = AddLabel(L"Select one of these!", kRightBottomSectionWarning, SS_RIGHT);
    c_.TownLabel = label(L"Town");
    c_.InpTownComb = combo(kInpTownComb);
    c_.CountyLabel = label(L"County/City");
    c_.InpCountiesComb = combo(kInpCountiesComb);
    c_.PostcodeAreaLabel = label(L"Postcode area");
    c_.InpPostcodeComb = combo(kInpPostcodeComb);
    for (const int field : {lookups::kTown, lookups::kCounty, lookups::kPostcodeArea}) WatchPlaceField(field);
    c_.BottomWarning = AddLabel(L"", kBottomWarning, SS_NOPREFIX);
    // A field rather than a label: a long summary can be scrolled and copied.
    c_.CriteriaLabel = Add(WC_EDITW, L"Summary", ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL, kCriteriaLabel);
    SendMessageW(c_.CriteriaLabel, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0);
    c_.ADVSearchLoadNewLists = AddButton(kDownload, kADVSearchLoadNewLists);
    c_.DownloadNewList = AddButton(kDownload, kDownloadNewList);
    c_.Label10 = AddButton(kHelp, kLabel10, BS_OWNERDRAW);
    c_.Command5 = AddButton(L"Clear", kCommand5);
    c_.ADVSearchFindButton = AddButton(kCaptionFind, kADVSearchFindButton);
    c_.AdvResultsTree = Add(WC_TREEVIEWW, L"Addresses found",
                            WS_TABSTOP | TVS_HASBUTTONS | TVS_LINESATROOT | TVS_HASLINES | TVS_SHOWSELALWAYS,
                            kAdvResultsTree, WS_EX_CLIENTEDGE);
    c_.Command11 = AddButton(kCaptionCancel, kCommand11);
    c_.Frame1 = Add(WC_BUTTONW, L"Advanced Search", BS_GROUPBOX, kFrame1);
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
    SendMessageW(tip_, TTM_SETMAXTIPWIDTH, 0, Units().Scale(300));
}

SIZE frmAddress::DocumentedSize() const {
    return {Units().FromTwips(kLoadWidthTwips), Units().FromTwips(kLoadHeightTwips)};
}

SIZE frmAddress::ClientSize() {
    const SIZE frame = OuterSize({0, 0}, kStyle, 0, Units().Dpi());
    const SIZE whole = DocumentedSize();
    return {whole.cx - frame.cx, whole.cy - frame.cy};
}

// --- What is shown -----------------------------------------------------------------------------------------

void frmAddress::ShowView(View view) {
    view_ = view;
    ShowControls();
    LayoutNow();
    ShowDefaultButton();
    InvalidateRect(Window(), nullptr, TRUE);
}

void frmAddress::ShowControls() {
    const bool postcode = view_ == View::Postcode;
    const bool criteria = view_ == View::Criteria;
    const bool results = view_ == View::Results;
    for (const HWND control : {c_.Label1, c_.InpPostcode, c_.Command2, c_.AddressList, c_.Command1})
        Show(control, postcode);
    Show(c_.Label2, postcode || results);
    Show(c_.BuyMoreButton, postcode && buyMoreVisible_);
    Show(c_.ADVSearchButton, settings_.advanced && (postcode || results));
    Show(c_.DownloadNewList, downloadVisible_);
    for (const HWND control :
         {c_.Frame1, c_.OrganisationLabel, c_.BuildingLabel, c_.StreetLabel, c_.TownLabel, c_.CountyLabel,
          c_.PostcodeAreaLabel, c_.Lines[0], c_.Lines[1], c_.Lines[2], c_.OneOfLabel, c_.InpTownComb,
          c_.InpCountiesComb, c_.InpPostcodeComb, c_.CriteriaLabel, c_.Label10, c_.Command5, c_.ADVSearchFindButton}) {
        Show(control, criteria);
    }
    // A message takes the place of the hints for its six seconds; one download button is enough.
    Show(c_.AbbreviationsLabel, criteria && !topMessage_);
    Show(c_.WildcardLabel, criteria && !topMessage_);
    Show(c_.TopWarning, criteria && topMessage_);
    Show(c_.BottomWarning, criteria && bottomMessage_);
    Show(c_.RightTopSectionWarning, criteria && criteriaMissing_);
    Show(c_.RightBottomSectionWarning, criteria && placeMissing_);
    Show(c_.ADVSearchLoadNewLists, criteria && !downloadVisible_);
    Show(c_.AdvResultsTree, results);
    Show(c_.Command11, criteria || results);
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
}

void frmAddress::ShowBottomMessage(bool visible) {
    bottomMessage_ = visible;
    ShowControls();
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

// --- Where it stands ---------------------------------------------------------------------------------------

void frmAddress::Layout(int width, int height) {
    switch (view_) {
    case View::Postcode:
        LayoutPostcode(width, height);
        break;
    case View::Criteria:
        LayoutCriteria(width, height);
        break;
    case View::Results:
        LayoutResults(width, height);
        break;
    }
}

// The buttons along the bottom: right ones in the lowest row, left ones beside them and in further rows above where
// they do not fit. Returns where the rows begin.
int frmAddress::PlaceButtons(const std::vector<HWND>& left, const std::vector<HWND>& right, int width, int height) {
    const Metrics& u = Units();
    int y = height - u.Margin() - u.ButtonHeight();
    int end = width - u.Margin();
    for (auto button = right.rbegin(); button != right.rend(); ++button) {
        const int buttonWidth = u.ButtonWidth(WindowText(*button));
        end -= buttonWidth;
        Place(*button, end, y, buttonWidth, u.ButtonHeight());
        end -= u.Gap();
    }
    int x = u.Margin();
    for (const HWND button : left) {
        if (!Visible(button)) continue;
        const int buttonWidth = button == c_.Label10 ? static_cast<int>(u.TextSize(kHelp).cx) + u.Scale(8)
                                                     : u.ButtonWidth(WindowText(button));
        if (x + buttonWidth > end) {
            x = u.Margin();
            end = width - u.Margin();
            y -= u.ButtonHeight() + u.Gap();
        }
        Place(button, x, y, buttonWidth, u.ButtonHeight());
        x += buttonWidth + u.Gap();
    }
    return y;
}

void frmAddress::LayoutPostcode(int width, int height) {
    const Metrics& u = Units();
    const int inner = width - 2 * u.Margin();
    const int row = std::max(u.EditHeight(), u.ButtonHeight());
    const int label = static_cast<int>(u.TextSize(L"Postcode:").cx);
    const int find = std::max(u.ButtonWidth(kCaptionFind), u.ButtonWidth(kCaptionStop));
    int y = u.Margin();
    Place(c_.Label1, u.Margin(), y + (row - u.LineHeight()) / 2, label, u.LineHeight());
    const int edit = u.Margin() + label + u.Gap();
    Place(c_.InpPostcode, edit, y + (row - u.EditHeight()) / 2, width - u.Margin() - find - u.Gap() - edit,
          u.EditHeight());
    Place(c_.Command2, width - u.Margin() - find, y + (row - u.ButtonHeight()) / 2, find, u.ButtonHeight());
    y += row + u.Gap();
    const int instruction = std::max(u.WrappedHeight(kEnterPostcode, inner), u.WrappedHeight(kPickAddress, inner));
    Place(c_.Label2, u.Margin(), y, inner, instruction);
    y += instruction + u.SmallGap();
    const int buttons =
        PlaceButtons({c_.ADVSearchButton, c_.BuyMoreButton, c_.DownloadNewList}, {c_.Command1}, width, height);
    Place(c_.AddressList, u.Margin(), y, inner, buttons - u.Margin() - y);
}

void frmAddress::LayoutResults(int width, int height) {
    const Metrics& u = Units();
    const int inner = width - 2 * u.Margin();
    // Room for either text: the tree must not move under the user's double click.
    const int instruction = std::max(u.WrappedHeight(kPickFromTree, inner), u.WrappedHeight(kPickLine, inner));
    Place(c_.Label2, u.Margin(), u.Margin(), inner, instruction);
    const int y = u.Margin() + instruction + u.SmallGap();
    const int buttons = PlaceButtons({c_.ADVSearchButton, c_.DownloadNewList}, {c_.Command11}, width, height);
    Place(c_.AdvResultsTree, u.Margin(), y, inner, buttons - u.Margin() - y);
}

void frmAddress::LayoutCriteria(int width, int height) {
    const Metrics& u = Units();
    const int buttons = PlaceButtons({c_.Label10}, {c_.Command5, c_.ADVSearchFindButton, c_.Command11}, width, height);
    const int bottom = buttons - u.Gap();
    Place(c_.Frame1, u.Margin(), u.Gap(), width - 2 * u.Margin(), bottom - u.Gap());
    LayoutCriteriaFields({u.Margin() + u.Gap(), u.Gap() + u.LineHeight() + u.SmallGap(), width - u.Margin() - u.Gap(),
                          bottom - u.Gap()});
}

void frmAddress::LayoutCriteriaFields(RECT inner) {
    const Metrics& u = Units();
    const int line = u.LineHeight();
    const int left = static_cast<int>(inner.left);
    const int width = static_cast<int>(inner.right - inner.left);
    int y = static_cast<int>(inner.top);
    int label = 0;
    for (const HWND text :
         {c_.OrganisationLabel, c_.BuildingLabel, c_.StreetLabel, c_.TownLabel, c_.CountyLabel, c_.PostcodeAreaLabel}) {
        label = std::max(label, static_cast<int>(u.TextSize(WindowText(text)).cx));
    }
    const int field = left + label + u.Gap();
    const int fieldWidth = static_cast<int>(inner.right) - field;
    // A combo's height includes its list.
    const auto row = [&](HWND text, HWND control, int listHeight) {
        Place(text, left, y + (u.EditHeight() - line) / 2, label, line);
        Place(control, field, y, fieldWidth, u.EditHeight() + listHeight);
        y += u.EditHeight() + u.SmallGap();
    };
    Place(c_.RightTopSectionWarning, left, y, width, line);
    y += line + u.Scale(2);
    row(c_.OrganisationLabel, c_.Lines[0], 0);
    row(c_.BuildingLabel, c_.Lines[1], 0);
    row(c_.StreetLabel, c_.Lines[2], 0);
    Place(c_.AbbreviationsLabel, left, y, width, line);
    Place(c_.WildcardLabel, left, y + line, width, line);
    Place(c_.TopWarning, left, y, width, 2 * line);
    y += 2 * line + u.Gap();
    const int oneOf = static_cast<int>(u.TextSize(WindowText(c_.OneOfLabel)).cx);
    Place(c_.OneOfLabel, left, y, oneOf, line);
    Place(c_.RightBottomSectionWarning, left + oneOf + u.Gap(), y, width - oneOf - u.Gap(), line);
    y += line + u.Scale(2);
    row(c_.TownLabel, c_.InpTownComb, 12 * line);
    row(c_.CountyLabel, c_.InpCountiesComb, 12 * line);
    row(c_.PostcodeAreaLabel, c_.InpPostcodeComb, 12 * line);
    Place(c_.BottomWarning, left, y, width, line);
    y += line + u.SmallGap();
    const int download = u.ButtonWidth(kDownload);
    const int last = static_cast<int>(inner.bottom) - u.ButtonHeight();
    Place(c_.ADVSearchLoadNewLists, left, last, download, u.ButtonHeight());
    Place(c_.DownloadNewList, left, last, download, u.ButtonHeight());
    Place(c_.CriteriaLabel, left, y, width, last - u.SmallGap() - y);
    LayoutSummary();
}

// A scroll bar only when the summary is longer than its place.
void frmAddress::LayoutSummary() {
    if (c_.CriteriaLabel == nullptr) return;
    RECT box{};
    GetWindowRect(c_.CriteriaLabel, &box);
    const int needed = Units().WrappedHeight(WindowText(c_.CriteriaLabel), static_cast<int>(box.right - box.left));
    ShowScrollBar(c_.CriteriaLabel, SB_VERT, needed > box.bottom - box.top);
}

LRESULT frmAddress::DrawHelpLink(const DRAWITEMSTRUCT& item) const {
    RECT box = item.rcItem;
    FillRect(item.hDC, &box, GetSysColorBrush(COLOR_3DFACE));
    const HGDIOBJ before = SelectObject(item.hDC, Units().LinkFont());
    SetBkMode(item.hDC, TRANSPARENT);
    SetTextColor(item.hDC, LinkColour());
    DrawTextW(item.hDC, kHelp, -1, &box, DT_SINGLELINE | DT_CENTER | DT_VCENTER);
    SelectObject(item.hDC, before);
    if ((item.itemState & ODS_FOCUS) != 0) DrawFocusRect(item.hDC, &item.rcItem);
    return TRUE;
}

} // namespace quorvex::dialogs
