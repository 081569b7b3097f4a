#include "windows/picker.h"

#include "testing/temp_folder.h"

namespace quorvex::testing {
namespace {

using namespace dialogs;

const std::wstring kSearching = L"Web Address Server is Searching for Address...";
const std::wstring kFetching = L"Getting Address Record from Server...";

TEST_F(PickerTest, OpensIdleInDocumentedSizeWithTheFocusInThePostcode) {
    Open();
    FindStarted();
    EXPECT_FALSE(IsShown(Control(kBuyMoreButton)));
    EXPECT_FALSE(IsShown(Control(kADVSearchButton))); // the plain dialog has no advanced view
    EXPECT_TRUE(WaitUntil([this] { return FocusOf(dialog) == Control(kInpPostcode); }));
    RECT box{};
    GetWindowRect(dialog, &box);
    EXPECT_EQ(box.right - box.left, 375); // 5625 twips
    EXPECT_EQ(box.bottom - box.top, 485); // 7275 twips
    SetWindowPos(dialog, nullptr, 0, 0, 100, 100, SWP_NOMOVE | SWP_NOZORDER);
    GetWindowRect(dialog, &box);
    EXPECT_EQ(box.right - box.left, 260); // not smaller; what has no room is scrolled
    EXPECT_EQ(platform.requests, 0);
    ClickId(dialog, kCommand1);
    EXPECT_TRUE(Ended(false));
}

TEST_F(PickerTest, FindShowsTheAddressesAndSelectFetchesTheHighlightedOne) {
    Open();
    FindStarted();
    Type(Control(kInpPostcode), L"AB1 3CD");
    platform.hold = true;
    ClickId(dialog, kCommand2);
    ASSERT_TRUE(CaptionBecomes(kSearching));
    EXPECT_TRUE(TextBecomes(kCommand2, L"STOP"));
    EXPECT_EQ(Lines(), 0);
    platform.hold = false;
    ASSERT_TRUE(CaptionBecomes(kHostCaption));
    EXPECT_TRUE(TextBecomes(kCommand2, L"&Find"));
    EXPECT_EQ(TextOf(Control(kCommand1)), L"&Select");
    EXPECT_EQ(Lines(), 3);
    EXPECT_EQ(SendMessageW(Control(kAddressList), LB_GETCURSEL, 0, 0), 0);
    EXPECT_TRUE(WaitUntil([this] { return FocusOf(dialog) == Control(kAddressList); }));

    SendMessageW(Control(kAddressList), LB_SETCURSEL, 1, 0);
    platform.hold = true;
    ClickId(dialog, kCommand1);
    EXPECT_TRUE(CaptionBecomes(kFetching));
    platform.hold = false;
    EXPECT_TRUE(Ended(true));
    EXPECT_EQ(object.Address_Line1, L"2 Mill Lane");
    EXPECT_NE(platform.urls.back().find(L"&id=AB1 3CD_2_F"), std::wstring::npos);
    EXPECT_TRUE(WaitGone(kHostCaption));
}

TEST_F(PickerTest, ADoubleClickOnALineFetchesItAndBelowTheLastLineNothing) {
    OpenList();
    RECT line{};
    GetClientRect(Control(kAddressList), &line);
    MouseClick(Control(kAddressList), {line.left + 20, line.bottom - 5}, 2);
    WaitUntil([this] { return platform.requests > 1; }, std::chrono::milliseconds(300));
    EXPECT_EQ(platform.requests, 1);
    SendMessageW(Control(kAddressList), LB_GETITEMRECT, 2, reinterpret_cast<LPARAM>(&line));
    MouseClick(Control(kAddressList), {line.left + 20, (line.top + line.bottom) / 2}, 2);
    EXPECT_TRUE(Ended(true));
    EXPECT_NE(platform.urls.back().find(L"&id=AB1 3CD_3_F"), std::wstring::npos);
}

TEST_F(PickerTest, EditingThePostcodeMakesEnterFindAgainAndAnEmptyBoxStays) {
    OpenList();
    Type(Control(kInpPostcode), L"AB1 3CE");
    EXPECT_TRUE(TextBecomes(kCommand1, L"&Cancel"));
    FocusOn(Control(kInpPostcode));
    PressKey(Control(kInpPostcode), VK_RETURN);
    EXPECT_TRUE(WaitUntil([this] { return platform.requests == 2; }));
    ASSERT_TRUE(TextBecomes(kCommand1, L"&Select"));
    EXPECT_NE(platform.urls.back().find(L"&postcode=AB1 3CE"), std::wstring::npos);
    Type(Control(kInpPostcode), L"");
    FocusOn(Control(kInpPostcode));
    PressKey(Control(kInpPostcode), VK_RETURN);
    PressKey(Control(kInpPostcode), VK_ESCAPE);
    EXPECT_TRUE(Ended(false));
    EXPECT_EQ(platform.requests, 2);
}

TEST_F(PickerTest, ErrorsAreShownWithTheAccountsTextWhenAskedFor) {
    list = FailureReply(L"Postcode not known");
    std::wstring duringBox;
    platform.atMessage = [&] { duringBox = TextOf(dialog) + L"|" + TextOf(Control(kCommand2)); };
    Open(L"ZZ1 1ZZ", true, false, true);
    FindStarted();
    ASSERT_TRUE(WaitUntil([this] { return platform.Messages().size() == 1; }));
    EXPECT_TRUE(CaptionBecomes(L"3 credits left - Found nothing!"));
    EXPECT_EQ(duringBox, L"3 credits left - Found nothing!|&Find"); // the window does not search any more
    EXPECT_EQ(TextOf(Control(kLabel2)), L"Please enter Postcode and press the [Find] Button");
    EXPECT_TRUE(WaitUntil([this] { return FocusOf(dialog) == Control(kInpPostcode); }));
    EXPECT_TRUE(WaitUntil([this] { // selected, to be typed over
        return SendMessageW(Control(kInpPostcode), EM_GETSEL, 0, 0) == MAKELRESULT(0, 7);
    }));
    EXPECT_EQ(platform.Messages()[0].text, L"3 credits left\r\nPostcode not known");
    EXPECT_EQ(platform.Messages()[0].style, support::kStyleCritical);
    EXPECT_EQ(platform.Messages()[0].title, L"Quorvex Lookup");
    list = L"<x><confirm>Yes</confirm><recordcount>0</recordcount></x>";
    ClickId(dialog, kCommand2);
    EXPECT_TRUE(WaitUntil([this] { return platform.Messages().size() == 2; }));
    EXPECT_EQ(platform.Messages().back().text, L"Nothing found!"); // never an empty box
    EXPECT_TRUE(CaptionBecomes(L"3 credits left - Found nothing!")) << "said once; the account's text stays";
    ASSERT_TRUE(TextBecomes(kCommand2, L"&Find"));
    list = ListReply(1);
    record = FailureReply(L"No credit");
    ClickId(dialog, kCommand2);
    ASSERT_TRUE(TextBecomes(kCommand1, L"&Select"));
    PressKey(Control(kAddressList), VK_RETURN);
    EXPECT_TRUE(Ended(false)) << "a failed fetch closes the dialog";
    EXPECT_EQ(platform.Messages().size(), 3u);
}

TEST_F(PickerTest, ALongListSaysSoAndAFetchThatFailsSaysWhatHappened) {
    list = ListReply(105);
    record = L"<x><confirm>No</confirm></x>";
    struct Fetch {
        int line;
        const wchar_t* message;
    };
    for (const Fetch& fetch : {Fetch{100, L"Only the first 100 addresses of a list can be fetched."},
                               Fetch{3, L"The address could not be fetched."}}) {
        OpenList(false, false, true);
        EXPECT_TRUE(TextBecomes(kLabel2, L"Please double click on address to select (101 of 105)"));
        const std::size_t before = platform.Messages().size();
        SendMessageW(Control(kAddressList), LB_SETCURSEL, static_cast<WPARAM>(fetch.line), 0);
        ClickId(dialog, kCommand1);
        EXPECT_TRUE(Ended(false));
        ASSERT_EQ(platform.Messages().size(), before + 1);
        EXPECT_EQ(platform.Messages().back().text.find(fetch.message), 0U);
        host.reset();
    }
}

TEST_F(PickerTest, StopGivesTheSearchUpAndSaysWhy) {
    platform.hold = true;
    std::wstring duringBox;
    platform.atMessage = [&] { duringBox = TextOf(dialog); };
    Open(L"AB1 3CD", false, false, true);
    Find();
    ASSERT_TRUE(CaptionBecomes(kSearching));
    ClickId(dialog, kCommand2);
    EXPECT_TRUE(CaptionBecomes(std::wstring(kHostCaption) + L" - Found nothing!"));
    EXPECT_TRUE(TextBecomes(kCommand2, L"&Find"));
    EXPECT_EQ(duringBox, L"Stopped... Problems with internet connection");
    ASSERT_EQ(platform.Messages().size(), 1U) << "no second box after STOP";
    EXPECT_EQ(platform.Messages()[0].title, L"Quorvex Lookup COM Object");
    EXPECT_EQ(platform.stopCount, 1);
}

TEST_F(PickerTest, ClosingDuringASearchEndsTheCallAtOnce) {
    platform.hold = true;
    Open(L"AB1 3CD", false, false, true);
    Find();
    ASSERT_TRUE(CaptionBecomes(kSearching));
    PressKey(Control(kInpPostcode), VK_ESCAPE);
    EXPECT_TRUE(Ended(false));
    EXPECT_GE(platform.stopCount, 1);
    EXPECT_TRUE(platform.Messages().empty()); // nobody is left to read them
}

TEST_F(PickerTest, TheAccountButtonFollowsTheService) {
    list = ListReply(2, L"<credits_display_showbutton>1</credits_display_showbutton>"
                        L"<credits_display_text>7 credits</credits_display_text><accountadminpage>http://mine"
                        L"</accountadminpage>");
    OpenList(true, true);
    EXPECT_TRUE(CaptionBecomes(L"7 credits"));
    EXPECT_TRUE(Becomes(kBuyMoreButton, true));
    ClickId(dialog, kBuyMoreButton);
    EXPECT_TRUE(WaitUntil([this] { return !platform.opened.empty(); }));
    EXPECT_EQ(platform.opened[0].first, L"http://mine");
    list = ListReply(2);
    ClickId(dialog, kCommand2);
    EXPECT_TRUE(Becomes(kBuyMoreButton, false));
}

TEST_F(PickerTest, LocalModeRefusesWithoutFileAndAlwaysTheAdvancedDialog) {
    const TempFolder folder;
    object.LMSetDataPath(folder.Text());
    Open();
    EXPECT_TRUE(Ended(false));
    host.reset();
    const std::size_t before = platform.Messages().size();
    OpenAdvanced(folder.Text());
    EXPECT_TRUE(Ended(false));
    ASSERT_EQ(platform.Messages().size(), before + 1);
    EXPECT_EQ(platform.Messages().back().text, L"The Advanced search is not available in Local Mode");
    EXPECT_EQ(platform.Messages().back().style, support::kStyleCritical);
    object.LMSetDataPath(L"");
}

} // namespace
} // namespace quorvex::testing
