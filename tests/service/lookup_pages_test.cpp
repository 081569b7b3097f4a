#include "fixture.h"
#include "jet/storage.h"
#include "support/text.h"

namespace quorvex::service {
namespace {

constexpr char kList[] = "SearchForAddress.aspx?datakey=K1&postcode=PE13 9AN&COM=1";
constexpr char kRecord[] = "GetAddressRecord.aspx?datakey=K1&id=PE13 9AN_1_F&COM=1";

TEST_F(ServiceTest, EveryLookupCarriesTheHeader) {
    options.pages.popMessage = L"Maintenance on Sunday & Monday";
    options.pages.accountPage = L"http://accounts.example/admin?a=1&b=2";
    options.keys = {L"K1"};
    options.credits = 7;
    Begin();
    const std::wstring version = ElementOf("GetLookups.aspx?datatype=1", L"LookupListVersion");
    EXPECT_FALSE(version.empty());
    int left = 7;
    for (const std::string page :
         {kList, kRecord, "SearchForPostZonData.aspx?datakey=K1&postcode=PE13 9AA&COM=1",
          "SearchForThoroughfareAddress.aspx?datakey=K1&postcode=PE13 9XB&COM=1",
          "SearchForAddressAdv.aspx?datakey=K1&COM=1&company=&house=&street=KILN*&town=&county=&postcodearea="}) {
        SCOPED_TRACE(page);
        const httplib::Result reply = Request("/XMLService/" + page);
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->get_header_value("Content-Type"), "text/xml; charset=utf-8");
        EXPECT_EQ(reply->get_header_value("Cache-Control"), "no-store");
        const auto holds = [&reply](const std::string& text) { return reply->body.find(text) != std::string::npos; };
        EXPECT_TRUE(holds("<confirm>Yes</confirm>"));
        EXPECT_TRUE(holds("<credits_display_showbutton>1</credits_display_showbutton>"));
        EXPECT_TRUE(holds("<credits_display_text>Credits left: " + std::to_string(--left) + "</credits_display_text>"));
        EXPECT_TRUE(holds("<pop_message>Maintenance on Sunday &amp; Monday</pop_message>"));
        EXPECT_TRUE(holds("<lookuplistversion>" + support::ToUtf8(version) + "</lookuplistversion>"));
        EXPECT_TRUE(holds("<accountadminpage>http://accounts.example/admin?a=1&amp;b=2</accountadminpage>"));
        EXPECT_TRUE(holds("<errormessage></errormessage>"));
    }
}

TEST_F(ServiceTest, KeysUserNamesAndCredits) {
    options.keys = {L"K1", L"inside"};
    options.credits = 3;
    Begin();
    const auto left = [this](const char* page) { return ElementOf(page, L"credits_display_text"); };
    EXPECT_EQ(left("SearchForAddress.aspx?datakey=k1&postcode=PE13 9AN&COM=1"), L"Credits left: 2");
    for (const char* page : {"SearchForAddress.aspx?datakey=K2&postcode=PE13 9AN&COM=1",
                             "SearchForAddress.aspx?datakey=&postcode=PE13 9AN", "SearchForAddress.aspx",
                             "GetAddressRecord.aspx?datakey=K2&id=PE13 9AN_1_F"}) {
        EXPECT_EQ(ElementOf(page, L"confirm"), L"No") << page;
        EXPECT_EQ(ElementOf(page, L"errormessage"), L"The data key is not known.") << page;
        EXPECT_EQ(ElementOf(page, L"line"), L"") << page;
    }
    const std::string internal = "SearchForAddress.aspx?datakey=INSIDE&postcode=PE13 9AN&COM=1";
    for (const auto& [user, confirm] : {std::pair("", L"No"), {"&username=", L"No"}, {"&username=COUNTER-1", L"Yes"}})
        EXPECT_EQ(ElementOf(internal + user, L"confirm"), confirm) << user;
    // Lists and updates are anybody's.
    EXPECT_NE(ElementOf("GetLookups.aspx?datatype=1", L"T"), L"");
    EXPECT_EQ(ElementOf("UpdateDataList.aspx?f=20260101&t=&z=", L"Confirm"), L"Yes");
    // What finds nothing, and the test postcode, cost nothing.
    EXPECT_EQ(left("GetAddressRecord.aspx?datakey=K1&id=PE13 9AN_99_F"), L"Credits left: 2");
    EXPECT_EQ(left("SearchForAddress.aspx?datakey=K1&postcode=XX1 1XX"), L"Credits left: 2");
    EXPECT_EQ(ElementOf("SearchForThoroughfareAddress.aspx?datakey=K1&postcode=ZZ99", L"confirm"), L"Yes");
    EXPECT_EQ(left(kRecord), L"Credits left: 1");
    EXPECT_EQ(left(kRecord), L"Credits left: 0");
    EXPECT_EQ(ElementOf(kRecord, L"confirm"), L"No");
    EXPECT_EQ(ElementOf(kRecord, L"errormessage"), L"No credits are left on this data key.");
}

// A file in use keeps the lists from being made.
TEST_F(ServiceTest, AnswersBeforeTheListsAreThere) {
    quorvex::testing::TempFolder folder;
    std::filesystem::copy(options.data, folder.Path(), std::filesystem::copy_options::recursive);
    options.data = folder.Path();
    auto writer = jet::SystemStorage().Open(options.data / "PAF_FULL.dat", jet::OpenMode::kWriteDenyWrite);
    Begin(false);
    const httplib::Result health = Request("/health");
    EXPECT_EQ(health->status, 503);
    EXPECT_NE(health->body.find("\"starting\""), std::string::npos) << health->body;
    EXPECT_NE(health->body.find("\"lists\":false"), std::string::npos) << health->body;
    const std::string places = "SearchForPostZonData.aspx?postcode=PE13 9AA";
    EXPECT_EQ(ElementOf(places, L"confirm"), L"Yes");
    for (const char* page : {"GetLookups.aspx?datatype=1", "SearchForAddressAdv.aspx?street=KILN"})
        EXPECT_EQ(Request(std::string("/xmlservice/") + page)->status, 503) << page;
    EXPECT_FALSE(Running().WaitForLists(std::chrono::milliseconds(0)));
    writer.reset();
    EXPECT_TRUE(Running().WaitForLists(std::chrono::seconds(60)));
    EXPECT_EQ(Request("/health")->status, 200);
}

TEST_F(ServiceTest, BadQueriesAreToldWhatIsWrong) {
    Begin();
    for (const char* page :
         {"SearchForAddress.aspx", "SearchForAddress.aspx?postcode=", "SearchForAddress.aspx?postcode=%20",
          "GetAddressRecord.aspx?id=", "GetAddressRecord.aspx?id=PE13 9AN_x_F",
          "SearchForThoroughfareAddress.aspx?postcode=PE1", "SearchForThoroughfareAddress.aspx?postcode=PE13  9XB",
          "SearchForPostZonData.aspx?postcode=PE1", "SearchForPostZonData.aspx?postcode=here|there",
          "SearchForAddress.aspx?postcode=O'NEILL,4",
          "SearchForAddressAdv.aspx?company=&house=&street=&town=&county=&postcodearea=",
          "SearchForAddressAdv.aspx?company=*&house=%26"}) {
        EXPECT_EQ(ElementOf(page, L"confirm"), L"No") << page;
        EXPECT_NE(ElementOf(page, L"errormessage"), L"") << page;
    }
    EXPECT_NE(ElementOf("GetLookups.aspx", L"errormessage"), L"");
    EXPECT_NE(ElementOf("GetLookups.aspx?datatype=2", L"errormessage"), L"");
    EXPECT_EQ(Request("/xmlservice/Nothing.aspx")->status, 404);
    EXPECT_EQ(Request("/nowhere")->status, 404);
    EXPECT_EQ(Request("/test/reset")->status, 404);
    EXPECT_EQ(Request("/" + std::string(8000, '('))->status, 404);
    httplib::Client client(Running().Address());
    EXPECT_EQ(client.Post("/xmlservice/SearchForAddress.aspx", "postcode=PE13 9AN", "text/plain")->status, 405);
    EXPECT_EQ(ElementOf(kList, L"confirm"), L"Yes");
}

TEST_F(ServiceTest, MapsAndDirectories) {
    Begin();
    const auto url = [this](const std::string& query) {
        return ElementOf("GetUrlforPrefuredMap.aspx?" + query + "&COM=1", L"url");
    };
    EXPECT_EQ(url("postcode=PE13 9AA&zoomlevel=Street"),
              L"https://www.openstreetmap.org/?mlat=52.6842&amp;mlon=0.130594#map=17/52.6842/0.130594");
    EXPECT_NE(url("postcode=pe13 9aa&zoomlevel=District").find(L"#map=14/"), std::wstring::npos);
    EXPECT_NE(url("postcode=PE13 9AA&zoomlevel=Area").find(L"#map=12/"), std::wstring::npos);
    EXPECT_EQ(url("postcode=PE13 9AA&zoomlevel=Health & Care:GP"),
              L"https://www.openstreetmap.org/search?query=Health%20%26%20Care%20GP%20near%20PE13%209AA");
    EXPECT_EQ(url("postcode=XX1 1XX&zoomlevel=Street"), L"");
    EXPECT_EQ(url("postcode=PE13 9AA&zoomlevel=Country"), L"");
    EXPECT_EQ(url("postcode=&zoomlevel=Street"), L"");
}

} // namespace
} // namespace quorvex::service
