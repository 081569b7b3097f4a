#include "update/update_list.h"

#include "localdata/package_date.h"
#include "support/text.h"
#include "testing/fake_platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorvex::testing {
namespace {

using update::PackageFileName;
using update::ParseUpdateList;

std::wstring AskFor(const std::wstring& reply, FakePlatform& platform) {
    object::Quorvex object(platform, platform);
    object.SetServiceURL(L"http://service");
    platform.onGetUrl = [&reply](const std::wstring&) { return reply; };
    return update::GetUpdateList(object, {L"20260131", L"", L"20260115"});
}

TEST(UpdateList, AsksWithTheThreeDatesAndReadsTheListOfAConfirmedReply) {
    FakePlatform platform;
    EXPECT_EQ(AskFor(L"<Confirm>YES</Confirm><list>http://x/a|1|2</list>", platform), L"http://x/a|1|2");
    EXPECT_EQ(platform.urls.back(), L"http://service/xmlservice/UpdateDataList.aspx?f=20260131&t=&z=20260115");
    EXPECT_EQ(platform.limits.back(), 30);
    EXPECT_EQ(AskFor(L"<Confirm>YES</Confirm><list></list>", platform), L"") << "nothing new is no failure";
    EXPECT_EQ(AskFor(L"<Confirm></Confirm><list>x</list>", platform), L"FAILED");
    EXPECT_EQ(AskFor(L"<confirm>YES</confirm><list>x</list>", platform), L"FAILED") << "the tag has a capital here";
    EXPECT_EQ(AskFor(L"TimeOut", platform), L"FAILED");
    EXPECT_EQ(AskFor(L"", platform), L"FAILED");
}

TEST(UpdateList, EveryEntryHasThreeFields) {
    const auto list =
        ParseUpdateList(L"http://x/UPDATE_F_20260228.zip|14590|a|\r\nhttp://x/UPDATE_T_20260228.zip|8110|b");
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].address, L"http://x/UPDATE_F_20260228.zip");
    EXPECT_EQ(list[0].size, 14590);
    EXPECT_EQ(list[0].remark, L"a");
    EXPECT_EQ(list[1].address, L"http://x/UPDATE_T_20260228.zip") << "a line break between entries is no part of one";
    EXPECT_EQ(list[1].remark, L"b");
    EXPECT_TRUE(ParseUpdateList(L"").empty());
    EXPECT_EQ(ParseUpdateList(L"http://x/a").size(), 1U) << "missing fields are empty";
    EXPECT_EQ(ParseUpdateList(L"http://x/a|1|b||2|c|http://x/b|3|d").size(), 1U) << "an empty address ends the list";
    EXPECT_EQ(ParseUpdateList(L"http://x/a|many|b")[0].size, 0);
    std::wstring endless;
    for (int i = 0; i < 5000; ++i) endless += L"http://x/a|1|b|";
    EXPECT_EQ(ParseUpdateList(endless).size(), update::kMostListedPackages);
}

TEST(UpdateList, OnlyPackageNamesBecomeFileNames) {
    EXPECT_EQ(PackageFileName(L"http://x/updates/UPDATE_F_20260228.zip"), L"UPDATE_F_20260228.zip");
    EXPECT_EQ(PackageFileName(L"https://x/UPDATE_Q_20260228.ZIP?key=1/UPDATE_F_1.zip"), L"UPDATE_Q_20260228.ZIP");
    for (const wchar_t* address :
         {L"", L"http://x/", L"http://x/readme.txt", L"http://x/UPDATE_F_2026022.zip",
          L"http://x/UPDATE_F_202602281.zip", L"http://x/UPDATE_1_20260228.zip", L"http://x/UPDATE_F-20260228.zip",
          L"http://x/UPDATE_F_2026O228.zip", L"http://x/UPDATE_F_20260228.zip.exe", L"http://x/UPDATE_F_20260228.exe",
          L"http://x/PAF_FULL.dat", L"http://x/..\\UPDATE_F_20260228.zip", L"http://x/%2e%2e%5cUPDATE_F_20260228.zip",
          L"http://x/update_f_20260228.zip", L"ftp://x/UPDATE_F_20260228.zip", L"file:///UPDATE_F_20260228.zip",
          L"UPDATE_F_20260228.zip", L"http://x/get?file=UPDATE_F_20260228.zip"}) {
        EXPECT_EQ(PackageFileName(address), L"") << support::ToUtf8(address);
    }
}

TEST(PackageDate, KnowsTheCalendar) {
    for (const wchar_t* date : {L"20260131", L"20240229", L"20000229", L"19000228", L"20261231"}) {
        EXPECT_TRUE(localdata::IsPackageDate(date)) << support::ToUtf8(date);
    }
    for (const wchar_t* date : {L"", L"2026013", L"202601311", L"20260132", L"20230229", L"19000229", L"20260001",
                                L"20261301", L"20260100", L"2026-1-1", L"20260431"}) {
        EXPECT_FALSE(localdata::IsPackageDate(date)) << support::ToUtf8(date);
    }
    EXPECT_EQ(localdata::DisplayDate(L"20260131"), L"31 Jan 2026");
    EXPECT_EQ(localdata::DisplayDate(L"20251209"), L"09 Dec 2025");
    EXPECT_EQ(localdata::DisplayDate(L"soon"), L"soon");
    EXPECT_EQ(localdata::DisplayDate(L""), L"");
}

} // namespace
} // namespace quorvex::testing
