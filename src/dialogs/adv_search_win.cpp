#include "dialogs/adv_search_win.h"

#include "dialogs/address_form_win.h"
#include "dialogs/selection_view.h"
#include "lookups/address_list.h"
#include "lookups/address_record.h"

#include <commctrl.h>

#include <algorithm>
#include <array>

namespace quorvex::dialogs {
namespace {

constexpr UINT kPlainBeep = 0xFFFFFFFF;
constexpr std::array kPlaceFields = {lookups::kTown, lookups::kCounty, lookups::kPostcodeArea};

void Clear(HWND combo) {
    SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(-1), 0);
    SetWindowTextW(combo, L"");
}

} // namespace

// Marks the controller busy for one search, fetch or download; nests.
class AdvSearch::BusyScope {
  public:
    explicit BusyScope(AdvSearch& search) : search_(search) { ++search_.busy_; }
    ~BusyScope() {
        if (--search_.busy_ == 0) search_.dialog_.OperationEnded();
    }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

  private:
    AdvSearch& search_;
};

void AdvSearch::FormLoad(const AddressControls& controls) {
    controls_ = controls;
    OneLostFocus();
}

void AdvSearch::FormDispose() {
    controls_ = {};
    nodes_.clear();
}

HWND AdvSearch::PlaceField(int field) const {
    return field == lookups::kTown     ? controls_.InpTownComb
           : field == lookups::kCounty ? controls_.InpCountiesComb
                                       : controls_.InpPostcodeComb;
}

const std::wstring& AdvSearch::PlaceList(int field) const {
    return field == lookups::kTown     ? lists_.Towns()
           : field == lookups::kCounty ? lists_.Counties()
                                       : lists_.PostcodeAreas();
}

web::AdvancedCriteria AdvSearch::Criteria() const {
    web::AdvancedCriteria criteria;
    criteria.company = WindowText(controls_.Lines[0]);
    criteria.house = WindowText(controls_.Lines[1]);
    criteria.street = WindowText(controls_.Lines[2]);
    criteria.town = WindowText(controls_.InpTownComb);
    criteria.county = WindowText(controls_.InpCountiesComb);
    criteria.postcodeArea = WindowText(controls_.InpPostcodeComb);
    return criteria;
}

void AdvSearch::ClearFields() {
    for (const HWND line : controls_.Lines) SetWindowTextW(line, L"");
    for (const int field : kPlaceFields) Clear(PlaceField(field));
    OneLostFocus();
}

// --- Field events ------------------------------------------------------------------------------------------

void AdvSearch::Inp_Click(int field) {
    lastPlace_ = 0;
    for (const int other : lookups::OtherPlaceFields(field)) Clear(PlaceField(other));
    OneLostFocus();
}

