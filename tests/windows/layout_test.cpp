#include "dialogs/address_form_win.h"
#include "dialogs/combo_win.h"
#include "dialogs/input_form_win.h"
#include "dialogs/progress_window_win.h"
#include "dialogs/update_choice_win.h"
#include "dialogs/zip_form_win.h"
#include "support/text.h"
#include "testing/temp_folder.h"
#include "windows/advanced.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace quorvex::testing {
namespace {

using namespace dialogs;

struct Control {
    HWND window = nullptr;
    std::wstring kind;
    std::wstring text;
    LONG_PTR style = 0;
    RECT box{}; // in the dialog
    bool IsFrame() const { return kind == L"Button" && (style & BS_TYPEMASK) == BS_GROUPBOX; }
    std::string Name() const { return support::ToUtf8(kind + L" \"" + text + L"\""); }
};

std::vector<Control> ControlsOf(HWND dialog) {
    std::vector<Control> controls;
    for (const HWND window : ShownChildren(dialog)) {
        Control control;
        control.window = window;
        wchar_t name[64]{};
        GetClassNameW(window, name, 64);
        control.kind = name;
        control.text = TextOf(window);
        control.style = GetWindowLongPtrW(window, GWL_STYLE);
        GetWindowRect(window, &control.box);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&control.box), 2);
        controls.push_back(control);
    }
    return controls;
}

SIZE TextSize(const Control& control, LONG width) {
    const HDC screen = GetDC(nullptr);
    const auto font = reinterpret_cast<HGDIOBJ>(SendMessageW(control.window, WM_GETFONT, 0, 0));
    const HGDIOBJ before = SelectObject(screen, font);
    RECT box{0, 0, width, 0};
    const UINT format = DT_CALCRECT | (control.kind == L"Static" || (control.style & BS_MULTILINE) ? DT_WORDBREAK : 0U);
    DrawTextW(screen, control.text.c_str(), -1, &box, format);
    SelectObject(screen, before);
    ReleaseDC(nullptr, screen);
    return {box.right, box.bottom};
}

// Every text fits into its control, every control into the window, and no two controls share a place.
void ExpectGoodLayout(HWND dialog, const std::string& what) {
    RECT client{};
    GetClientRect(dialog, &client);
    const std::vector<Control> controls = ControlsOf(dialog);
    ASSERT_GT(controls.size(), 0u) << what;
    for (const Control& control : controls) {
        EXPECT_TRUE(control.box.left >= 0 && control.box.top >= 0 && control.box.right <= client.right &&
                    control.box.bottom <= client.bottom)
            << what << ": outside the window: " << control.Name();
        const LONG width = control.box.right - control.box.left;
        const LONG height = control.box.bottom - control.box.top;
        EXPECT_GT(width, 0) << what << ": " << control.Name();
        if (control.kind == L"Static" || control.kind == L"Button") {
            const SIZE text = TextSize(control, width);
            EXPECT_LE(text.cx, width) << what << ": cut at the side: " << control.Name();
            EXPECT_LE(text.cy, height) << what << ": cut at the bottom: " << control.Name();
        } else {
            EXPECT_GE(height, TextSize(Control{control.window, control.kind, L"Ag", 0, {}}, 1000).cy)
                << what << ": too low for a line: " << control.Name();
        }
    }
    for (std::size_t a = 0; a < controls.size(); ++a) {
        for (std::size_t b = a + 1; b < controls.size(); ++b) {
            if (controls[a].IsFrame() || controls[b].IsFrame()) continue;
            RECT shared{};
            EXPECT_FALSE(IntersectRect(&shared, &controls[a].box, &controls[b].box))
                << what << ": " << controls[a].Name() << " and " << controls[b].Name() << " overlap";
        }
    }
}

// Tab goes through the window as the eye does: along a row, then down.
void ExpectTabOrderAsSeen(HWND dialog, const std::string& what) {
    const Control* before = nullptr;
    const std::vector<Control> controls = ControlsOf(dialog);
    for (const Control& control : controls) {
        if ((control.style & WS_TABSTOP) == 0) continue;
        if (before != nullptr) {
            const bool below = control.box.top >= before->box.bottom - 1;
            const bool beside = control.box.left >= before->box.right && control.box.bottom > before->box.top;
            EXPECT_TRUE(below || beside) << what << ": " << before->Name() << " then " << control.Name();
        }
        before = &control;
    }
}

