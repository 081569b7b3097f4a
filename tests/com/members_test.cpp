// Every member through every door, with texts as hosts really have them.
#include "com/browser_capture.h"
#include "com/catalogue.h"
#include "com/host.h"
#include "support/text.h"
#include "testing/socket_server_win.h"

#include <array>
#include <map>

namespace quorvex::testing {
namespace {

class MembersTest : public ComTest {
  protected:
    Ptr<ITypeInfo> Info() {
        ITypeInfo* info = nullptr;
        EXPECT_EQ(object_->GetTypeInfo(0, 0, &info), S_OK);
        return Ptr<ITypeInfo>(info);
    }

    // Through the vtable: the plain type-library dispatcher calls it with exactly the declared types.
    HRESULT CallVtable(const Member& member, std::vector<VARIANT> arguments, VARIANT* result) {
        DISPID put = DISPID_PROPERTYPUT;
        const bool isPut = member.kind == INVOKE_PROPERTYPUT;
        DISPPARAMS params{arguments.data(), isPut ? &put : nullptr, static_cast<UINT>(arguments.size()),
                          isPut ? 1U : 0U};
        return Info()->Invoke(object_.get(), member.id, static_cast<WORD>(member.kind), &params, result, nullptr,
                              nullptr);
    }
};

// Texts that break code which believes in ends of texts, single bytes or small sizes.
std::vector<std::wstring> OddTexts() {
    return {L"",
            L" ",
            std::wstring(L"a\0b\0", 4),
            L"tab\tline\r\nbell\a",
            L"caf\u00E9 \u20AC \u0161 \xD834\xDD1E \xFFFF",
            L"' OR 1=1 --",
            L"<confirm>Yes</confirm>&amp;%41%",
            L"AB1 0DF_99999999999999999999_F",
            L"____",
            L",,,",
            L"1e999|nan|",
            std::wstring(1 << 20, L'x'),
            std::wstring(1 << 18, L',')};
}

TEST_F(MembersTest, EveryPropertyGivesBackWhatWasPut) {
    const std::vector<Member> members = Catalogue(object_.get());
    int checked = 0;
    for (const Member& get : members) {
        if (get.kind != INVOKE_PROPERTYGET) continue;
        std::vector<Value> values;
        if (get.result == VT_BSTR) {
            for (const std::wstring& text : OddTexts()) {
                if (text.size() < 1000 || get.name == L"Extra1")
                    values.emplace_back(text); // large ones take their time
            }
        } else if (get.result == VT_BOOL) {
            values = {true, false};
        } else {
            values = {0L, -1L, 32767L, -32768L};
        }
        for (const Value& value : values) {
            ASSERT_EQ(Put(object_.get(), get.name.c_str(), value), S_OK) << get.name;
            Value early;
            ASSERT_EQ(CallVtable(get, {}, &early), S_OK) << get.name;
            EXPECT_EQ(early.vt, get.result) << get.name;
            EXPECT_EQ(VarCmp(const_cast<Value*>(&value), &early, 0, 0), static_cast<HRESULT>(VARCMP_EQ)) << get.name;
            EXPECT_EQ(early.Str(), value.Str()) << get.name; // embedded zeros, too
            EXPECT_EQ(Get(object_.get(), get.name.c_str()).result.Str(), value.Str()) << get.name;
        }
        ++checked;
    }
    EXPECT_EQ(checked, 53);
}

TEST_F(MembersTest, ANewObjectStartsEmpty) {
    const Ptr<_Quorvex> fresh = CreateRegistered();
    for (const Member& get : Catalogue(fresh.get())) {
        if (get.kind != INVOKE_PROPERTYGET) continue;
        const Value value = Get(fresh.get(), get.name.c_str()).result;
        EXPECT_TRUE(value.vt == VT_BSTR ? value.Str().empty()
                    : value.vt == VT_I4 ? value.lVal == 0
                                        : value.iVal == 0)
            << get.name;
    }
}

// Every reply is read into the properties that bear its elements' names, and leaves nothing of the one before.
TEST_F(MembersTest, EveryElementOfAReplyReachesItsProperty) {
    std::map<std::wstring, std::wstring> expected;
    std::wstring full = L"<confirm>YES</confirm>";
    for (const Member& get : Catalogue(object_.get())) {
        const bool place = get.name.starts_with(L"PostZon_") || get.name == L"Address_Mailsort";
        if (get.kind != INVOKE_PROPERTYGET || !(place || get.name.starts_with(L"Address_"))) continue;
        std::wstring element = get.name.substr(8);
        if (element == L"DistanceToHomePostcode") element = L"geo" + element;
        CharLowerW(element.data());
        if (place) element = L"pz_" + element;
        expected[get.name] = L"value of " + element;
        full += L"<" + element + L"> value of " + element + L" </" + element + L">\r\n";
    }
    EXPECT_EQ(expected.size(), 35U);
    const SocketServer server([&](Connection& connection, const std::string& target) {
        connection.Reply(target.find("full") != std::string::npos ? support::ToUtf8(full) : "<confirm>YES</confirm>");
    });
    object_->put_ServerURL(Text(server.Url(L"")));
    Call(object_.get(), L"GetFullAddressRecordByAddressID", {L"full"});
    for (const auto& [name, value] : expected) EXPECT_EQ(Get(object_.get(), name.c_str()).result.Str(), value) << name;
    Call(object_.get(), L"GetFullAddressRecordByAddressID", {L"none"});
    for (const auto& [name, value] : expected) {
        const bool distance = name == L"PostZon_DistanceToHomePostcode";
        EXPECT_EQ(Get(object_.get(), name.c_str()).result.Str(), distance ? L"0" : L"") << name;
    }
}

// The windows that some methods show are closed as a user would.
TEST_F(MembersTest, EveryMethodCanBeCalledThroughEachDoor) {
    const WindowCloser closer;
    const BrowserCapture browser;
    for (const bool local : {false, true}) {
        if (local) UseSample(object_.get());
        for (const Member& method : Catalogue(object_.get())) {
            if (method.kind != INVOKE_FUNC || method.name == L"LMSetDataPath") continue;
            std::vector<Value> late;
            std::vector<VARIANT> early;
            std::vector<Value> storage(method.parameters.size());
            for (std::size_t i = 0; i < storage.size(); ++i) {
                const Parameter& parameter = method.parameters[i];
                storage[i].vt = parameter.type; // zero, or no text
                late.push_back(Value::Ref(storage[i]));
                VARIANT argument = storage[i];
                if (parameter.byReference) argument = Value::Borrowed(VT_BYREF | parameter.type, &storage[i].llVal);
                early.insert(early.begin(), argument);
            }
            EXPECT_EQ(Call(object_.get(), method.name.c_str(), late).hr, S_OK) << method.name;
            Value result;
            EXPECT_EQ(CallVtable(method, early, &result), S_OK) << method.name;
            const bool finds = method.name.starts_with(L"GetThoroughfare") ||
                               method.name.starts_with(L"GetFullAddressRecord") ||
                               method.name.starts_with(L"GetPostZon") || method.name.starts_with(L"SearchFor");
            if (method.result == VT_BOOL && finds) {
                EXPECT_EQ(result.boolVal, VARIANT_FALSE) << method.name; // there was nothing to find
            }
        }
    }
}

TEST_F(MembersTest, NullPointersAreMissingArgumentsAndNoCrash) {
    const WindowCloser closer;
    const BrowserCapture browser;
    for (const Member& method : Catalogue(object_.get())) {
        if (method.kind == INVOKE_PROPERTYPUT) continue; // has no pointers
        std::vector<VARIANT> values(method.parameters.size() + 1);
        std::vector<VARTYPE> types;
        std::vector<VARIANT*> pointers;
        for (std::size_t i = 0; i < method.parameters.size(); ++i) {
            const Parameter& parameter = method.parameters[i];
            values[i].vt = parameter.byReference ? static_cast<VARTYPE>(VT_BYREF | parameter.type) : parameter.type;
            types.push_back(values[i].vt);
            pointers.push_back(&values[i]);
        }
        const bool answers = method.result != VT_VOID;
        if (answers) { // the place for the result is null as well
            values.back().vt = static_cast<VARTYPE>(VT_BYREF | method.result);
            types.push_back(values.back().vt);
            pointers.push_back(&values.back());
        }
        Value result;
        const HRESULT called =
            DispCallFunc(object_.get(), static_cast<ULONG_PTR>(method.vtableOffset), CC_STDCALL, VT_ERROR,
                         static_cast<UINT>(types.size()), types.data(), pointers.data(), &result);
        ASSERT_EQ(called, S_OK) << method.name;
        EXPECT_EQ(result.scode, answers ? E_POINTER : S_OK) << method.name;
    }
}

TEST_F(MembersTest, OddTextsAreLookedUpLikeAnyOther) {
    const WindowCloser closer;
    const BrowserCapture browser;
    for (const bool local : {false, true}) {
        if (local) UseSample(object_.get());
        for (const std::wstring& text : OddTexts()) {
            for (const wchar_t* name :
                 {L"GetFullAddressToList", L"GetThoroughfareAddressRecord", L"GetFullAddressRecordByAddressID",
                  L"GetPostZonAddressRecord", L"GetUrlforPrefuredMapStreet", L"GetDataFromHTTPRequest"}) {
                const Outcome outcome = Call(object_.get(), name, {Value(text)});
                EXPECT_EQ(outcome.hr, S_OK) << name;
                if (outcome.result.vt != VT_BOOL || outcome.result.boolVal == VARIANT_FALSE) continue;
                EXPECT_TRUE(local && name == std::wstring(L"GetFullAddressToList")) << name; // an empty list only
                EXPECT_EQ(Get(object_.get(), L"RecordCount").result.lVal, 0);
            }
            EXPECT_EQ(Call(object_.get(), L"GetFullAddressToListAdv",
                           {Value(text), Value(text), Value(text), Value(text), Value(text), Value(text)})
                          .hr,
                      S_OK);
            for (const wchar_t* setter : {L"SetDataKey", L"SetHomePostCode", L"LMSetOverideComputerName"}) {
                EXPECT_EQ(Call(object_.get(), setter, {Value(text)}).hr, S_OK) << setter;
            }
        }
    }
}

TEST_F(MembersTest, TagsAreReadInTextsOfAnySizeAndContent) {
    const std::wstring filler(1 << 20, L'\u00E9');
    const std::wstring inside(L"a\0b\x1\xD834\xDD1E", 6);
    Text html(filler + L"<x>" + inside + L"</x>" + filler), start(L"<x>"), end(L"</x>"), result;
    short consume = 1;
    ASSERT_EQ(object_->GetBetweenTags(start.Ref(), html.Ref(), end.Ref(), &consume, nullptr, result.Out()), S_OK);
    EXPECT_EQ(result.Str(), inside);
    EXPECT_EQ(html.Str(), filler);
}

TEST_F(MembersTest, VersionAndComputerNameAreTold) {
    const Value version = Call(object_.get(), L"GetVersion", {}).result;
    EXPECT_EQ(version.vt, VT_BSTR);
    EXPECT_EQ(version.Str(), L"2.4.0");
    std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> name{};
    DWORD size = static_cast<DWORD>(name.size());
    ASSERT_NE(::GetComputerNameW(name.data(), &size), 0);
    EXPECT_EQ(Call(object_.get(), L"GetComputerName", {}).result.Str(), name.data());
}

} // namespace
} // namespace quorvex::testing
