#include "windows/advanced.h"

#include "dialogs/address_form_win.h"
#include "support/files.h"

#include <algorithm>
#include <atomic>

namespace quorvex::testing {
namespace {

using namespace dialogs;

TEST_F(AdvancedTest, AdvOpensTheViewAndDownloadsTheListsOnFirstUse) {
    OpenCriteria();
    EXPECT_EQ(TextOf(Control(kInpPostcode)), L"");
    EXPECT_FALSE(IsShown(Control(kCommand1)));
    EXPECT_TRUE(Filled(kInpCountiesComb, 2));
    EXPECT_TRUE(Filled(kInpTownComb, 3));
    EXPECT_TRUE(Filled(kInpPostcodeComb, 2));
    EXPECT_TRUE(WaitUntil([this] { return FocusOf(dialog) == Control(kLines0); }));
    EXPECT_TRUE(IsShown(Control(kRightTopSectionWarning)));
    EXPECT_TRUE(IsShown(Control(kRightBottomSectionWarning)));
    EXPECT_FALSE(IsWindowEnabled(Control(kADVSearchFindButton)));
    PressKey(Control(kLines0), VK_RETURN); // searches for nothing as long as the criteria are incomplete
    PressKey(Control(kLines0), VK_ESCAPE); // to the postcode view, then out
    EXPECT_TRUE(Becomes(kCommand1, true));
    EXPECT_TRUE(WaitUntil([this] { return FocusOf(dialog) == Control(kInpPostcode); }));
    EXPECT_EQ(platform.requests, 1); // the lists
    PressKey(Control(kInpPostcode), VK_ESCAPE);
    EXPECT_TRUE(Ended(false));
}

TEST_F(AdvancedTest, CriteriaAreSummedUpAndEnableFindWhenBothGroupsHaveAnEntry) {
    OpenFilled();
    EXPECT_TRUE(TextBecomes(kCriteriaLabel, L"Organisation='ACME' starts with 'LTD*'\r\n IN Town/City='BATH'\r\n"));
    EXPECT_FALSE(IsShown(Control(kRightTopSectionWarning)));
    EXPECT_FALSE(IsShown(Control(kRightBottomSectionWarning)));
    Choose(kInpCountiesComb, L"Kent"); // places exclude each other
    EXPECT_TRUE(TextBecomes(kInpTownComb, L""));
    EXPECT_EQ(TextOf(Control(kInpCountiesComb)), L"Kent");
    ClickId(dialog, kCommand5);
    EXPECT_TRUE(TextBecomes(kInpCountiesComb, L""));
    EXPECT_EQ(TextOf(Control(kLines0)), L"");
    EXPECT_TRUE(Enabled(kADVSearchFindButton, false));
}

TEST_F(AdvancedTest, ShortTextsWarnForAWhileAndStay) {
    EXPECT_EQ(AddressFormSettings{}.warningMilliseconds, 6000U);
    host = std::make_unique<HostThread>([this] {
        AddressFormSettings settings;
        settings.PostcodePrimer = L"ADV";
        settings.caption = kHostCaption;
        settings.advanced = true;
        settings.warningMilliseconds = 500;
        frmAddress(object, settings).ShowModal();
    });
    Find();
    ASSERT_TRUE(Becomes(kFrame1, true));
    FocusOn(Control(kLines0));
    Type(Control(kLines0), L"ab*");
    FocusOn(Control(kLines1));
    EXPECT_TRUE(Becomes(kTopWarning, true));
    EXPECT_EQ(TextOf(Control(kLines0)), L"ab*");
    EXPECT_TRUE(Becomes(kTopWarning, false));
}

TEST_F(AdvancedTest, TypingCompletesFromTheListAndAPlaceThatIsNotInItKeepsTheFocus) {
    OpenFilled();
    FocusOn(Edit(kInpTownComb));
    Type(Control(kInpTownComb), L"");
    TypeKeys(Edit(kInpTownComb), L"ca");
    EXPECT_EQ(TextOf(Control(kInpTownComb)), L"Cambridge");
    EXPECT_EQ(Selected(kInpTownComb), L"mbridge");
    TypeKeys(Edit(kInpTownComb), L"z");
    EXPECT_EQ(TextOf(Control(kInpTownComb)), L"Caz");
    SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(kLines2)), TRUE);
    EXPECT_TRUE(Becomes(kBottomWarning, true));
    EXPECT_TRUE(WaitUntil([this] { return FocusOf(dialog) == Edit(kInpTownComb); }));
    SendMessageW(Control(kADVSearchFindButton), BM_CLICK, 0, 0);
    EXPECT_EQ(platform.requests, 1) << "nor is it searched for";
    Type(Control(kInpTownComb), L"");
    FocusOn(Control(kLines2));
}

