#include "dialogs/address_form_win.h"

#include "lookups/address_list.h"
#include "lookups/address_record.h"
#include "pages/pages.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace quorvex::dialogs {
namespace {

// Width and height of the window at 96 DPI, shared by all windows of the process: 16 bits each.
std::atomic<std::uint32_t> g_userSize{0};

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

SIZE RememberedSize() {
    const std::uint32_t size = g_userSize;
    return {static_cast<LONG>(size >> 16U), static_cast<LONG>(size & 0xFFFFU)};
}

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
    if (!KillTimer(Window(), kTimer1)) return; // once only
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
    FinishMouseClick();
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
    int line = 0;
    if (id == kAddressList && code == LBN_DBLCLK && PointerIsOnLine(line)) selectaddress();
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
    if (timer == kTreeClick) TreeClicked(static_cast<UINT>(NM_DBLCLK));
}

std::optional<LRESULT> frmAddress::SizeMessage(UINT message, LPARAM lParam) {
    constexpr int kLeastWidth = 260;
    constexpr int kLeastHeight = 240;
    if (message == WM_GETMINMAXINFO) {
        const RECT area = WorkArea(Window());
        reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = {
            std::min<LONG>(Units().Scale(kLeastWidth), area.right - area.left),
            std::min<LONG>(Units().Scale(kLeastHeight), area.bottom - area.top)};
        return 0;
    }
    RECT box{};
    GetWindowRect(Window(), &box);
    const SIZE size = {box.right - box.left, box.bottom - box.top};
    if (message == WM_ENTERSIZEMOVE) sizeBefore_ = size;
    if (message == WM_EXITSIZEMOVE && (size.cx != sizeBefore_.cx || size.cy != sizeBefore_.cy)) {
        const auto half = [this](LONG pixels) {
            return static_cast<std::uint32_t>(MulDiv(static_cast<int>(pixels), USER_DEFAULT_SCREEN_DPI, Units().Dpi()));
        };
        g_userSize = half(size.cx) << 16U | (half(size.cy) & 0xFFFFU);
    }
    return std::nullopt;
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
    } else if (advSearch_.Busy()) {
        afterwards_ = kCommand2; // its request was begun before and is ending
    } else if (!fetching_) {
        Find();
    }
}

void frmAddress::OperationEnded() {
    if (afterwards_ != 0 && !closed_) PostMessageW(Window(), WM_COMMAND, MAKEWPARAM(afterwards_, BN_CLICKED), 0);
    afterwards_ = 0;
}

void frmAddress::Find() {
    SetCaption(WithoutFoundNothing(Caption()));
    std::wstring caption = Caption();
    ClearAddressList();
    const std::int32_t found = Search();
    if (closed_) return;
    if (found != 0) FillAddressList();
    caption = CaptionToRestore(caption, AddressObj.General_credits_display_text, settings_.showAccountDetails);
    const bool lines = SendMessageW(c_.AddressList, LB_GETCOUNT, 0, 0) > 0;
    SetCaption(lines ? caption : caption + kFoundNothing);
    SetTextIfNew(c_.Command1, lines ? kCaptionSelect : kCaptionCancel);
    if (lines) SendMessageW(c_.AddressList, LB_SETCURSEL, 0, 0);
    ShowDefaultButton();
    if (found == 0 && !stopped_) ReportFailure(kNothingFound);
    if (closed_ || view_ != View::Postcode) return;
    SetFocus(lines ? c_.AddressList : c_.InpPostcode);
    if (!lines) SendMessageW(c_.InpPostcode, EM_SETSEL, 0, -1); // the next one is typed over it
}

// Waits for the list; the window says so meanwhile.
std::int32_t frmAddress::Search() {
    const CaptionScope caption(*this, kCaptionSearching);
    const FlagScope searching(searching_);
    const ButtonCaptionScope stop(c_.Command2, kCaptionStop, kCaptionFind);
    const WaitScope waiting(*this);
    stopped_ = false;
    if (GetFocus() == c_.Command2) SetFocus(c_.InpPostcode); // a second Enter would go to the button, which reads STOP
    return lookups::GetFullAddressToList(AddressObj, WindowText(c_.InpPostcode)) ? AddressObj.RecordCount : 0;
}

