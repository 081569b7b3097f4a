#include "dialogs/address_form_win.h"
#include "dialogs/combo_win.h"

#include <algorithm>
#include <iterator>

namespace quorvex::dialogs {
namespace {

constexpr int kLoadWidthTwips = 5625;
constexpr int kLoadHeightTwips = 7275;
constexpr std::size_t kLongestCount = 10000; // addresses that the instruction line has room to tell
constexpr DWORD kStyle = WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME;

// The system's link colour where it can be read on a dialog: some themes leave it as faint as the background.
COLORREF LinkColour() {
    constexpr int kReadable = 90;
    const COLORREF link = GetSysColor(COLOR_HOTLIGHT);
    const int contrast = Brightness(link) - Brightness(GetSysColor(COLOR_3DFACE));
    return contrast > kReadable || contrast < -kReadable ? link : GetSysColor(COLOR_BTNTEXT);
}

} // namespace

SIZE frmAddress::DocumentedSize() const {
    return {Units().FromTwips(kLoadWidthTwips), Units().FromTwips(kLoadHeightTwips)};
}

// As documented, or as the user left it, but room for everything whatever the font.
SIZE frmAddress::ClientSize() {
    const SIZE frame = OuterSize({0, 0}, kStyle, 0, Units().Dpi());
    const SIZE kept = RememberedSize();
    const SIZE whole = kept.cx > 0 ? SIZE{Units().Scale(kept.cx), Units().Scale(kept.cy)} : DocumentedSize();
    SIZE size = {whole.cx - frame.cx, whole.cy - frame.cy};
    for (const View view : {View::Postcode, View::Criteria, View::Results}) {
        const SIZE least = LeastClientOf(view);
        size = {std::max(size.cx, least.cx), std::max(size.cy, least.cy)};
    }
    return size;
}

SIZE frmAddress::LeastClientOf(View view) const {
    const Metrics& u = Units();
    const int row = std::max(u.EditHeight(), u.ButtonHeight());
    const int buttons = u.ButtonHeight() + 2 * u.Margin();
    const int twoRows = buttons + u.ButtonHeight() + u.Gap();
    const int fewLines = 4 * (u.LineHeight() + u.Scale(6));
    if (view == View::Postcode) {
        return {u.Scale(280), u.Margin() + row + u.Gap() + 2 * u.LineHeight() + u.SmallGap() + fewLines + twoRows};
    }
    if (view == View::Results)
        return {u.Scale(280), u.Margin() + 2 * u.LineHeight() + u.SmallGap() + fewLines + twoRows};
    const int hint = static_cast<int>(u.TextSize(WindowText(c_.WildcardLabel)).cx);
    return {hint + 2 * (u.Margin() + u.Gap()), CriteriaHeight() + 3 * u.LineHeight()};
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

// The buttons along the bottom: right ones in the lowest row, left ones beside them, the first of them in further rows
// above where they do not fit. Returns where the rows begin.
int frmAddress::PlaceButtons(const std::vector<HWND>& left, const std::vector<HWND>& right, int width, int height) {
    const Metrics& u = Units();
    const auto widthOf = [&](HWND button) {
        return button == c_.Label10 ? static_cast<int>(u.TextSize(kCaptionHelp).cx) + u.Scale(8)
                                    : u.ButtonWidth(WindowText(button));
    };
    int y = height - u.Margin() - u.ButtonHeight();
    int end = width - u.Margin();
    for (const HWND button : right) end -= widthOf(button) + u.Gap();
    int next = end + u.Gap();
    for (const HWND button : right) {
        Place(button, next, y, widthOf(button), u.ButtonHeight());
        next += widthOf(button) + u.Gap();
    }
    std::vector<HWND> waiting;
    std::copy_if(left.begin(), left.end(), std::back_inserter(waiting), &Form::Visible);
    while (!waiting.empty()) {
        std::size_t first = waiting.size();
        int x = end;
        while (first > 0 && x - widthOf(waiting[first - 1]) >= u.Margin()) {
            --first;
            x -= widthOf(waiting[first]) + u.Gap();
        }
        const bool wholeRow = end == width - u.Margin();
        if (first == waiting.size() && wholeRow) --first; // wider than the window: it gets a row all the same
        x = u.Margin();
        for (std::size_t n = first; n < waiting.size(); ++n) {
            Place(waiting[n], x, y, widthOf(waiting[n]), u.ButtonHeight());
            x += widthOf(waiting[n]) + u.Gap();
        }
        waiting.resize(first);
        if (waiting.empty()) break;
        y -= u.ButtonHeight() + u.Gap();
        end = width - u.Margin();
    }
    return y;
}

// Shows whole rows only.
void frmAddress::PlaceRows(HWND list, RECT box, int rowHeight) const {
    const int width = static_cast<int>(box.right - box.left);
    const int height = static_cast<int>(box.bottom - box.top);
    Place(list, static_cast<int>(box.left), static_cast<int>(box.top), width, height);
    RECT client{};
    GetClientRect(list, &client);
    if (rowHeight > 0 && client.bottom % rowHeight != 0) {
        Place(list, static_cast<int>(box.left), static_cast<int>(box.top), width,
              height - static_cast<int>(client.bottom % rowHeight));
    }
}

void frmAddress::LayoutPostcode(int width, int height) {
    const Metrics& u = Units();
    const int inner = width - 2 * u.Margin();
    const int row = std::max(u.EditHeight(), u.ButtonHeight());
    const int label = static_cast<int>(u.TextSize(L"Postcode:").cx);
    const int find = std::max(u.ButtonWidth(kCaptionFind), u.ButtonWidth(kCaptionStop));
    int y = u.Margin();
    const int edit = u.Margin() + label + u.Gap();
    Place(c_.InpPostcode, edit, y + (row - u.EditHeight()) / 2, width - u.Margin() - find - u.Gap() - edit,
          u.EditHeight());
    Place(c_.Label1, u.Margin(), y + (row - u.EditHeight()) / 2 + TextTop(c_.InpPostcode), label, u.LineHeight());
    Place(c_.Command2, width - u.Margin() - find, y + (row - u.ButtonHeight()) / 2, find, u.ButtonHeight());
    y += row + u.Gap();
    const int instruction = std::max(u.WrappedHeight(kEnterPostcode, inner),
                                     u.WrappedHeight(PickInstruction(kLongestCount, kLongestCount + 1), inner));
    Place(c_.Label2, u.Margin(), y, inner, instruction);
    y += instruction + u.SmallGap();
    const int buttons =
        PlaceButtons({c_.ADVSearchButton, c_.BuyMoreButton, c_.DownloadNewList}, {c_.Command1}, width, height);
    PlaceRows(c_.AddressList, {u.Margin(), y, u.Margin() + inner, buttons - u.Margin()},
              static_cast<int>(SendMessageW(c_.AddressList, LB_GETITEMHEIGHT, 0, 0)));
}

void frmAddress::LayoutResults(int width, int height) {
    const Metrics& u = Units();
    const int inner = width - 2 * u.Margin();
    // Room for either text: the tree must not move under the user's double click.
    const int instruction = std::max(u.WrappedHeight(kPickFromTree, inner), u.WrappedHeight(kPickLine, inner));
    Place(c_.Label2, u.Margin(), u.Margin(), inner, instruction);
    const int y = u.Margin() + instruction + u.SmallGap();
    const int buttons = PlaceButtons({c_.ADVSearchButton, c_.DownloadNewList}, {c_.Command11}, width, height);
    PlaceRows(c_.AdvResultsTree, {u.Margin(), y, u.Margin() + inner, buttons - u.Margin()},
              TreeView_GetItemHeight(c_.AdvResultsTree));
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
        Place(control, field, y, fieldWidth, u.EditHeight() + listHeight);
        if (listHeight > 0) FitCombo(control, u.EditHeight());
        Place(text, left, y + TextTop(control), label, line);
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
    Place(c_.SummaryLabel, left, y, width, line);
    y += line;
    const int download = u.ButtonWidth(kCaptionDownload);
    const int last = static_cast<int>(inner.bottom) - u.ButtonHeight();
    Place(c_.ADVSearchLoadNewLists, left, last, download, u.ButtonHeight());
    Place(c_.DownloadNewList, left, last, download, u.ButtonHeight());
    Place(c_.CriteriaLabel, left, y, width, last - u.SmallGap() - y);
    LayoutSummary();
}

// What LayoutCriteria takes without the summary.
int frmAddress::CriteriaHeight() const {
    const Metrics& u = Units();
    const int fields = 6 * (u.EditHeight() + u.SmallGap());
    const int texts = 7 * u.LineHeight() + 2 * u.Scale(2) + u.Gap() + u.SmallGap(); // the title counts as a line
    const int buttons = 2 * u.ButtonHeight() + u.SmallGap() + u.Margin();
    return fields + texts + buttons + 3 * u.Gap() + u.SmallGap();
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
    DrawTextW(item.hDC, kCaptionHelp, -1, &box, DT_SINGLELINE | DT_CENTER | DT_VCENTER);
    SelectObject(item.hDC, before);
    if ((item.itemState & ODS_FOCUS) != 0) DrawFocusRect(item.hDC, &item.rcItem);
    return TRUE;
}

} // namespace quorvex::dialogs
