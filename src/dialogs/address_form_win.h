#pragma once

#include "dialogs/address_controls_win.h"
#include "dialogs/adv_search_win.h"
#include "dialogs/form_win.h"
#include "dialogs/modal_win.h"
#include "dialogs/selection_view.h"
#include "dialogs/tree_icons_win.h"
#include "dialogs/window_text_win.h"
#include "object/quorvex.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quorvex::dialogs {

// What a public method gives the dialog before it is shown.
struct AddressFormSettings {
    std::wstring PostcodePrimer; // "ADV" is a command: open the advanced view
    std::wstring caption;
    std::wstring path; // folder of the lookup lists; empty in the plain dialog
    bool advanced = false;
    bool showAccountDetails = false;
    bool AllowBuyMoreButton = false;
    bool displayErrors = false;
    int dpi = 0;                     // lay out for this resolution; 0: the window's own
    UINT warningMilliseconds = 6000; // how long a message stays in the advanced view
};

// The address selection dialog: postcode view with the list of addresses, and the advanced view with criteria or
// results.
class frmAddress final : public Form {
  public:
    frmAddress(object::Quorvex& addressObj, AddressFormSettings settings);
    ~frmAddress() override;

    // Shows the window until the user is done; true when a record was fetched.
    bool ShowModal();
    bool GotoHelp() const { return gotoHelp_; } // the user asked for help: the caller opens the page

    // --- For the advanced search's controller ------------------------------------------------------------------------
    void AdvSearchShow();
    void ShowTree(const std::wstring& instruction);
    void SetInstruction(const std::wstring& text);
    void ShowSectionWarnings(bool criteria, bool place);
    void ShowSummary(const std::wstring& summary);
    void ShowTopMessage(bool visible);
    void ShowBottomMessage(bool visible);
    void ShowDownloadButton(bool visible);
    void FinishWithAddress(); // sets ret and ends the modal show
    bool DisplayErrors() const { return settings_.displayErrors; }
    UINT WarningMilliseconds() const { return settings_.warningMilliseconds; }
    bool Searching() const { return searching_ || fetching_; }
    bool IsOpen() const { return !closed_; }
    // Changes with every view that is shown: what was begun in another one is not wanted any more.
    unsigned ViewStamp() const { return viewStamp_; }
    bool Left(unsigned stamp) const { return closed_ || stamp != viewStamp_; }
    // What the user asked for while the controller was busy is done now.
    void OperationEnded();
    bool InCriteria() const { return !closed_ && view_ == View::Criteria; }
    bool InResults() const { return !closed_ && view_ == View::Results; }
    // Hourglass while waiting; nests.
    void BeginWait();
    void EndWait();
    // The caption stays as it is set unless something else took its place meanwhile.
    std::wstring Caption() const { return WindowText(Window()); }
    void SetCaption(const std::wstring& text) { SetTextIfNew(Window(), text); }