TEST_F(AdvancedTest, OnlyAWholePlaceEmptiesTheOthers) {
    OpenFilled();
    FocusOn(Edit(kInpCountiesComb));
    TypeKeys(Edit(kInpCountiesComb), L"k");
    EXPECT_EQ(TextOf(Control(kInpCountiesComb)), L"Kent"); // an offer
    EXPECT_EQ(TextOf(Control(kInpTownComb)), L"Bath");
    FocusOn(Control(kLines2)); // accepts it
    EXPECT_TRUE(TextBecomes(kInpTownComb, L""));
    FocusOn(Edit(kInpTownComb));
    TypeKeys(Edit(kInpTownComb), L"bath");
    EXPECT_EQ(TextOf(Control(kInpCountiesComb)), L"");
}

TEST_F(AdvancedTest, EscClosesAnOpenListFirst) {
    OpenFilled();
    FocusOn(Edit(kInpTownComb));
    SendMessageW(Control(kInpTownComb), CB_SHOWDROPDOWN, TRUE, 0);
    PressKey(Edit(kInpTownComb), VK_ESCAPE);
    EXPECT_TRUE(WaitUntil([this] { return SendMessageW(Control(kInpTownComb), CB_GETDROPPEDSTATE, 0, 0) == 0; }));
    EXPECT_TRUE(IsShown(Control(kFrame1)));
    EXPECT_EQ(TextOf(Control(kInpTownComb)), L"Bath");
    PressKey(Edit(kInpTownComb), VK_ESCAPE);
    EXPECT_TRUE(Becomes(kCommand1, true));
}

// A download that the user left is stopped, the next search is sent, and no box tells of it.
TEST_F(AdvancedTest, LeavingDuringTheFirstDownloadEndsItWithoutAWord) {
    for (const bool close : {false, true}) {
        const int before = platform.requests;
        platform.hold = true;
        OpenCriteria(true);
        ASSERT_TRUE(CaptionBecomes(L"Downloading Data, please wait..."));
        Type(Control(kInpPostcode), L"AB1 3CD");
        if (close) {
            PostMessageW(dialog, WM_CLOSE, 0, 0);
            EXPECT_TRUE(Ended(false));
        } else {
            PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
            PostMessageW(dialog, WM_COMMAND, kCommand2, 0); // while the request is still ending
            EXPECT_TRUE(CaptionBecomes(L"Web Address Server is Searching for Address..."));
            EXPECT_EQ(platform.requests, before + 2);
            platform.hold = false;
            EXPECT_TRUE(TextBecomes(kCommand1, L"&Select"));
            PressKey(Control(kAddressList), VK_ESCAPE);
            EXPECT_TRUE(Ended(false));
        }
        host.reset();
    }
    EXPECT_TRUE(platform.Messages().empty());
}

// The host's window has a button under the tree; how often it is pressed is counted.
WNDPROC g_hostProcedure = nullptr;
std::atomic<int> g_presses{0};

LRESULT CALLBACK CountPresses(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND && HIWORD(wParam) == BN_CLICKED) ++g_presses;
    return CallWindowProcW(g_hostProcedure, window, message, wParam, lParam);
}

