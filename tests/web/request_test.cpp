#include "object/reply_header.h"
#include "testing/fake_platform.h"
#include "web/data_request.h"
#include "web/endpoints.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorvex::web {
namespace {

using ::testing::ElementsAre;

class Web : public ::testing::Test {
  protected:
    Web() {
        object.SetServiceURL(L"http://s");
        object.SetDataKey(L"w1&2");
    }

    quorvex::testing::FakePlatform platform;
    object::Quorvex object{platform, platform};
};

TEST_F(Web, AddressesAreBuiltAsTheServiceExpectsThem) {
    const AdvancedCriteria criteria{L"A & B", L"1", L"High St", L"March", L"Cambs", L"PE"};
    EXPECT_EQ(SearchForAddressUrl(object, L"PE13 2QL"),
              L"http://s/xmlservice/SearchForAddress.aspx?datakey=W1&2&postcode=PE13 2QL&COM=1");
    EXPECT_EQ(SearchForAddressAdvUrl(object, criteria),
              L"http://s/xmlservice/SearchForAddressAdv.aspx?datakey=W1&2&COM=1&company=A & B&house=1&street=High St"
              L"&town=March&county=Cambs&postcodearea=PE");
    EXPECT_EQ(SearchForThoroughfareAddressUrl(object, L"x\u00e9%"),
              L"http://s/xmlservice/SearchForThoroughfareAddress.aspx?datakey=W1&2&postcode=x\u00e9%&COM=1");
    EXPECT_EQ(GetAddressRecordUrl(object, L"PE132QL_1_F"),
              L"http://s/xmlservice/GetAddressRecord.aspx?datakey=W1&2&id=PE132QL_1_F&COM=1");
    EXPECT_EQ(SearchForPostZonDataUrl(object, L"AB1 3CD"),
              L"http://s/xmlservice/SearchForPostZonData.aspx?datakey=W1&2&postcode=AB1 3CD&COM=1");
    EXPECT_EQ(GetUrlforPrefuredMapUrl(object, L"PE13 2QL", L"Street"),
              L"http://s/xmlservice/GetUrlforPrefuredMap.aspx?postcode=PE13 2QL&zoomlevel=Street&COM=1");
    EXPECT_EQ(GetLookupsUrl(object), L"http://s/XMLService/GetLookups.aspx?datatype=1");
    EXPECT_EQ(UpdateDataListUrl(object, L"1", L"", L"3"), L"http://s/xmlservice/UpdateDataList.aspx?f=1&t=&z=3");
}

TEST_F(Web, InternalKeysNameTheComputer) {
    object.SetDataKey(L"i5");
    object.LMSetOverideComputerName(L"not sent");
    object.SetHomePostCode(L"pe13 2ql");
    EXPECT_TRUE(SearchForAddressUrl(object, L"x").ends_with(L"&postcode=x&COM=1&username=COUNTER-1"));
    EXPECT_TRUE(SearchForAddressAdvUrl(object, {}).ends_with(L"&postcodearea=&username=COUNTER-1"));
    EXPECT_TRUE(SearchForThoroughfareAddressUrl(object, L"x").ends_with(L"&COM=1&username=COUNTER-1"));
    EXPECT_TRUE(GetAddressRecordUrl(object, L"x").ends_with(L"&COM=1&username=COUNTER-1"));
    EXPECT_TRUE(
        SearchForPostZonDataUrl(object, L"x").ends_with(L"&postcode=x&COM=1&username=COUNTER-1&homepostcode=pe13 2ql"));
    EXPECT_TRUE(GetUrlforPrefuredMapUrl(object, L"x", L"y").ends_with(L"&COM=1"));
}

TEST_F(Web, RequestsGiveTheReplyOrTheFixedMessage) {
    platform.replies[L"http://s/a"] = L"<confirm>yes</confirm>";
    EXPECT_EQ(GetDataFromHTTPRequest(object, L"http://s/a"), L"<confirm>yes</confirm>");
    EXPECT_EQ(GetDataFromHTTPRequest(object, L"http://s/b"),
              L"Sorry your internet connection timed out.   Is the internet working? or a firewall blocking service?");
    EXPECT_EQ(GetDataFromHTTPRequest(platform, L"http://s/b", 90), kTimeOutMessage);
    EXPECT_THAT(platform.limits, ElementsAre(30, 30, 90));
    EXPECT_TRUE(platform.messages.empty());
    platform.requestRunning = true;
    object.ShowHTTPcallsInDetailFlg = 1;
    EXPECT_EQ(GetDataFromHTTPRequest(object, L"http://s/a"), L"");
    EXPECT_EQ(GetDataFromHTTPRequest(platform, L"http://s/a", 30), L"");
    EXPECT_EQ(platform.urls.size(), 3U) << "a second request does not reach the network";
    EXPECT_TRUE(platform.messages.empty());
}

TEST_F(Web, TheDebugDisplayShowsCallAndReply) {
    object.ShowHTTPcallsInDetailFlg = -1;
    GetDataFromHTTPRequest(object, L"http://s/a");
    EXPECT_THAT(platform.clipboard,
                ElementsAre(L"Calling:\r\nhttp://s/a", std::wstring(L"Reply:\r\n") + kTimeOutMessage));
    ASSERT_EQ(platform.messages.size(), 2U);
    EXPECT_EQ(platform.messages[0].text, platform.clipboard[0]);
    EXPECT_EQ(platform.messages[0].style, 64);
    EXPECT_EQ(platform.messages[0].title, L"Detailed Debug Info (Also on clipboard!)");
}

// --- Reply header ----------------------------------------------------------------------------------------------------

TEST_F(Web, TheHeaderFillsTheProperties) {
    ReadReplyHeader(
        object,
        L"<confirm>yEs</confirm><credits_display_showbutton>1</credits_display_showbutton><pop_message>hello"
        L"</pop_message><lookuplistversion>7</lookuplistversion><credits_display_text> 5 left </credits_display_text>"
        L"<accountadminpage>http://a</accountadminpage><errormessage>none</errormessage>",
        false);
    EXPECT_TRUE(object.General_confirm);
    EXPECT_TRUE(object.General_credits_display_showbutton);
    EXPECT_EQ(object.General_Pop_Message, L"hello");
    EXPECT_EQ(object.General_LookupListVersion, L"7");
    EXPECT_EQ(object.General_credits_display_text, L" 5 left ");
    EXPECT_EQ(object.General_accountadminpage, L"http://a");
    EXPECT_EQ(object.General_errormessage, L"none");
    EXPECT_EQ(object.PostZon_DistanceToHomePostcode, L"0");

    ReadReplyHeader(object, L"<confirm> yes</confirm><credits_display_showbutton>true</credits_display_showbutton>",
                    false);
    EXPECT_FALSE(object.General_confirm) << "not trimmed";
    EXPECT_FALSE(object.General_credits_display_showbutton);
    EXPECT_EQ(object.General_errormessage, L"") << "nothing of the earlier reply stays";
}

TEST_F(Web, ARequiredRecordNeedsAPostcode) {
    ReadReplyHeader(object, L"<confirm>YES</confirm><postcode> </postcode><pz_postcode>PE13 2QL</pz_postcode>", true);
    EXPECT_FALSE(object.General_confirm);
    EXPECT_EQ(object.Address_Postcode, L"PE13 2QL");
    ReadReplyHeader(object, L"<confirm>YES</confirm><pz_postcode>PE13 2QL</pz_postcode>", false);
    EXPECT_TRUE(object.General_confirm);
    EXPECT_EQ(object.Address_Postcode, L"PE13 2QL");
}

TEST_F(Web, WithoutConfirmOnlyTheErrorMessageChanges) {
    object.General_confirm = true;
    object.Address_Town = L"MARCH";
    ReadReplyHeader(object, L"<html>502</html>", true);
    EXPECT_EQ(object.General_errormessage, L"<html>502</html>");
    EXPECT_TRUE(object.General_confirm);
    EXPECT_EQ(object.Address_Town, L"MARCH");
    ReadReplyHeader(object, L"<CONFIRM>yes</CONFIRM>", true);
    EXPECT_EQ(object.General_errormessage, L"<CONFIRM>yes</CONFIRM>");
    object.LMSetDataPath(L"C:\\data");
    ReadReplyHeader(object, L"<errormessage>no file</errormessage>", true);
    EXPECT_EQ(object.General_errormessage, L"no file");
    ReadReplyHeader(object, L"", true);
    EXPECT_EQ(object.General_errormessage, L"");
    object.LMSetDataPath(L"");
}

} // namespace
} // namespace quorvex::web
