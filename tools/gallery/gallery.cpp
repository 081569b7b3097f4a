// Opens one window of the component with made-up replies and keeps it open, so that a picture can be taken.
//
//   gallery SCENE [DPI]     prints "x y width height" when the window stands

#include "dialogs/address_controls_win.h"
#include "dialogs/address_form_win.h"
#include "dialogs/progress_window_win.h"
#include "dialogs/update_choice_win.h"
#include "dialogs/zip_form_win.h"
#include "testing/dialog_platform_win.h"
#include "testing/driver_win.h"

#include <cstdio>
#include <cstdlib>

namespace {

using namespace quorvex;
using namespace quorvex::testing;
using namespace quorvex::dialogs;

constexpr wchar_t kCaption[] = L"Find address";

std::wstring TreePage() {
    std::wstring items;
    for (const wchar_t* street :
         {L"Victoria Road, Wisbech", L"Victoria Street, Wisbech", L"Victoria Close, Leverington"}) {
        items += std::wstring(L"<h>") + street + L"</h>";
        for (const wchar_t* house : {L"The Corner House", L"12", L"14a", L"16", L"Demo Data Ltd, 18"}) {
            items += std::wstring(L"<l>") + house + L" " + street + L"</l><id>ZZ99_" + house + L"_F</id>";
        }
    }
    return L"<x><confirm>Yes</confirm><recordcount>15</recordcount><records>" + items + L"</records></x>";
}

std::wstring Answer(const std::wstring& url) {
    if (url.find(L"GetLookups") != std::wstring::npos) {
        return L"<x><LookupListVersion>1</LookupListVersion><A>AB,BA,CB,PE</A><T>Bath,Cambridge,Canterbury,Wisbech</T>"
               L"<O>Cambridgeshire,Kent,Somerset</O></x>";
    }
    if (url.find(L"Adv.aspx") != std::wstring::npos) return TreePage();
    return ListReply(22, L"<credits_display_showbutton>1</credits_display_showbutton>",
                     L"Victoria Road The East Side Demo Data Wisbech");
}

void FillCriteria(HWND dialog) {
    Type(GetDlgItem(dialog, kLines0), L"demo data*");
    Type(GetDlgItem(dialog, kLines2), L"victoria");
    const HWND town = GetDlgItem(dialog, kInpTownComb);
    WaitUntil([&] { return SendMessageW(town, CB_GETCOUNT, 0, 0) == 4; });
    Type(town, L"Wisbech");
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(kInpTownComb, CBN_EDITCHANGE), reinterpret_cast<LPARAM>(town));
}

// What a user has done until the picture is taken.
void Play(const std::wstring& scene, HWND dialog) {
    if (scene == L"criteria" || scene == L"tree") FillCriteria(dialog);
    if (scene == L"tree") ClickId(dialog, kADVSearchFindButton);
    if (scene == L"warning") {
        Type(GetDlgItem(dialog, kLines0), L"ab");
        FocusOn(GetDlgItem(dialog, kLines1));
    }
    if (scene == L"results") WaitUntil([&] { return IsWindowVisible(GetDlgItem(dialog, kBuyMoreButton)) != FALSE; });
}

int Run(const std::wstring& scene, int dpi) {
    DialogPlatform platform;
    object::Quorvex object(platform, platform);
    object.ServerURL = L"http://service";
    platform.onGetUrl = Answer;
    platform.realMessages = true;
    std::wstring caption = kCaption;
    std::thread([&] {
        std::this_thread::sleep_for(std::chrono::seconds(120));
        _exit(2); // nobody takes the picture
    }).detach();
    std::thread([&] {
        if (scene == L"update") {
            UpdateChoiceForm(platform, dpi).Ask(L"Update Postcode Address Data", L"C:\\Quorvex\\Address Data", true);
        } else if (scene == L"message") {
            TopMostMessageBox(platform, L"The Advanced search is not available in Local Mode", support::kStyleCritical,
                              L"Quorvex Lookup");
        } else if (scene == L"stopped") {
            TopMostMessageBox(platform, StoppedText(), support::kStyleInformation, L"Quorvex Lookup COM Object");
        } else if (scene == L"progress") {
            frmInternetAccessForm form(platform, {}, dpi);
            form.Open(kCaption, L"Get file: UPDATE_F_20260331.zip 3,120 of 7,480 Kb  42%");
            PumpWhile([] { return true; });
        } else if (scene == L"unzip") {
            ZipForm form(platform, dpi);
            form.Load();
            form.SetCaptions(kCaption, L"Unziping file");
            form.SetStatus(L"Extracting UPDATE_F_20260331.zip");
            PumpWhile([] { return true; });
        } else {
            AddressFormSettings settings;
            settings.caption = kCaption;
            settings.dpi = dpi;
            settings.advanced = scene != L"plain";
            settings.AllowBuyMoreButton = true;
            const bool postcode = scene == L"results" || scene == L"searching";
            settings.PostcodePrimer = postcode ? L"ZZ99" : scene == L"idle" || scene == L"plain" ? L"" : L"ADV";
            platform.hold = scene == L"searching";
            frmAddress(object, settings).ShowModal();
        }
    }).detach();
    if (scene == L"update") caption = L"Update Postcode Address Data";
    if (scene == L"message") caption = L"Quorvex Lookup";
    if (scene == L"stopped") caption = L"Quorvex Lookup COM Object";
    if (scene == L"searching") caption = L"Web Address Server is Searching for Address...";
    HWND window = nullptr;
    if (!WaitUntil([&] { return (window = FindVisibleWindow(caption)) != nullptr; })) return 1;
    SetCursorPos(1500, 1100);
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    Play(scene, window);
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    RECT box{};
    GetWindowRect(window, &box);
    std::printf("%ld %ld %ld %ld\n", box.left, box.top, box.right - box.left, box.bottom - box.top);
    std::fflush(stdout);
    std::this_thread::sleep_for(std::chrono::seconds(60));
    return 0;
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc < 2) return 1;
    _exit(Run(argv[1], argc > 2 ? _wtoi(argv[2]) : 0));
}
