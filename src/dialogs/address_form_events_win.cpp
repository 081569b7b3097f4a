#include "dialogs/address_form_win.h"

#include "lookups/address_list.h"
#include "lookups/address_record.h"
#include "pages/pages.h"

#include <utility>

namespace quorvex::dialogs {
namespace {

constexpr wchar_t kFoundNothing[] = L" - Found nothing!";

// What an earlier search left at the caption's end does not pile up.
std::wstring WithoutFoundNothing(std::wstring caption) {
    const std::wstring_view ending = kFoundNothing;
    if (caption.size() >= ending.size() && caption.ends_with(ending)) caption.resize(caption.size() - ending.size());
    return caption;
}

// Sets a flag for the length of a block.
class FlagScope {
  public:
    explicit FlagScope(bool& flag) : flag_(flag) { flag_ = true; }
    ~FlagScope() { flag_ = false; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;

  private:
    bool& flag_;
};

// A button's caption for the length of a block.
class ButtonCaptionScope {
  public:
    ButtonCaptionScope(HWND button, const wchar_t* during, const wchar_t* after) : button_(button), after_(after) {
        SetTextIfNew(button_, during);
    }
    ~ButtonCaptionScope() { SetTextIfNew(button_, after_); }
    ButtonCaptionScope(const ButtonCaptionScope&) = delete;
    ButtonCaptionScope& operator=(const ButtonCaptionScope&) = delete;

