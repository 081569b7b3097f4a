// What a screen reader is told of every control.

#include "windows/advanced.h"

#include <oleacc.h>

namespace quorvex::testing {
namespace {

using namespace dialogs;

struct Told {
    std::wstring name;
    long role = 0;
    std::wstring value;
    long state = 0;
};

std::wstring Taken(BSTR text) {
    const std::wstring taken = text == nullptr ? L"" : text;
    SysFreeString(text);
    return taken;
}

Told Tell(HWND control) {
    Told told;
    IAccessible* object = nullptr;
    if (FAILED(AccessibleObjectFromWindow(control, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                                          reinterpret_cast<void**>(&object)))) {
        return told;
    }
    VARIANT self{};
    self.vt = VT_I4;
    self.lVal = CHILDID_SELF;
    BSTR text = nullptr;
    if (SUCCEEDED(object->get_accName(self, &text))) told.name = Taken(text);
    text = nullptr;
    if (SUCCEEDED(object->get_accValue(self, &text))) told.value = Taken(text);
    VARIANT number{};
    if (SUCCEEDED(object->get_accRole(self, &number)) && number.vt == VT_I4) told.role = number.lVal;
    number = {};
    if (SUCCEEDED(object->get_accState(self, &number)) && number.vt == VT_I4) told.state = number.lVal;
    object->Release();
    return told;
}

// What is expected of the controls that are shown, by number. Wine tells the role of edit fields only, and of a combo
// box its text instead of the name: Windows takes that from the label before it, which is looked at here.
struct Expected {
    int id;
    std::wstring name;
    std::wstring value;
    long state = STATE_SYSTEM_FOCUSABLE;
};

class ScreenReaderTest : public AdvancedTest {
  protected:
    void SetUp() override { CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
    void TearDown() override {
        End();
        CoUninitialize();
    }
    static bool IsClass(HWND control, const wchar_t* name) {
        wchar_t found[64]{};
        GetClassNameW(control, found, 64);
        return _wcsicmp(found, name) == 0;
    }
    void ExpectTold(const std::vector<Expected>& expected) {
        for (const Expected& control : expected) {
            const HWND window = Control(control.id);
            const bool edit = IsClass(window, WC_EDITW);
            EXPECT_TRUE(IsShown(window)) << control.id;
            const Told told = Tell(IsClass(window, WC_COMBOBOXW) ? GetWindow(window, GW_HWNDPREV) : window);
            EXPECT_EQ(told.name, control.name) << control.id;
            EXPECT_EQ(told.role, edit ? ROLE_SYSTEM_TEXT : ROLE_SYSTEM_CLIENT) << control.id;
            EXPECT_EQ(told.value, control.value) << control.id;
            EXPECT_EQ(told.state & ~STATE_SYSTEM_FOCUSED, control.state) << control.id;
        }
        EXPECT_NE(Tell(FocusOf(dialog)).state & STATE_SYSTEM_FOCUSED, 0);
    }
};

TEST_F(ScreenReaderTest, ThePostcodeViewTellsItsControlsAndHowManyAddressesThereAre) {
    OpenList();
    ExpectTold({{kInpPostcode, L"Postcode:", L"AB1 3CD"},
                {kCommand2, L"Find", L""},
                {kLabel2, L"Please double click on address to select", L""},
                {kAddressList, L"Addresses: 3", L""},
                {kCommand1, L"Select", L""}});
}

TEST_F(ScreenReaderTest, TheAdvancedViewTellsItsFieldsErrorsAndResults) {
    OpenCriteria();
    ASSERT_TRUE(Filled(kInpPostcodeComb, 2));
    FocusOn(Control(kLines0));
    Type(Control(kLines0), L"ab");
    FocusOn(Control(kLines1));
    ASSERT_TRUE(Becomes(kTopWarning, true));
    ExpectTold({{kTopWarning, L"Organisation must be longer.\r\nPlease be more specific!!!", L""},
                {kRightBottomSectionWarning, L"Select one of these!", L""},
                {kADVSearchFindButton, L"Find", L"", STATE_SYSTEM_UNAVAILABLE}});
    FillIn();
    ExpectTold({{kLines0, L"Organisation Name", L"acme ltd*"},
                {kLines1, L"Building Name/No", L""},
                {kLines2, L"Street/Road/Av", L""},
                {kInpTownComb, L"Town", L""},
                {kInpCountiesComb, L"County/City", L""},
                {kInpPostcodeComb, L"Postcode area", L""},
                {kCriteriaLabel, L"Summary", L"Organisation='ACME' starts with 'LTD*'\r\n IN Town/City='BATH'\r\n",
                 STATE_SYSTEM_FOCUSABLE | STATE_SYSTEM_READONLY},
                {kADVSearchLoadNewLists, L"Download Updated Lists", L""},
                {kLabel10, L"Help?", L""},
                {kCommand5, L"Clear", L""},
                {kADVSearchFindButton, L"Find", L""},
                {kCommand11, L"Cancel", L""},
                {kFrame1, L"Advanced Search", L""}});
    EXPECT_EQ(TextOf(Control(kInpTownComb)), L"Bath");
    SearchTree();
    ExpectTold({{kLabel2, L"Please double click on Building Name/Number to select address", L""},
                {kAdvResultsTree, L"Addresses found", L""},
                {kADVSearchButton, L"Advanced Find", L""},
                {kCommand11, L"Cancel", L""}});
}

} // namespace
} // namespace quorvex::testing
