#include "dialogs/address_form_win.h"
#include "dialogs/input_form_win.h"
#include "dialogs/progress_window_win.h"
#include "dialogs/update_choice_win.h"
#include "dialogs/zip_form_win.h"
#include "support/text.h"
#include "testing/temp_folder.h"
#include "windows/picker.h"

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
};

TEST_P(LayoutTest, PostcodeViewWithAllItsButtons) {
    list = ListReply(30, L"<credits_display_showbutton>1</credits_display_showbutton>"
                         L"<lookuplistversion>V9</lookuplistversion>");
    OpenAt(L"AB1 3CD");
    ASSERT_TRUE(Becomes(kBuyMoreButton, true));
    ASSERT_TRUE(Becomes(kDownloadNewList, true));
    ExpectGoodLayout(dialog, "results");
    RECT box{};
    GetWindowRect(dialog, &box);
    EXPECT_EQ(box.right - box.left, MulDiv(375, GetParam(), 96));
    SetWindowPos(dialog, nullptr, 0, 0, box.right - box.left + 300, box.bottom - box.top + 100,
                 SWP_NOMOVE | SWP_NOZORDER);
    ExpectGoodLayout(dialog, "results, enlarged");
}

TEST_P(LayoutTest, CriteriaViewWithMessagesAndTree) {
    OpenAt(L"ADV");
    ASSERT_TRUE(Becomes(kFrame1, true));
    ASSERT_TRUE(WaitUntil([this] { return SendMessageW(Control(kInpPostcodeComb), CB_GETCOUNT, 0, 0) == 2; }));
    ExpectGoodLayout(dialog, "criteria");
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
}

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

INSTANTIATE_TEST_SUITE_P(Dpi, LayoutTest, ::testing::Values(96, 120, 144, 192, 288));

} // namespace
} // namespace quorvex::testing