// Fields of one height, each label on the line of its field's text.
void ExpectEvenRows(HWND dialog, const std::vector<int>& fields) {
    RECT first{};
    GetWindowRect(GetDlgItem(dialog, fields.front()), &first);
    for (const int id : fields) {
        const HWND field = GetDlgItem(dialog, id);
        RECT box{};
        RECT label{};
        GetWindowRect(field, &box);
        GetWindowRect(GetWindow(field, GW_HWNDPREV), &label);
        EXPECT_EQ(box.bottom - box.top, first.bottom - first.top) << id;
        EXPECT_NEAR(label.top - box.top, TextTop(field), 1) << id;
    }
}

void ExpectWholeRows(HWND list, int rowHeight) {
    RECT client{};
    GetClientRect(list, &client);
    EXPECT_EQ(client.bottom % rowHeight, 0) << "a row is cut";
    EXPECT_GE(client.bottom / rowHeight, 3);
}

class LayoutTest : public PickerTest, public ::testing::WithParamInterface<int> {
  protected:
    TempFolder folder;

    void OpenAt(const std::wstring& postcode) {
        host = std::make_unique<HostThread>([=, this] {
            AddressFormSettings settings;
            settings.PostcodePrimer = postcode;
            settings.caption = kHostCaption;
            settings.path = folder.Text();
            settings.advanced = true;
            settings.AllowBuyMoreButton = true;
            settings.dpi = GetParam();
            frmAddress(object, settings).ShowModal();
        });
        FindStarted();
    }
    void ExpectGoodPostcodeView();
    void ExpectGoodAdvancedViews();
};

void LayoutTest::ExpectGoodPostcodeView() {
    list = ListReply(30, L"<credits_display_showbutton>1</credits_display_showbutton>"
                         L"<lookuplistversion>V9</lookuplistversion>");
    OpenAt(L"AB1 3CD");
    ASSERT_TRUE(Becomes(kBuyMoreButton, true));
    ASSERT_TRUE(Becomes(kDownloadNewList, true));
    ExpectGoodLayout(dialog, "results");
    ExpectTabOrderAsSeen(dialog, "results");
    ExpectEvenRows(dialog, {kInpPostcode});
    ExpectWholeRows(Control(kAddressList),
                    static_cast<int>(SendMessageW(Control(kAddressList), LB_GETITEMHEIGHT, 0, 0)));
}

TEST_P(LayoutTest, PostcodeViewWithAllItsButtons) {
    ExpectGoodPostcodeView();
    RECT box{};
    GetWindowRect(dialog, &box);
    EXPECT_EQ(box.right - box.left, MulDiv(375, GetParam(), 96));
    SetWindowPos(dialog, nullptr, 0, 0, box.right - box.left + 300, box.bottom - box.top + 100,
                 SWP_NOMOVE | SWP_NOZORDER);
    ExpectGoodLayout(dialog, "results, enlarged");
}

void LayoutTest::ExpectGoodAdvancedViews() {
    OpenAt(L"ADV");
    ASSERT_TRUE(Becomes(kFrame1, true));
    ASSERT_TRUE(Filled(kInpPostcodeComb, 2));
    ExpectGoodLayout(dialog, "criteria");
    ExpectTabOrderAsSeen(dialog, "criteria");
    ExpectEvenRows(dialog, {kLines0, kLines1, kLines2, kInpTownComb, kInpCountiesComb, kInpPostcodeComb});
    FocusOn(Control(kLines0));
    Type(Control(kLines0), L"ab");
    FocusOn(Control(kLines1));
    ASSERT_TRUE(Becomes(kTopWarning, true));
    ExpectGoodLayout(dialog, "criteria with message");
    Type(Control(kInpTownComb), L"Bath");
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(kInpTownComb, CBN_EDITCHANGE),
                 reinterpret_cast<LPARAM>(Control(kInpTownComb)));
    ASSERT_TRUE(Enabled(kADVSearchFindButton, true));
    ClickId(dialog, kADVSearchFindButton);
    ASSERT_TRUE(Becomes(kAdvResultsTree, true));
    ExpectGoodLayout(dialog, "tree");
    ExpectTabOrderAsSeen(dialog, "tree");
    ExpectWholeRows(Control(kAdvResultsTree), TreeView_GetItemHeight(Control(kAdvResultsTree)));
}

