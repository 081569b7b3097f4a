#include "pages/pages.h"

#include "build_constants.h"
#include "support_code/fake_platform.h"

#include <gtest/gtest.h>

namespace quorvex::pages {
namespace {

class PagesTest : public ::testing::Test {
  protected:
    testing::FakePlatform platform;
    lookup::Quorvex object{platform};

    PagesTest() {
        object.ServerURL = L"http://s";
        platform.onGetUrl = [](const std::wstring&) { return L"<data><url>http://maps/x?a=1&b=2</url></data>"; };
    }
};

TEST_F(PagesTest, MapsAreAskedForByZoomLevelWithThePostcodeAsGiven) {
    EXPECT_EQ(GetUrlforPrefuredMapArea(object, L"AB1 3CD"), L"http://maps/x?a=1&b=2");
    GetUrlforPrefuredMapStreet(object, L"AB1 3CD");
    GetUrlforPrefuredMapDistrict(object, L"AB1 3CD");
    const std::wstring page = L"http://s/xmlservice/GetUrlforPrefuredMap.aspx?postcode=AB1 3CD&zoomlevel=";
    EXPECT_EQ(platform.urls,
              (std::vector<std::wstring>{page + L"Area&COM=1", page + L"Street&COM=1", page + L"District&COM=1"}));
    EXPECT_TRUE(platform.opened.empty());
}

TEST_F(PagesTest, DisplayOpensWhatGetGivesAndReturnsIt) {
    EXPECT_EQ(DisplayPrefuredMapStreet(object, L"AB1 3CD"), L"http://maps/x?a=1&b=2");
    EXPECT_EQ(DisplayDirectoryOfService(object, L"AB1 3CD", L"Health", L"GP"), L"http://maps/x?a=1&b=2");
    EXPECT_NE(platform.urls.back().find(L"&zoomlevel=Health:GP&COM=1"), std::wstring::npos);
    ASSERT_EQ(platform.opened.size(), 2u);
    EXPECT_EQ(platform.opened[0].first, L"http://maps/x?a=1&b=2");
    EXPECT_TRUE(platform.messages.empty());
}

TEST_F(PagesTest, AnEmptyPostcodeDoesNothing) {
    EXPECT_EQ(GetUrlforPrefuredMapArea(object, L""), L"");
    EXPECT_EQ(DisplayPrefuredMapArea(object, L""), L"");
    EXPECT_EQ(DisplayDirectoryOfService(object, L"", L"Health"), L"");
    EXPECT_TRUE(platform.urls.empty());
    EXPECT_TRUE(platform.opened.empty());
}

TEST_F(PagesTest, AReplyWithoutAddressIsToldToTheUserByDisplayOnly) {
    platform.onGetUrl = [](const std::wstring&) { return L"<html>no</html>"; };
    platform.shellResult = 2;
    EXPECT_EQ(GetUrlforPrefuredMapArea(object, L"AB1 3CD"), L"");
    EXPECT_TRUE(platform.messages.empty());
    EXPECT_EQ(DisplayPrefuredMapArea(object, L"AB1 3CD"), L"");
    ASSERT_EQ(platform.messages.size(), 1u);
    EXPECT_EQ(platform.messages[0].text, L"Unable to open ");
}

TEST_F(PagesTest, AFileOpensByItsNameWithItsWholePathAsFolder) {
    DisplayWebPage(object, L"C:\\docs\\guide.pdf");
    ASSERT_EQ(platform.opened.size(), 1u);
    EXPECT_EQ(platform.opened[0].first, L"guide.pdf");
    EXPECT_EQ(platform.opened[0].second, L"C:\\docs\\guide.pdf");
    platform.shellResult = 31;
    DisplayWebPage(object, L"C:\\docs\\guide.pdf");
    ASSERT_EQ(platform.messages.size(), 1u);
    EXPECT_EQ(platform.messages[0].text, L"Unable to open C:\\docs\\guide.pdf");
}

TEST_F(PagesTest, AccountPagesNameTheResellerAndTheServicesOwnPageWins) {
    object.SetResellerID(4711);
    OpenAnAccountAndLinkToResellerForInternalUse(object);
    OpenAnAccountAndLinkToResellerForWebUse(object);
    OpenAnAccountAndLinkToResellerForWebAndInternalUse(object);
    ShowAccountAdminPage(object);
    object.General_accountadminpage = L"http://accounts/mine";
    ShowAccountAdminPage(object);
    const std::wstring reseller =
        std::wstring(kAccountUrl) + L"/A2CustomerAccount/WebAccountCreateFromReseller.aspx?r=";
    ASSERT_EQ(platform.opened.size(), 5u);
    EXPECT_EQ(platform.opened[0].first, reseller + L"I&id=4711");
    EXPECT_EQ(platform.opened[1].first, reseller + L"W&id=4711");
    EXPECT_EQ(platform.opened[2].first, reseller + L"&id=4711");
    EXPECT_EQ(platform.opened[3].first, std::wstring(kAccountSecureUrl) + L"/WebAccountLogin.aspx");
    EXPECT_EQ(platform.opened[4].first, L"http://accounts/mine");
}

} // namespace
} // namespace quorvex::pages
