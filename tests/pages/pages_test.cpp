#include "pages/pages.h"

#include "testing/fake_platform.h"

#include <gtest/gtest.h>

namespace quorvex::pages {
namespace {

class PagesTest : public ::testing::Test {
  protected:
    testing::FakePlatform platform;
    object::Quorvex object{platform, platform};

    PagesTest() {
        object.ServerURL = L"http://s";
        platform.onGetUrl = [](const std::wstring&) { return L"<data><url>http://maps/x?a=1&b=2</url></data>"; };
    }
};

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

} // namespace
} // namespace quorvex::pages
