// What the service sees, letter for letter, and what hosts see of a service that misbehaves.
#include "modes/mode_fixture.h"

namespace quorvex::testing {
namespace {

using RequestsTest = ModeTest;

TEST_F(RequestsTest, TheServiceSeesTheAddressLetterForLetter) {
    VARIANT_BOOL found = VARIANT_FALSE;
    Web().SetDataKey(Text(L"wa\tb 1").Ref()); // upper case, no control characters, the blank stays
    Web().SetHomePostCode(Text(L"M1 9YA").Ref());
    Web().GetPostZonAddressRecord(Text(L"AB1 0DF").Ref(), &found);
    EXPECT_EQ(LastTarget(), L"/xmlservice/SearchForPostZonData.aspx?datakey=WAB%201&postcode=AB1%200DF&COM=1"
                            L"&homepostcode=M1%209YA");
    Web().GetFullAddressToList(Text(L"12, AB1 0DF").Ref(), &found);
    EXPECT_EQ(LastTarget().find(L"12"), std::wstring::npos) << "the house is not sent";
    const Outcome url = Call(&Web(), L"GetUrlforPrefuredMapStreet", {L"AB1 0DF"});
    EXPECT_NE(url.result.Str().find(L"57.181792"), std::wstring::npos) << url.result.Str();
    EXPECT_EQ(Call(&Web(), L"GetUrlDirectoryOfService", {L"AB1 0DF", L"Health"}).hr, S_OK);
    EXPECT_EQ(LastTarget(), L"/xmlservice/GetUrlforPrefuredMap.aspx?postcode=AB1%200DF&zoomlevel=Health:Service&COM=1");
}

TEST_F(RequestsTest, NothingIsAskedWithoutNeed) {
    Control(L"reset");
    VARIANT_BOOL found = VARIANT_TRUE;
    for (long index : {-1L, 100L, 5L}) { // 5: no line was handed out there
        EXPECT_EQ(Web().GetFullAddressRecord(&index, &found), S_OK);
        EXPECT_EQ(found, VARIANT_FALSE);
    }
    EXPECT_EQ(Web().GetThoroughfareAddressRecord(Text(L"AB1").Ref(), &found), S_OK);
    EXPECT_EQ(found, VARIANT_FALSE);
    Text error;
    Web().get_General_errormessage(error.Out());
    EXPECT_EQ(error.Str(), L"Please specify Postcode");
    Text url(L"");
    Web().GetDataFromHTTPRequest(url.Ref(), error.Out());
    EXPECT_EQ(Control(L"count"), L"0");
}

TEST_F(RequestsTest, AnAdvancedSearchIsWalkedItemByItem) {
    VARIANT_BOOL found = VARIANT_FALSE;
    ASSERT_EQ(Web().GetFullAddressToListAdv(Text().Ref(), Text().Ref(), Text(L"KILN HILL").Ref(),
                                            Text(L"ABERDEEN").Ref(), Text().Ref(), Text().Ref(), &found),
              S_OK);
    ASSERT_EQ(found, VARIANT_TRUE);
    long count = 0, headings = 0;
    Web().get_RecordCount(&count);
    std::vector<std::wstring> ids;
    for (;;) { // late bound, as script hosts walk it
        Value id, lineType;
        const Outcome item = Call(&Web(), L"GetFullAddressLineForSelectionAdv", {Value::Ref(id), Value::Ref(lineType)});
        ASSERT_EQ(item.hr, S_OK);
        if (lineType.Str().empty()) {
            EXPECT_EQ(item.result.Str(), L"");
            break;
        }
        EXPECT_FALSE(item.result.Str().empty());
        if (lineType.Str() == L"h") {
            ++headings;
            EXPECT_EQ(id.Str(), L"");
        } else {
            EXPECT_EQ(lineType.Str(), L"l");
            ids.push_back(id.Str());
        }
    }
    EXPECT_GT(headings, 0);
    EXPECT_EQ(static_cast<long>(ids.size()), count);
    ASSERT_FALSE(ids.empty());
    EXPECT_EQ(Web().GetFullAddressRecordByAddressID(Text(ids.back()).Ref(), &found), S_OK);
    EXPECT_EQ(found, VARIANT_TRUE);
    EXPECT_EQ(Get(&Web(), L"Address_Town").result.Str(), L"ABERDEEN");
}

TEST_F(RequestsTest, AServiceThatMisbehavesGivesAReasonAndIsAskedAgain) {
    VARIANT_BOOL found = VARIANT_TRUE;
    Text error;
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"error", L"Server Error"}, {L"noconfirm", L"<addressdata>"}, {L"cut", L"timed out"}, {L"empty", L""}};
    for (const auto& [mode, expected] : cases) {
        ASSERT_EQ(Control(std::wstring(L"next?mode=") + mode), L"ok");
        ASSERT_EQ(Web().GetFullAddressToList(Text(L"AB1 0DF").Ref(), &found), S_OK);
        EXPECT_EQ(found, VARIANT_FALSE) << mode;
        Web().get_General_errormessage(error.Out());
        EXPECT_NE(error.Str().find(expected), std::wstring::npos) << mode << ": " << error.Str();
        ASSERT_EQ(Web().GetFullAddressToList(Text(L"AB1 0DF").Ref(), &found), S_OK);
        EXPECT_EQ(found, VARIANT_TRUE) << mode;
    }
    Control(L"reset");
}

TEST_F(RequestsTest, AnEmptyAddressMeansTheBuiltInOne) {
    VARIANT_BOOL found = VARIANT_FALSE;
    Text url;
    Local().SetServiceURL(Text(L"").Ref()); // in local mode, where it is stored and not called
    Local().GetFullAddressToList(Text(L"AB1 0DF").Ref(), &found);
    Local().get_ServerURL(url.Out());
    EXPECT_EQ(url.Str(), L"http://service.quorvex.example");
}

} // namespace
} // namespace quorvex::testing