TEST_F(AdvancedTest, TheSecondClickOfADoubleClickNeverReachesTheHost) {
    const UINT usual = GetDoubleClickTime();
    SetDoubleClickTime(4000);
    std::atomic<bool> returned{false};
    std::atomic<bool> end{false};
    g_presses = 0;
    host = std::make_unique<HostThread>([&] {
        const HostWindow own;
        MoveWindow(own.button, 0, 0, 900, 700, TRUE);
        g_hostProcedure = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(own.window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CountPresses)));
        result = SearchForFullAddressWithDialogueAdv(object, L"ADV", kHostCaption, folder.Text(), false, false, false);
        returned = true;
        PumpWhile([&] { return !end; });
    });
    Find();
    FillIn();
    SearchTree();
    const HTREEITEM line = Item(TVGN_CHILD, Item(TVGN_ROOT, nullptr));
    ClickItem(line, 1);
    WaitUntil([this] { return platform.requests > 2; }, std::chrono::milliseconds(400));
    EXPECT_EQ(platform.requests, 2) << "one click waits for the second one";
    ClickItem(line, 1);
    EXPECT_TRUE(WaitUntil([&] { return returned.load(); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(g_presses, 0);
    end = true;
    EXPECT_TRUE(Ended(true));
    SetDoubleClickTime(usual);
}

TEST_F(AdvancedTest, OneClickIsEnough) {
    OpenFilled();
    SearchTree();
    ClickItem(Item(TVGN_CHILD, Item(TVGN_ROOT, nullptr)), 1);
    EXPECT_TRUE(Ended(true));
}

TEST_F(AdvancedTest, ResultsStandInATreeAndALineIsFetched) {
    OpenFilled();
    SearchTree();
    EXPECT_NE(platform.urls.back().find(L"&company=acme ltd*&house=&street=&town=Bath&county=&postcodearea="),
              std::wstring::npos);
    EXPECT_EQ(SendMessageW(Tree(), TVM_GETCOUNT, 0, 0), 6);
    const HTREEITEM heading = Item(TVGN_ROOT, nullptr);
    EXPECT_TRUE(Expanded(heading));
    PressKey(Tree(), VK_RETURN);
    PressKey(Tree(), VK_ESCAPE);
    ClickItem(heading, 2);
    EXPECT_TRUE(TextBecomes(kLabel2, L"Please select lines below to get address..."));
    EXPECT_TRUE(IsShown(Tree())); // neither Enter nor Esc leaves the tree
    EXPECT_EQ(platform.requests, 2);
    SendMessageW(Tree(), TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(heading));
    platform.hold = true;
    ClickItem(Item(TVGN_NEXT, Item(TVGN_CHILD, heading)), 2);
    EXPECT_TRUE(CaptionBecomes(L"Getting Address Record from Server..."));
    platform.hold = false;
    EXPECT_TRUE(Ended(true));
    EXPECT_NE(platform.urls.back().find(L"&id=AB1 3CD_12_F"), std::wstring::npos);
    EXPECT_EQ(platform.requests, 3); // the second click of the double click was ignored
}

TEST_F(AdvancedTest, AFailedFetchStaysInTheTreeAndCancelLeadsBack) {
    record = FailureReply(L"No credit");
    OpenFilled(true);
    SearchTree();
    SendMessageW(Tree(), TVM_SELECTITEM, TVGN_CARET,
                 reinterpret_cast<LPARAM>(Item(TVGN_CHILD, Item(TVGN_ROOT, nullptr))));
    PressKey(Tree(), VK_SPACE);
    EXPECT_TRUE(WaitUntil([this] { return platform.Messages().size() == 1; }));
    EXPECT_EQ(platform.Messages().back().text, L"3 credits left\r\nNo credit");
    EXPECT_TRUE(CaptionBecomes(kHostCaption));
    EXPECT_TRUE(IsShown(Tree()));
    ClickId(dialog, kADVSearchButton); // back to the criteria, as they were
    EXPECT_TRUE(Becomes(kFrame1, true));
    EXPECT_EQ(TextOf(Control(kLines0)), L"acme ltd*");
    ClickId(dialog, kCommand11);
    EXPECT_TRUE(Becomes(kCommand1, true));
}

TEST_F(AdvancedTest, NothingFoundAndFailuresAreToldInTheView) {
    advanced = L"<x><confirm>Yes</confirm><recordcount>0</recordcount><errormessage>Too wide</errormessage></x>";
    OpenFilled(true);
    ClickId(dialog, kADVSearchFindButton);
    EXPECT_TRUE(TextBecomes(kBottomWarning, L"Nothing found!"));
    EXPECT_TRUE(TextBecomes(kTopWarning, L"Too wide"));
    EXPECT_TRUE(platform.Messages().empty());
    advanced = FailureReply(L"Bad key");
    PressKey(Control(kLines0), VK_RETURN);
    ASSERT_TRUE(WaitUntil([this] { return platform.Messages().size() == 1; }));
    EXPECT_EQ(platform.Messages()[0].text, L"3 credits left\r\nBad key");
    EXPECT_EQ(platform.Messages()[0].title, L"Quorvex Lookup");
    EXPECT_TRUE(IsShown(Control(kFrame1)));
}

TEST_F(AdvancedTest, LeavingDuringASearchStopsItAndShowsNoTreeAfterwards) {
    OpenFilled();
    platform.hold = true;
    ClickId(dialog, kADVSearchFindButton);
    ASSERT_TRUE(WaitUntil([this] { return platform.requests == 2; }));
    EXPECT_TRUE(CaptionBecomes(L"Web Address Server is Searching for Address..."));
    ClickId(dialog, kADVSearchFindButton); // a click during the search is ignored
    PressKey(Control(kLines0), VK_ESCAPE);
    EXPECT_TRUE(Becomes(kCommand1, true));
    ClickId(dialog, kCommand1);
    EXPECT_TRUE(Ended(false));
    EXPECT_EQ(platform.requests, 2);
}

TEST_F(AdvancedTest, ANewerListIsOfferedDownloadedOnRequestAndShown) {
    list = ListReply(2, L"<lookuplistversion>V2</lookuplistversion>");
    support::WriteFileBytes(folder.File(L"lookup.xml"), "<A>AB</A><T>Bath</T><O>Avon</O>");
    OpenAdvanced(folder.Text(), L"AB1 3CD");
    FindStarted();
    EXPECT_TRUE(Becomes(kDownloadNewList, true));
    EXPECT_TRUE(support::FileExists(folder.File(L"lookupUpdate.xml")));
    ClickId(dialog, kADVSearchButton);
    ASSERT_TRUE(Filled(kInpPostcodeComb, 1));
    platform.answers = {support::kAnswerNo, support::kAnswerYes};
    ClickId(dialog, kDownloadNewList);
    ASSERT_TRUE(WaitUntil([this] { return platform.Messages().size() == 1; }));
    EXPECT_TRUE(IsShown(Control(kDownloadNewList)));
    std::wstring duringBox;
    platform.atMessage = [&] { duringBox = TextOf(dialog); };
    ClickId(dialog, kDownloadNewList);
    EXPECT_TRUE(Becomes(kDownloadNewList, false));
    EXPECT_EQ(duringBox, kHostCaption); // nothing is being downloaded any more
    EXPECT_TRUE(Filled(kInpPostcodeComb, 2));
    EXPECT_TRUE(Becomes(kADVSearchLoadNewLists, true));
}

// Counts what one tick of the dialog's timers adds to the town field.
WNDPROC g_dialogProcedure = nullptr;
std::atomic<int> g_mostPerTick{0};

LRESULT CALLBACK CountingProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto count = [window] {
        return static_cast<int>(SendDlgItemMessageW(window, kInpTownComb, CB_GETCOUNT, 0, 0));
    };
    const int before = message == WM_TIMER ? count() : 0;
    const LRESULT result = CallWindowProcW(g_dialogProcedure, window, message, wParam, lParam);
    if (message == WM_TIMER) g_mostPerTick = std::max(g_mostPerTick.load(), count() - before);
    return result;
}

TEST_F(AdvancedTest, AListOfTownsFillsInSlicesBetweenWhichTheWindowAnswers) {
    std::wstring towns;
    for (int n = 0; n < 5000; ++n) towns += L"Town number " + std::to_wstring(n) + L",";
    lists = L"<x><LookupListVersion>V1</LookupListVersion><A>AB,BA</A><T>" + towns + L"</T><O>Avon</O></x>";
    OpenAdvanced(folder.Text(), L"AB1 3CD");
    FindStarted();
    ASSERT_TRUE(TextBecomes(kCommand1, L"&Select"));
    g_dialogProcedure = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(dialog, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CountingProcedure)));
    ClickId(dialog, kADVSearchButton);
    EXPECT_TRUE(Filled(kInpTownComb, 5000));
    EXPECT_GT(g_mostPerTick, 0);
    EXPECT_LE(g_mostPerTick, 512);
}

} // namespace
} // namespace quorvex::testing