void AdvSearch::Inp_KeyPress(int field) {
    lastPlace_ = field;
    // Only a place that is typed to its end excludes the others; the rest of a completion is no more than an offer.
    DWORD start = 0;
    DWORD end = 0;
    SendMessageW(PlaceField(field), CB_GETEDITSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
    if (start == end) {
        SettlePlace(field);
    } else {
        OneLostFocus();
    }
}

// A place that stands in its list excludes the others as one that is chosen does.
void AdvSearch::SettlePlace(int field) {
    const std::wstring text = WindowText(PlaceField(field));
    if (!text.empty() && lookups::IsListValue(text, PlaceList(field))) {
        Inp_Click(field);
    } else {
        OneLostFocus();
    }
}

void AdvSearch::Inp_Keyup(int) {
    OneLostFocus();
}

void AdvSearch::Inp_LostFocus(int field) {
    if (field <= lookups::kStreet) {
        const std::wstring text = WindowText(controls_.Lines[static_cast<std::size_t>(field - lookups::kOrganisation)]);
        const std::wstring warning = lookups::TextFieldWarning(field, text);
        if (!warning.empty()) {
            if (field == lookups::kOrganisation) MessageBeep(kPlainBeep);
            ShowTopWarning(warning);
        }
    } else if (field == lastPlace_) {
        SettlePlace(field);
    }
    OneLostFocus();
}

bool AdvSearch::Inp_Validate(int field) {
    if (lookups::IsListValue(WindowText(PlaceField(field)), PlaceList(field))) return true;
    MessageBeep(kPlainBeep);
    ShowBottomWarning(L"Can only select values from the list!");
    return false;
}

void AdvSearch::OneLostFocus() {
    const lookups::CriteriaState state = lookups::CheckCriteria(Criteria());
    SetTextIfNew(controls_.RightTopSectionWarning, L"Enter some criteria!");
    SetTextIfNew(controls_.RightBottomSectionWarning, L"Select one of these!");
    dialog_.ShowSectionWarnings(state.criteriaMissing, state.placeMissing);
    dialog_.ShowSummary(state.summary);
    EnableWindow(controls_.ADVSearchFindButton, state.Complete());
}

// --- Warnings ----------------------------------------------------------------------------------------------

void AdvSearch::ShowTopWarning(const std::wstring& text) {
    SetTextIfNew(controls_.TopWarning, text);
    dialog_.ShowTopMessage(true);
    SetTimer(dialog_.Window(), kClearError, dialog_.WarningMilliseconds(), nullptr);
}

void AdvSearch::ShowBottomWarning(const std::wstring& text) {
    SetTextIfNew(controls_.BottomWarning, text);
    dialog_.ShowBottomMessage(true);
    SetTimer(dialog_.Window(), kClearError, dialog_.WarningMilliseconds(), nullptr);
}

void AdvSearch::ClearErrorTimer_Tick() {
    KillTimer(dialog_.Window(), kClearError);
    dialog_.ShowTopMessage(false);
    dialog_.ShowBottomMessage(false);
}

// --- Search ------------------------------------------------------------------------------------------------

bool AdvSearch::PlacesAreValid() {
    return std::all_of(kPlaceFields.begin(), kPlaceFields.end(), [this](int field) {
        const bool valid = Inp_Validate(field);
        if (!valid) SetFocus(PlaceField(field));
        return valid;
    });
}

void AdvSearch::Find() {
    if (Busy() || dialog_.Searching() || !PlacesAreValid()) return;
    if (lastPlace_ != 0) SettlePlace(lastPlace_); // the click may be here before the field has been left
    const BusyScope busy(*this);
    const unsigned view = dialog_.ViewStamp();
    bool found = false;
    {
        const WaitScope waiting(dialog_);
        const CaptionScope caption(dialog_, kCaptionSearching);
        found = lookups::GetFullAddressToListAdv(object_, Criteria());
    }
    if (dialog_.Left(view)) return;
    if (!found) {
        ReportFailure();
        return;
    }
    CheckForAddressUpdates(object_.General_LookupListVersion);
    if (object_.RecordCount != 0) {
        ShowResults();
    } else {
        ShowNothingFound();
    }
}

void AdvSearch::ShowNothingFound() {
    MessageBeep(kPlainBeep);
    if (!object_.General_errormessage.empty()) ShowTopWarning(object_.General_errormessage);
    ShowBottomWarning(L"Nothing found!");
}

void AdvSearch::ReportFailure() {
    if (!dialog_.DisplayErrors()) return;
    ShowNothingFound();
    ShowFailure(kNothingFound);
}

void AdvSearch::ShowFailure(const std::wstring& otherwise) {
    object_.platform.user.ShowMessage(
        FailureText(object_.General_credits_display_text, object_.General_errormessage, otherwise),
        support::kStyleCritical, kErrorTitle);
}

void AdvSearch::ShowResults() {
    const HWND tree = controls_.AdvResultsTree;
    nodes_ = ReadResultTree([this] { return lookups::GetFullAddressLineForSelectionAdv(object_); }, object_.RecordCount,
                            headingCounter_);
    SendMessageW(tree, WM_SETREDRAW, FALSE, 0);
    TreeView_DeleteAllItems(tree);
    std::vector<void*> items;
    items.reserve(nodes_.size());
    for (std::size_t n = 0; n < nodes_.size(); ++n) AddNode(items, n);
    // Only now: a heading without lines cannot be expanded.
    for (std::size_t n = 0; n < nodes_.size(); ++n) {
        if (nodes_[n].expanded) TreeView_Expand(tree, static_cast<HTREEITEM>(items[n]), TVE_EXPAND);
    }
    SendMessageW(tree, WM_SETREDRAW, TRUE, 0);
    if (!items.empty()) TreeView_SelectSetFirstVisible(tree, static_cast<HTREEITEM>(items.front()));
    dialog_.ShowTree(kPickFromTree);
}

void AdvSearch::AddNode(std::vector<void*>& items, std::size_t position) {
    ResultNode& node = nodes_[position];
    TVINSERTSTRUCTW insert{};
    insert.hParent = node.parent < 0 ? TVI_ROOT : static_cast<HTREEITEM>(items[static_cast<std::size_t>(node.parent)]);
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    insert.item.pszText = node.text.data();
    insert.item.lParam = static_cast<LPARAM>(position);
    insert.item.iImage = node.heading ? kHeadingIcon : kAddressIcon;
    insert.item.iSelectedImage = insert.item.iImage;
    items.push_back(TreeView_InsertItem(controls_.AdvResultsTree, &insert));
}

const ResultNode* AdvSearch::SelectedNode() const {
    TVITEMW item{};
    item.mask = TVIF_PARAM;
    item.hItem = TreeView_GetSelection(controls_.AdvResultsTree);
    if (item.hItem == nullptr || !TreeView_GetItem(controls_.AdvResultsTree, &item)) return nullptr;
    const std::size_t position = static_cast<std::size_t>(item.lParam);
    return position < nodes_.size() ? &nodes_[position] : nullptr;
}

std::wstring AdvSearch::SelectedText() const {
    const ResultNode* const node = SelectedNode();
    return node == nullptr ? std::wstring() : node->text;
}

void AdvSearch::SelectFromTree() {
    const ResultNode* const node = SelectedNode();
    if (Busy() || node == nullptr) return;
    if (node->heading) {
        dialog_.SetInstruction(kPickLine);
        return;
    }
    const BusyScope busy(*this);
    const unsigned view = dialog_.ViewStamp();
    const std::wstring key = node->key;
    bool fetched = false;
    {
        const WaitScope waiting(dialog_);
        const CaptionScope caption(dialog_, kCaptionFetching);
        fetched = lookups::GetFullAddressRecordByAddressID(object_, key);
    }
    if (dialog_.Left(view)) return;
    if (fetched) {
        dialog_.FinishWithAddress();
    } else if (dialog_.DisplayErrors()) {
        ShowFailure(FetchFailure(0));
    }
}

// --- Lookup lists ------------------------------------------------------------------------------------------

void AdvSearch::loadcombodata() {
    dialog_.ShowDownloadButton(lists_.UpdateAnnounced());
    if (SendMessageW(controls_.InpPostcodeComb, CB_GETCOUNT, 0, 0) > 0) return;
    ReloadLists();
}

void AdvSearch::ReloadLists() {
    const BusyScope busy(*this);
    const unsigned view = dialog_.ViewStamp();
    bool loaded = false;
    {
        const WaitScope waiting(dialog_);
        const CaptionScope caption(dialog_, kCaptionDownloading);
        loaded = lists_.LoadLists();
    }
    if (!ShowNotes(view) || !loaded) return;
    dialog_.ShowDownloadButton(lists_.UpdateAnnounced());
    for (const int field : kPlaceFields) {
        const std::wstring text = WindowText(PlaceField(field)); // what the user has chosen stays
        SendMessageW(PlaceField(field), CB_RESETCONTENT, 0, 0);
        SetWindowTextW(PlaceField(field), text.c_str());
    }
    loadStep_ = 0;
    loaded_ = 0;
    loading_.clear();
    SetTimer(dialog_.Window(), kLoadCombos, kLoadCombosMilliseconds, nullptr);
}

void AdvSearch::LoadTimer_Tick() {
    constexpr UINT kNextSliceMilliseconds = 10;
    constexpr int kSteps = 3;
    if (loadStep_ >= kSteps) {
        KillTimer(dialog_.Window(), kLoadCombos);
        return;
    }
    const int field = loadStep_ == 0 ? lookups::kCounty : loadStep_ == 1 ? lookups::kTown : lookups::kPostcodeArea;
    if (loaded_ == 0) {
        loading_ = SplitList(PlaceList(field));
        SendMessageW(PlaceField(field), CB_INITSTORAGE, loading_.size(),
                     static_cast<LPARAM>(PlaceList(field).size()) * 2);
    }
    const bool filled = FillSlice(PlaceField(field), loading_);
    if (filled) {
        ++loadStep_;
        loaded_ = 0;
        loading_.clear();
    }
    SetTimer(dialog_.Window(), kLoadCombos, filled ? kLoadCombosMilliseconds : kNextSliceMilliseconds, nullptr);
}

// A long list is filled in slices, so that the window answers between them. True when the list is complete.
bool AdvSearch::FillSlice(HWND combo, const std::vector<std::wstring>& values) {
    constexpr ULONGLONG kSliceMilliseconds = 20;
    constexpr std::size_t kSliceValues = 512;
    constexpr std::size_t kBetweenClockLooks = 32;
    const std::size_t last = std::min(values.size(), loaded_ + kSliceValues);
    const ULONGLONG end = GetTickCount64() + kSliceMilliseconds;
    while (loaded_ < last) {
        SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(values[loaded_].c_str()));
        ++loaded_;
        if (loaded_ % kBetweenClockLooks == 0 && GetTickCount64() >= end) break;
    }
    return loaded_ == values.size();
}