  protected:
    void CreateControls() override;
    void Layout(int width, int height) override;
    SIZE ClientSize() override;
    SIZE LeastClient() override { return LeastClientOf(view_); }
    void Command(int id, int code, HWND control) override;
    LRESULT Notify(const NMHDR& header) override;
    void TimerTick(UINT_PTR timer) override;
    void CloseRequested() override { Close(); }
    void MetricsChanged() override;
    void Gone() override;
    std::optional<LRESULT> Message(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    // --- Making the controls: address_form_controls_win.cpp
    void CreatePostcodeControls();
    void CreateCriteriaControls();
    void CreateTip();

    // --- What is shown: address_form_views_win.cpp
    void ShowView(View view);
    void ShowControls();
    void SetTabOrder();
    std::vector<HWND> ControlsOf(View view) const;
    bool Wanted(HWND control) const;
    void ShowDefaultButton();

    // --- Layout: address_form_layout_win.cpp
    SIZE DocumentedSize() const;
    SIZE LeastClientOf(View view) const;
    int CriteriaHeight() const;
    void PlaceRows(HWND list, RECT box, int rowHeight) const;
    void LayoutPostcode(int width, int height);
    void LayoutCriteria(int width, int height);
    void LayoutCriteriaFields(RECT inner);
    void LayoutResults(int width, int height);
    int PlaceButtons(const std::vector<HWND>& left, const std::vector<HWND>& right, int width, int height);
    void LayoutSummary();
    LRESULT DrawHelpLink(const DRAWITEMSTRUCT& item) const;

    // --- Events of the postcode view: address_form_events_win.cpp
    void AboutToDisplay();
    void Timer1_Timer();
    void Command1_Click();
    void Command2_Click();
    void Command3_Click();
    void Command4_Click();
    void InpPostcode_Change();
    void BuyMoreButton_Click();
    void Find();
    std::int32_t Search();
    void Stop();
    void FillAddressList();
    void ClearAddressList();
    void ReportFailure(const std::wstring& otherwise);
    void ShowBuyMoreButton();
    void selectaddress();
    void Hide();
    void Close();
    std::optional<LRESULT> SizeMessage(UINT message, LPARAM lParam);

    // --- Events of the advanced view: address_form_advanced_win.cpp
    bool AdvancedCommand(int id, int code);
    bool PlaceCommand(int field, int code);
    void Command5_Click();
    void Command11_Click();
    void Label10_Click();
    void PlaceEnter(int field);
    void CheckPlaceLeft(int field);
    int PlaceFieldOf(HWND control) const; // 4 to 6, or 0

    // --- Keys and clicks in fields and lists: address_form_lists_win.cpp
    void WatchKeys(HWND control);
    bool ControlKey(HWND control, UINT message, WPARAM key);
    bool PlaceKey(HWND edit, UINT message, WPARAM key);
    static bool CloseOpenList(HWND combo);
    bool ListKey(WPARAM key);
    void GoToTyped();
    bool PointerIsOnLine(int& line) const;
    void TipForLine();
    LRESULT TreeNotify(const NMHDR& header);
    void TreeClicked(UINT code); // NM_CLICK or NM_DBLCLK
    std::wstring HighlightedText() const;
    static LRESULT CALLBACK ControlProcedure(HWND control, UINT message, WPARAM wParam, LPARAM lParam) noexcept;

    object::Quorvex& AddressObj;
    AddressFormSettings settings_;
    AddressControls c_;
    AdvSearch advSearch_;
    TreeIcons icons_;
    std::unique_ptr<ModalSession> session_;
    HWND tip_ = nullptr;
    View view_ = View::Postcode;
    bool ret_ = false;
    bool gotoHelp_ = false;
    bool done_ = false;      // the modal show is over
    bool closed_ = false;    // hidden or unloaded; what is still running must not touch the windows any more
    bool searching_ = false; // a Find waits for its reply
    bool fetching_ = false;
    bool stopped_ = false; // the user stopped the Find
    int afterwards_ = 0;   // command that waits for the controller
    unsigned viewStamp_ = 0;
    HTREEITEM clicked_ = nullptr; // waits for the second click or the end of its time
    std::size_t listed_ = 0;      // addresses at the postcode of the list, shown or not
    int tippedLine_ = -1;
    std::wstring typed_; // into the list of addresses
    ULONGLONG typedAt_ = 0;
    SIZE sizeBefore_{}; // the user's drag
    int waits_ = 0;
    bool buyMoreVisible_ = false;
    bool downloadVisible_ = false;
    bool topMessage_ = false;
    bool bottomMessage_ = false;
    bool criteriaMissing_ = true;
    bool placeMissing_ = true;
};

// The size of the window, in pixels at 96 DPI, that a user of this process last gave it; {0, 0} before.
SIZE RememberedSize();

// Hourglass for the length of a block.
class WaitScope {
  public:
    explicit WaitScope(frmAddress& form) : form_(form) { form_.BeginWait(); }
    ~WaitScope() { form_.EndWait(); }
    WaitScope(const WaitScope&) = delete;
    WaitScope& operator=(const WaitScope&) = delete;

  private:
    frmAddress& form_;
};

// A caption for the length of a block.
class CaptionScope {
  public:
    CaptionScope(frmAddress& form, const std::wstring& caption) : form_(form), restore_(form.Caption()) {
        form_.SetCaption(caption);
    }
    ~CaptionScope() { form_.SetCaption(restore_); }
    CaptionScope(const CaptionScope&) = delete;
    CaptionScope& operator=(const CaptionScope&) = delete;

  private:
    frmAddress& form_;
    std::wstring restore_;
};

} // namespace quorvex::dialogs