TEST_P(LayoutTest, CriteriaViewWithMessagesAndTree) {
    ExpectGoodAdvancedViews();
}

// The user's font may be half as large again as the usual one.
class LargeFontTest : public LayoutTest {
  protected:
    void SetUp() override {
        usual_.cbSize = sizeof usual_;
        SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof usual_, &usual_, 0);
        NONCLIENTMETRICSW large = usual_;
        large.lfMessageFont.lfHeight = MulDiv(large.lfMessageFont.lfHeight, 3, 2);
        SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof large, &large, 0);
    }
    void TearDown() override {
        End();
        SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof usual_, &usual_, 0);
    }

  private:
    NONCLIENTMETRICSW usual_{};
};

TEST_P(LargeFontTest, PostcodeView) {
    ExpectGoodPostcodeView();
    const Metrics usual(nullptr, GetParam());
    EXPECT_GT(usual.LineHeight(), MulDiv(16, GetParam(), 96)) << "the font is not large";
}

TEST_P(LargeFontTest, AdvancedViews) {
    ExpectGoodAdvancedViews();
}

INSTANTIATE_TEST_SUITE_P(Dpi, LargeFontTest, ::testing::Values(96, 192));

TEST_P(LayoutTest, SmallWindows) {
    HostThread update([&] {
        UpdateChoiceForm(platform, GetParam())
            .Ask(L"Update", L"C:\\A folder of some length\\for the address data", true);
    });
    const HWND choice = WaitForWindow(L"Update");
    ExpectGoodLayout(choice, "update choice");
    PostMessageW(choice, WM_CLOSE, 0, 0);
    ASSERT_TRUE(update.WaitDone());
    HostThread input([&] {
        InputForm(platform, GetParam())
            .Ask(nullptr, L"A question that is long enough to need more than one line in this window", L"Input", L"");
    });
    const HWND question = WaitForWindow(L"Input");
    ExpectGoodLayout(question, "input");
    PostMessageW(question, WM_CLOSE, 0, 0);
    ASSERT_TRUE(input.WaitDone());
}

TEST_P(LayoutTest, StatusWindows) {
    std::atomic<bool> end{false};
    HostThread thread([&] {
        frmInternetAccessForm progress(platform, {}, GetParam());
        progress.Open(L"Progress", L"Get file: UPDATE_F_20260331.zip 3,120 of 7,480 Kb 42%");
        ZipForm zip(platform, GetParam());
        zip.Load();
        zip.SetCaptions(L"Zip", L"Unziping file");
        zip.SetStatus(L"Extracting UPDATE_F_20260331.zip");
        PumpWhile([&] { return !end; });
    });
    ExpectGoodLayout(WaitForWindow(L"Progress"), "progress");
    ExpectGoodLayout(WaitForWindow(L"Zip"), "zip");
    end = true;
}

// At 1200 DPI the documented size is more than the screen has; at 96 the user makes the window small.
class SmallScreenTest : public LayoutTest {};

TEST_P(SmallScreenTest, TheWindowStaysOnTheScreenAndScrollsToWhatHasTheFocus) {
    OpenAt(L"ADV");
    ASSERT_TRUE(Becomes(kFrame1, true));
    if (GetParam() == 96) SetWindowPos(dialog, nullptr, 0, 0, 300, 300, SWP_NOMOVE | SWP_NOZORDER);
    const RECT area = WorkArea(dialog);
    RECT box{};
    GetWindowRect(dialog, &box);
    EXPECT_TRUE(box.left >= area.left && box.top >= area.top && box.right <= area.right && box.bottom <= area.bottom);
    EXPECT_NE(GetWindowLongPtrW(dialog, GWL_STYLE) & WS_VSCROLL, 0);
    for (const int id : {kLines0, kLines2, kInpPostcodeComb, kADVSearchLoadNewLists, kCommand11, kLines0}) {
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(id)), TRUE);
        RECT client{};
        GetClientRect(dialog, &client);
        const auto inSight = [&] {
            RECT place{};
            GetWindowRect(Control(id), &place);
            MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
            return place.top >= 0 && place.bottom <= client.bottom;
        };
        EXPECT_TRUE(WaitUntil(inSight)) << id;
    }
}