// What a download has to say is not for those who left it. False then.
bool AdvSearch::ShowNotes(unsigned view) {
    const std::vector<LookupLists::Note> notes = lists_.TakeNotes();
    for (const LookupLists::Note& note : notes) {
        if (dialog_.Left(view)) return false;
        object_.platform.user.ShowMessage(note.text, note.style, LookupLists::kTitle);
    }
    return !dialog_.Left(view);
}

bool AdvSearch::UpdateList(bool quiet) {
    const unsigned view = dialog_.ViewStamp();
    bool updated = false;
    {
        const WaitScope waiting(dialog_);
        const CaptionScope caption(dialog_, kCaptionDownloading);
        updated = lists_.UpdateList(quiet);
    }
    ShowNotes(view);
    return updated;
}

void AdvSearch::LoadUpdatedList() {
    if (Busy() || dialog_.Searching()) return;
    const BusyScope busy(*this);
    if (object_.platform.user.ShowMessage(LookupLists::ConfirmText(), support::kStyleYesNo | support::kStyleQuestion,
                                          LookupLists::kTitle) != support::kAnswerYes) {
        return;
    }
    if (!UpdateList(false) || !dialog_.IsOpen()) return;
    dialog_.ShowDownloadButton(false);
    if (dialog_.InCriteria()) {
        ReloadLists();
        SetFocus(controls_.Lines[0]);
    }
}

void AdvSearch::CheckForAddressUpdates(const std::wstring& announcedVersion) {
    if (lists_.CheckForAddressUpdates(announcedVersion)) dialog_.ShowDownloadButton(true);
    ShowNotes(dialog_.ViewStamp());
}

} // namespace quorvex::dialogs