void frmAddress::ClearAddressList() {
    SendMessageW(c_.AddressList, LB_RESETCONTENT, 0, 0);
    SetTextIfNew(c_.AddressList, kAddressListName);
    SetInstruction(kEnterPostcode);
    typed_.clear();
    tippedLine_ = -1;
}

void frmAddress::FillAddressList() {
    if (!settings_.path.empty()) advSearch_.CheckForAddressUpdates(AddressObj.General_LookupListVersion);
    SendMessageW(c_.AddressList, WM_SETREDRAW, FALSE, 0);
    int widest = 0;
    std::size_t lines = 0;
    for (std::wstring line = lookups::GetFullAddressLineForSelection(AddressObj); !line.empty();
         line = lookups::GetFullAddressLineForSelection(AddressObj)) {
        SendMessageW(c_.AddressList, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.c_str()));
        widest = std::max(widest, static_cast<int>(Units().TextSize(line).cx));
        ++lines;
    }
    const int extent = widest + Units().Scale(8);
    SendMessageW(c_.AddressList, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(extent), 0);
    SendMessageW(c_.AddressList, WM_SETREDRAW, TRUE, 0);
    if (lines == 0) return;
    SetTextIfNew(c_.AddressList, kAddressListName + (L": " + std::to_wstring(lines)));
    NotifyWinEvent(EVENT_OBJECT_NAMECHANGE, c_.AddressList, OBJID_CLIENT, CHILDID_SELF);
    ShowBuyMoreButton();
    listed_ = static_cast<std::size_t>(std::max(AddressObj.RecordCount, 0));
    SetInstruction(PickInstruction(lines, listed_));
    LayoutNow(); // a scroll bar may have taken part of a row
}

void frmAddress::ShowBuyMoreButton() {
    if (!settings_.AllowBuyMoreButton) return;
    buyMoreVisible_ = AddressObj.General_credits_display_showbutton;
    ShowControls();
    LayoutNow();
}

void frmAddress::ReportFailure(const std::wstring& otherwise) {
    if (!settings_.displayErrors) return;
    AddressObj.platform.user.ShowMessage(
        FailureText(AddressObj.General_credits_display_text, AddressObj.General_errormessage, otherwise),
        support::kStyleCritical, kErrorTitle);
}

void frmAddress::Stop() {
    if (stopped_) return;
    stopped_ = true;
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
    const std::wstring caption = Caption();
    const FlagScope fetching(fetching_);
    bool fetched = false;
    {
        const CaptionScope during(*this, kCaptionFetching);
        const WaitScope waiting(*this);
        fetched = lookups::GetFullAddressRecord(AddressObj, static_cast<std::int32_t>(index));
    }
    if (closed_) return; // the user gave up: no address
    ret_ = fetched;
    SetCaption(CaptionToRestore(caption, AddressObj.General_credits_display_text, settings_.showAccountDetails));
    if (fetched) {
        ShowBuyMoreButton();
    } else {
        ReportFailure(FetchFailure(static_cast<std::size_t>(index)));
    }
    Hide();
}

// --- Other buttons and keys --------------------------------------------------------------------------------

void frmAddress::Command1_Click() {
    if (WindowText(c_.Command1) == kCaptionCancel || SendMessageW(c_.AddressList, LB_GETCURSEL, 0, 0) == LB_ERR) {
        Close();
    } else {
        selectaddress();
    }
}

void frmAddress::Command3_Click() {
    if (Searching()) return; // Enter that is held or pressed twice
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
    if (const int field = PlaceFieldOf(GetFocus()); field != 0 && CloseOpenList(advSearch_.PlaceField(field))) return;
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