INSTANTIATE_TEST_SUITE_P(Screen, SmallScreenTest, ::testing::Values(96, 1200));

std::vector<std::uint32_t> Pixels(HWND window) {
    RECT client{};
    GetClientRect(window, &client);
    BITMAPINFO info{};
    info.bmiHeader = {sizeof info.bmiHeader, client.right, -client.bottom, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(client.right * client.bottom));
    const HDC screen = GetDC(window);
    const HDC memory = CreateCompatibleDC(screen);
    void* bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(memory, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ before = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, client.right, client.bottom, screen, 0, 0, SRCCOPY);
    GdiFlush();
    std::memcpy(pixels.data(), bits, pixels.size() * sizeof pixels[0]);
    SelectObject(memory, before);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(window, screen);
    return pixels;
}

// Until nothing of the window waits to be drawn any more.
bool Painted(HWND dialog) {
    const bool painted = WaitUntil([&] {
        for (const HWND control : ShownChildren(dialog)) {
            if (GetUpdateRect(control, nullptr, FALSE)) return false;
        }
        return !GetUpdateRect(dialog, nullptr, FALSE);
    });
    SendMessageW(dialog, WM_NULL, 0, 0); // answered between two messages: what was being drawn is complete
    return painted;
}

TEST_F(AdvancedTest, AWindowThatIsResizedLooksAsOneThatIsDrawnAnew) {
    OpenFilled();
    FocusOn(Control(kCommand5)); // no caret
    for (const SIZE size : {SIZE{520, 600}, SIZE{375, 485}, SIZE{330, 420}, SIZE{700, 500}}) {
        SetWindowPos(dialog, nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER);
        ASSERT_TRUE(Painted(dialog));
        const std::vector<std::uint32_t> resized = Pixels(dialog);
        RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
        ASSERT_TRUE(Painted(dialog));
        const std::vector<std::uint32_t> drawn = Pixels(dialog);
        ASSERT_EQ(resized.size(), drawn.size());
        const auto differs = std::mismatch(resized.begin(), resized.end(), drawn.begin()).first;
        EXPECT_EQ(differs, resized.end()) << size.cx << " wide, pixel " << differs - resized.begin();
    }
}

// High contrast: labels and the group's title are drawn in the system's colours, whatever the theme has.
TEST_F(AdvancedTest, TextsTakeOverTheColoursOfHighContrast) {
    OpenCriteria();
    constexpr std::uint32_t kBlack = 0;
    constexpr std::uint32_t kWhite = 0xFFFFFF;
    const INT which[] = {COLOR_3DFACE, COLOR_BTNTEXT, COLOR_WINDOWTEXT};
    const COLORREF usual[] = {GetSysColor(which[0]), GetSysColor(which[1]), GetSysColor(which[2])};
    const COLORREF contrast[] = {kBlack, kWhite, kWhite};
    SetSysColors(3, which, contrast);
    EXPECT_TRUE(Painted(dialog));
    const std::vector<std::uint32_t> pixels = Pixels(dialog);
    SetSysColors(3, which, usual);
    RECT client{};
    GetClientRect(dialog, &client);
    for (const auto& control : ControlsOf(dialog)) {
        if ((control.kind != L"Static" && !control.IsFrame()) || control.text.empty()) continue;
        const SIZE text = TextSize(control, control.box.right - control.box.left);
        const LONG end =
            control.IsFrame() ? control.box.left + text.cx : control.box.right; // a frame goes on as a line
        int paper = 0;
        int ink = 0;
        for (LONG y = control.box.top; y < control.box.top + text.cy; ++y) {
            for (LONG x = control.box.left; x < end; ++x) {
                const std::uint32_t pixel = pixels[static_cast<std::size_t>(y * client.right + x)] & kWhite;
                paper += pixel == kBlack;
                ink += pixel == kWhite;
            }
        }
        EXPECT_GT(ink, 2 * text.cx / text.cy) << control.Name();
        EXPECT_GT(paper, ink) << control.Name();
    }
}

INSTANTIATE_TEST_SUITE_P(Dpi, LayoutTest, ::testing::Values(96, 120, 144, 192, 288));

} // namespace
} // namespace quorvex::testing
