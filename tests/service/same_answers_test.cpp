#include "database/jet/jet_provider.h"
#include "fixture.h"
#include "lookups/address_list.h"
#include "lookups/address_record.h"
#include "lookups/postzon.h"
#include "support/text.h"
#include "testing/fake_platform.h"
#include "testing/sample_data.h"
#include "testing/truth.h"

#include <set>

namespace quorvex::service {
namespace {

using quorvex::testing::FakePlatform;
using quorvex::testing::RecordOf;
using quorvex::testing::TsvRow;

std::vector<TsvRow> Truth(const wchar_t* file) {
    return quorvex::testing::ReadTsv(quorvex::testing::DataFolder(L"sample\\truth\\") + file);
}

// One lookup object in web mode over the service, one in local mode over the same folder.
class SameAnswers : public ServiceTest {
  protected:
    SameAnswers() {
        Begin();
        webPlatform_.onGetUrl = [this](const std::wstring& url) { return AsHost(url); };
        web.SetServiceURL(support::FromUtf8(Running().Address()));
        web.SetDataKey(L"anybody");
        localPlatform_.databases = &databases_;
        local.LMSetDataPath(quorvex::testing::DataFolder(L"sample"));
    }

    void ExpectSameRecord() { EXPECT_EQ(RecordOf(web), RecordOf(local)); }

    // The list as both objects hand it out, and every address of it; the number of lines.
    std::size_t ExpectSameList(const std::wstring& postcode) {
        SCOPED_TRACE(support::ToUtf8(postcode));
        EXPECT_EQ(lookups::GetFullAddressToList(web, postcode), lookups::GetFullAddressToList(local, postcode));
        EXPECT_EQ(web.RecordCount, local.RecordCount);
        for (std::size_t line = 0;; ++line) {
            const std::wstring text = lookups::GetFullAddressLineForSelection(web);
            EXPECT_EQ(text, lookups::GetFullAddressLineForSelection(local));
            EXPECT_EQ(web.AddressData.Identifier(line), local.AddressData.Identifier(line));
            if (text.empty()) return line;
        }
    }

    void ExpectSameRecordOf(const std::wstring& id) {
        SCOPED_TRACE(support::ToUtf8(id));
        const bool found = lookups::GetFullAddressRecordByAddressID(web, id);
        EXPECT_EQ(found, lookups::GetFullAddressRecordByAddressID(local, id));
        if (found) ExpectSameRecord();
    }

    bool ExpectSamePostZon(const std::wstring& key) {
        SCOPED_TRACE(support::ToUtf8(key));
        const bool found = lookups::GetPostZonAddressRecord(web, key);
        EXPECT_EQ(found, lookups::GetPostZonAddressRecord(local, key));
        if (found) ExpectSameRecord();
        return found;
    }

  private:
    FakePlatform webPlatform_;
    FakePlatform localPlatform_;
    database::JetProvider databases_;

  protected:
    object::Quorvex web{webPlatform_, webPlatform_};
    object::Quorvex local{localPlatform_, localPlatform_};
};

TEST_F(SameAnswers, EveryPostcodeOfTheSampleFolder) {
    web.SetHomePostCode(L"EC1A 9YA");
    local.SetHomePostCode(L"EC1A 9YA");
    std::size_t lines = 0;
    std::size_t places = 0;
    for (const TsvRow& row : Truth(L"postcodes.tsv")) {
        const std::wstring& typed = row[0];
        const std::size_t here = ExpectSameList(typed);
        lines += here;
        if (here > 0) ExpectSameRecordOf(typed + L"_1_F");
        if (here > 1) ExpectSameRecordOf(typed + L"_" + std::to_wstring(here) + L"_F");
        const bool street = lookups::GetThoroughfareAddressRecord(web, typed);
        EXPECT_EQ(street, lookups::GetThoroughfareAddressRecord(local, typed)) << support::ToUtf8(typed);
        if (street) ExpectSameRecord();
        places += ExpectSamePostZon(typed) ? 1U : 0U;
    }
    EXPECT_GT(lines, 3000U);
    EXPECT_GT(places, 500U);
}

TEST_F(SameAnswers, HouseFilters) {
    std::set<std::wstring> searches;
    for (const TsvRow& row : Truth(L"filter.tsv")) searches.insert(row[0] + L"," + row[1]);
    // The object in web mode sends the postcode half alone; the page, asked with both halves, filters as local mode
    // does.
    for (const std::wstring& search : searches) {
        ASSERT_TRUE(lookups::GetFullAddressToList(local, search));
        std::string target = "SearchForAddress.aspx?datakey=X&postcode=" + support::ToUtf8(search) + "&COM=1";
        EXPECT_EQ(ElementOf(target, L"recordcount"), std::to_wstring(local.RecordCount)) << target;
        EXPECT_EQ(support::ReplaceAll(ElementOf(target, L"addressdata"), L"&amp;", L"&"),
                  L"\r\n" + std::wstring(local.AddressData.Rest()));
    }
}

TEST_F(SameAnswers, TestPostcodeAndOddKeys) {
    EXPECT_EQ(ExpectSameList(L"zz99"), 14U);
    EXPECT_EQ(web.General_credits_display_text, L"Demo data");
    ExpectSameRecordOf(L"ZZ99_7_F");
    EXPECT_EQ(web.Address_Line1, L"7 Victoria Rd");
    EXPECT_EQ(web.General_credits_display_text, L"Test data");
    for (const wchar_t* id : {L"PE13 9AN_2_F", L"PE13 9AN_3_F", L"PE13 9AN_0_F", L"PE13 9AN_01_F", L"PE13 9AN", L"_1_F",
                              L"pe13 9an_1_F", L"O'ROURKE_1_F", L"\u0174_1_F"}) {
        ExpectSameRecordOf(id);
    }
    for (const wchar_t* postcode : {L"pe13 9an", L"PE13  9AN", L"XX99 9XX", L"LL77 9AA"}) ExpectSameList(postcode);
    for (const wchar_t* key : {L"TF44001178", L"XX00000000", L"-2.988|53.375", L"3.5|60.5", L"a|b", L"|||||||||"}) {
        ExpectSamePostZon(key);
    }
}

TEST_F(SameAnswers, NearestPostcodeOfAPoint) {
    for (const TsvRow& row : Truth(L"nearest.tsv")) {
        const std::wstring key = row[0] + L"|" + row[1];
        if (key.size() < 9) continue; // so short a key is a postcode
        EXPECT_EQ(ExpectSamePostZon(key), !row[2].empty());
        if (!row[2].empty()) {
            EXPECT_EQ(web.PostZon_postcode, row[2]);
        }
    }
}

} // namespace
} // namespace quorvex::service