  private:
    HWND button_;
    const wchar_t* after_;
};

} // namespace

frmAddress::frmAddress(object::Quorvex& addressObj, AddressFormSettings settings)
    : Form(addressObj.platform, settings.dpi), AddressObj(addressObj), settings_(std::move(settings)),
      advSearch_(addressObj, *this) {}

frmAddress::~frmAddress() {
    advSearch_.FormDispose();
}

// --- Life of the window ------------------------------------------------------------------------------------

bool frmAddress::ShowModal() {
    const HWND host = HostWindow();
    Create(host, settings_.caption, WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME,
           host == nullptr ? DWORD{WS_EX_APPWINDOW} : 0);
    AboutToDisplay();
    session_ = std::make_unique<ModalSession>(Window(), host);
    ShowWindow(Window(), SW_SHOW);
    ShowDefaultButton();
    SetFocus(c_.InpPostcode);
    const bool stayed = session_->Run(done_);
    closed_ = true;
    // Unload.
    AddressObj.platform.web.StopRequest();
    advSearch_.FormDispose();
    session_->Release();
    Destroy();
    session_->RestoreFocus();
    session_.reset();
    return ret_ && stayed;
}

void frmAddress::AboutToDisplay() {
    SetTimer(Window(), kTimer1, kTimer1Milliseconds, nullptr);
}

void frmAddress::Timer1_Timer() {
    KillTimer(Window(), kTimer1);
    BringToFront(Window());
    SetFocus(c_.InpPostcode);
    if (settings_.PostcodePrimer == L"ADV") {
        SetTextIfNew(c_.InpPostcode, L"");
        AdvSearchShow();
    } else if (!settings_.PostcodePrimer.empty()) {
        SetTextIfNew(c_.InpPostcode, settings_.PostcodePrimer);
        Command2_Click();
    }
}

void frmAddress::Hide() {
    if (closed_) return;
    closed_ = true;
    if (session_ != nullptr) session_->Release();
    ShowWindow(Window(), SW_HIDE);
    done_ = true;
    WakeMessageLoop();
}

// A request under way gives up at once, so that the host does not wait for an answer that nobody sees.
void frmAddress::Close() {
    AddressObj.platform.web.StopRequest();
    Hide();
}

void frmAddress::Gone() {
    AddressObj.platform.web.StopRequest();
    closed_ = true;
    done_ = true;
    WakeMessageLoop();
}

void frmAddress::FinishWithAddress() {
    ret_ = true;
    Show(c_.AdvResultsTree, false);
    Hide();
}

// --- Messages ----------------------------------------------------------------------------------------------

void frmAddress::Command(int id, int code, HWND control) {
    if (closed_) return;
    if (code == BN_SETFOCUS || code == BN_KILLFOCUS) {
        const bool isButton = control != nullptr && (SendMessageW(control, WM_GETDLGCODE, 0, 0) & DLGC_BUTTON) != 0;
        if (isButton) {
            ShowDefaultButton();
            return;
        }
    }
    if (AdvancedCommand(id, code)) return;
    if (id == kInpPostcode && code == EN_CHANGE) InpPostcode_Change();
    if (id == kAddressList && code == LBN_DBLCLK) selectaddress();
    if (code != BN_CLICKED) return;
    switch (id) {
    case kCommand1:
        Command1_Click();
        break;
    case kCommand2:
        Command2_Click();
        break;
    case kCommand3:
        Command3_Click();
        break;
    case kCommand4:
        Command4_Click();
        break;
    case kBuyMoreButton:
        BuyMoreButton_Click();
        break;
    case kADVSearchButton:
        AdvSearchShow();
        break;
    default:
        break;
    }
}

void frmAddress::TimerTick(UINT_PTR timer) {
    if (closed_) return;
    if (timer == kTimer1) Timer1_Timer();
    if (timer == kClearError) advSearch_.ClearErrorTimer_Tick();
    if (timer == kLoadCombos) advSearch_.LoadTimer_Tick();
}

void frmAddress::BeginWait() {
    ++waits_;
    SetCursor(LoadCursorW(nullptr, IDC_WAIT));
}

void frmAddress::EndWait() {
    if (--waits_ == 0) SetCursor(LoadCursorW(nullptr, IDC_ARROW));
}

// --- Find and Stop -----------------------------------------------------------------------------------------

void frmAddress::InpPostcode_Change() {
    SetTextIfNew(c_.Command1, kCaptionCancel);
    ShowDefaultButton();
}

void frmAddress::Command2_Click() {
    if (view_ == View::Results) ShowView(View::Postcode);
    if (WindowText(c_.Command2) == kCaptionStop) {
        Stop();
    } else if (!fetching_ && !advSearch_.Busy()) {
        Find();
    }
}

void frmAddress::Find() {
    SetCaption(WithoutFoundNothing(Caption()));
    CaptionScope caption(*this, kCaptionSearching);
    SendMessageW(c_.AddressList, LB_RESETCONTENT, 0, 0);
    const FlagScope searching(searching_);
    const ButtonCaptionScope stop(c_.Command2, kCaptionStop, kCaptionFind);
    std::int32_t found = 0;
    {
        const WaitScope waiting(*this);
        if (lookups::GetFullAddressToList(AddressObj, WindowText(c_.InpPostcode))) found = AddressObj.RecordCount;
    }
    if (closed_) return;
    if (found != 0) {
        FillAddressList();
    } else {
        ReportFailure();
    }
    if (closed_) return;
    caption.Restore(
        CaptionToRestore(caption.Remembered(), AddressObj.General_credits_display_text, settings_.showAccountDetails));
    if (SendMessageW(c_.AddressList, LB_GETCOUNT, 0, 0) > 0) {
        SetTextIfNew(c_.Command1, kCaptionSelect);
        SendMessageW(c_.AddressList, LB_SETCURSEL, 0, 0);
        if (view_ == View::Postcode) SetFocus(c_.AddressList);
    } else {
        caption.Restore(caption.Remembered() + kFoundNothing);
        SetTextIfNew(c_.Command1, kCaptionCancel);
    }
    ShowDefaultButton();
}

void frmAddress::FillAddressList() {
    if (!settings_.path.empty()) advSearch_.CheckForAddressUpdates(AddressObj.General_LookupListVersion);
    SendMessageW(c_.AddressList, WM_SETREDRAW, FALSE, 0);
    int widest = 0;
    for (std::wstring line = lookups::GetFullAddressLineForSelection(AddressObj); !line.empty();
         line = lookups::GetFullAddressLineForSelection(AddressObj)) {
        SendMessageW(c_.AddressList, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.c_str()));
        widest = std::max(widest, static_cast<int>(Units().TextSize(line).cx));
    }
    SendMessageW(c_.AddressList, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(widest + Units().Scale(8)), 0);
    SendMessageW(c_.AddressList, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(c_.AddressList, nullptr, TRUE);
    ShowBuyMoreButton();
    SetInstruction(kPickAddress);
}

void frmAddress::ShowBuyMoreButton() {
    if (!settings_.AllowBuyMoreButton) return;
    buyMoreVisible_ = AddressObj.General_credits_display_showbutton;
    ShowControls();
    LayoutNow();
}

void frmAddress::ReportFailure() {
    if (!settings_.displayErrors) return;
    AddressObj.platform.user.ShowMessage(
        FailureText(AddressObj.General_credits_display_text, AddressObj.General_errormessage), support::kStyleCritical,
        kErrorTitle);
}

void frmAddress::Stop() {
    AddressObj.platform.web.StopRequest();
    SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    SetCaption(kCaptionStopped);
    AddressObj.platform.user.ShowMessage(StoppedText(), support::kStyleInformation, L"Quorvex Lookup COM Object");
}

// --- Select ------------------------------------------------------------------------------------------------

void frmAddress::selectaddress() {
    if (Searching()) return;
    const LRESULT index = SendMessageW(c_.AddressList, LB_GETCURSEL, 0, 0);
    if (index == LB_ERR) return;
    const FlagScope fetching(fetching_);
    bool fetched = false;
    {
        CaptionScope caption(*this, kCaptionFetching);
        {
            const WaitScope waiting(*this);
            fetched = lookups::GetFullAddressRecord(AddressObj, static_cast<std::int32_t>(index));
        }
        if (closed_) return; // the user gave up: no address
        ret_ = fetched;
        if (fetched) {
            ShowBuyMoreButton();
        } else {
            ReportFailure();
        }
        caption.Restore(CaptionToRestore(caption.Remembered(), AddressObj.General_credits_display_text,
                                         settings_.showAccountDetails));
    }
    Hide();
}

// --- Other buttons and keys --------------------------------------------------------------------------------

void frmAddress::Command1_Click() {
    if (WindowText(c_.Command1) == kCaptionCancel) {
        Close();
    } else if (SendMessageW(c_.AddressList, LB_GETCURSEL, 0, 0) == LB_ERR) {
        Close();
    } else {
        selectaddress();
    }
}

void frmAddress::Command3_Click() {
    if (const int field = PlaceFieldOf(GetFocus()); field != 0 && view_ == View::Criteria) PlaceEnter(field);
    switch (RouteEnter(view_, WindowText(c_.Command1) == kCaptionSelect, WindowText(c_.InpPostcode).empty(),
                       IsWindowEnabled(c_.ADVSearchFindButton) != FALSE)) {
    case EnterAction::Select:
        selectaddress();
        break;
    case EnterAction::Find:
        Command2_Click();
        break;
    case EnterAction::AdvancedFind:
        advSearch_.Find();
        break;
    case EnterAction::None:
        break;
    }
}

void frmAddress::Command4_Click() {
    switch (RouteEscape(view_)) {
    case EscapeAction::Unload:
        Close();
        break;
    case EscapeAction::LeaveAdvanced:
        Command11_Click();
        break;
    case EscapeAction::None:
        break;
    }
}

void frmAddress::BuyMoreButton_Click() {
    pages::ShowAccountAdminPage(AddressObj);
}

} // namespace quorvex::dialogs
