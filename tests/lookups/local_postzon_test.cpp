#include "lookups/distance.h"
#include "lookups/local_fixture.h"
#include "lookups/nearest.h"
#include "lookups/postzon.h"

namespace quorvex::lookups {
namespace {

using quorvex::testing::TsvRow;

class LocalPostZonTest : public quorvex::testing::LocalTest {
  protected:
    std::vector<std::wstring> Record() const {
        return {object.PostZon_postcode,     object.PostZon_IntroductionDate, object.PostZon_Gridrefeast,
                object.PostZon_Gridrefnorth, object.PostZon_County,           object.PostZon_District,
                object.PostZon_Ward,         object.PostZon_Usertype,         object.PostZon_Gridstatus,
                object.PostZon_Country,      object.PostZon_Wardstatus,       object.PostZon_NHS_code,
                object.PostZon_NHS_region};
    }
};

TEST_F(LocalPostZonTest, EveryRowByPostcodeAndGridReference) {
    int rows = 0;
    for (const TsvRow& row : Truth(L"postzon.tsv")) {
        ASSERT_TRUE(GetPostZonAddressRecord(object, row[0])) << support::ToUtf8(row[0]);
        EXPECT_EQ(Record(), std::vector<std::wstring>(row.begin(), row.begin() + 13)) << support::ToUtf8(row[0]);
        EXPECT_EQ(support::LeadingNumber(object.PostZon_Latitude_wgs84), support::LeadingNumber(row[13]));
        EXPECT_EQ(support::LeadingNumber(object.PostZon_Longitude_wgs84), support::LeadingNumber(row[14]));
        EXPECT_EQ(object.PostZon_OSreference, row[15]);
        EXPECT_EQ(object.PostZon_DistanceToHomePostcode, L"0");
        if (row[15].size() >= 9) {
            ASSERT_TRUE(GetPostZonAddressRecord(object, row[15])) << support::ToUtf8(row[15]);
            EXPECT_EQ(object.PostZon_OSreference, row[15]);
        }
        ++rows;
    }
    EXPECT_GT(rows, 590);
}

TEST_F(LocalPostZonTest, NearestRowToAPoint) {
    for (const TsvRow& row : Truth(L"nearest.tsv")) {
        const double longitude = support::ParseNumber(row[0]);
        const double latitude = support::ParseNumber(row[1]);
        EXPECT_EQ(GetPostZonAddressLongLat(object, longitude, latitude), row[2]);
        const bool found = GetPostZonAddressRecord(object, row[0] + L"|" + row[1]);
        EXPECT_EQ(found, !row[2].empty());
        if (!found) continue;
        EXPECT_EQ(object.PostZon_postcode, row[2]);
        const double kilometres =
            GetDistance(platform, latitude, longitude, support::ParseNumber(object.PostZon_Latitude_wgs84),
                        support::ParseNumber(object.PostZon_Longitude_wgs84));
        EXPECT_NEAR(kilometres, support::ParseNumber(row[3]), 0.0001);
    }
}

TEST_F(LocalPostZonTest, KeysByTheirForm) {
    EXPECT_FALSE(GetPostZonAddressRecord(object, L"AB12"));
    EXPECT_EQ(object.General_errormessage, L"Please specify Postcode");
    EXPECT_TRUE(GetPostZonAddressRecord(object, L"pe13 4pz"));
    EXPECT_FALSE(GetPostZonAddressRecord(object, L"PE13  4PZ")); // nine characters are a grid reference
    EXPECT_FALSE(GetPostZonAddressRecord(object, L"north|south"));
    EXPECT_NE(ErrorLog().find("Type mismatch'"), std::string::npos);
    EXPECT_TRUE(GetPostZonAddressRecord(object, L"  PE13 4PZ "));
    // A point may come with decimal commas.
    const std::wstring point = object.PostZon_Longitude_wgs84 + L"|" + object.PostZon_Latitude_wgs84;
    ASSERT_TRUE(GetPostZonAddressRecord(object, point));
    const std::wstring nearest = object.PostZon_postcode;
    ASSERT_TRUE(GetPostZonAddressRecord(object, support::ReplaceAll(point, L".", L",")));
    EXPECT_EQ(object.PostZon_postcode, nearest);
    EXPECT_FALSE(GetPostZonAddressRecord(object, L"O'HARE"));
    EXPECT_FALSE(object.General_confirm);
}

// Sums of two decimals carry noise in their last bits; rows on the bound must be outside for every point.
TEST_F(LocalPostZonTest, ARowExactlyOnTheBoundIsOutside) {
    for (int i = 0; i < 2000; ++i) {
        const double centre = support::ParseNumber(L"51." + std::to_wstring(100000 + i * 37));
        const double row = support::ParseNumber(L"51." + std::to_wstring(191000 + i * 37));
        EXPECT_FALSE(row < support::RoundedTo15Digits(centre + 0.091)) << i;
    }
}

TEST_F(LocalPostZonTest, DistanceFromHome) {
    object.SetHomePostCode(L"pe13 4pz");
    ASSERT_TRUE(GetPostZonAddressRecord(object, L"PE13 4PZ"));
    EXPECT_EQ(object.PostZon_DistanceToHomePostcode, L"0");
    const double latitude = support::ParseNumber(object.PostZon_Latitude_wgs84);
    const double longitude = support::ParseNumber(object.PostZon_Longitude_wgs84);
    ASSERT_TRUE(GetPostZonAddressRecord(object, L"M1 9YA"));
    EXPECT_EQ(support::ParseNumber(object.PostZon_DistanceToHomePostcode),
              GetDistance(platform, support::ParseNumber(object.PostZon_Latitude_wgs84),
                          support::ParseNumber(object.PostZon_Longitude_wgs84), latitude, longitude));
    object.SetHomePostCode(L"NO1 1NE");
    ASSERT_TRUE(GetPostZonAddressRecord(object, L"M1 9YA"));
    EXPECT_EQ(object.PostZon_DistanceToHomePostcode, L"0"); // an unknown home leaves the line out
    object.SetHomePostCode(L"M1 9YA");
    EXPECT_TRUE(GetPostZonAddressRecord(object, L"PE13 9YD")); // a place without a point
}

TEST(Distance, FormulaAndUnits) {
    EXPECT_NEAR(zDistance::Distance(51, 0, 52, 0, L'K'), 60 * 1.1515 * 1.609344, 1e-6);
    EXPECT_NEAR(zDistance::Distance(51, 0, 52, 0, L'n'), 60 * 1.1515 * 0.8684, 1e-6);
    EXPECT_NEAR(zDistance::Distance(51, 0, 52, 0, L'x'), 60 * 1.1515, 1e-6);
    EXPECT_EQ(zDistance::ArcCos(1), 0);
    EXPECT_EQ(zDistance::ArcCos(-1), 3.14159265358979);
    quorvex::testing::FakePlatform platform;
    for (double latitude = 49; latitude < 61; latitude += 0.0137) {
        EXPECT_EQ(GetDistance(platform, latitude, -2.1, latitude, -2.1), 0);
    }
}

class NearestListTest : public LocalPostZonTest {
  protected:
    double longitude = 0, latitude = 0, box = 0;
};

TEST_F(NearestListTest, RanksThePointsInRange) {
    ASSERT_TRUE(Nearest_StartList(object, L"PE13 4PZ", 100, longitude, latitude, box));
    EXPECT_DOUBLE_EQ(box, 0.91);
    for (int i = 1500; i > 0; --i) {
        EXPECT_TRUE(Nearest_AddToList(object, longitude, latitude + i * 0.0005, L"n" + std::to_wstring(i), L"", L"z"));
    }
    EXPECT_TRUE(Nearest_AddToList(object, longitude, latitude, L"home", L"b", L"c"));
    EXPECT_TRUE(Nearest_AddToList(object, longitude, latitude + 5, L"far", L"", L""));
    EXPECT_EQ(Nearest_GetNumberOfRecordsReturned(object), 1501);
    EXPECT_EQ(object.nearest.capacity, 2000);
    NearestRecord record;
    ASSERT_TRUE(Nearest_GetRecord(object, 1, record));
    EXPECT_EQ(record.text1 + record.text2 + record.text3, L"homebc");
    EXPECT_EQ(record.distance, 0);
    EXPECT_EQ(record.longitude, longitude);
    EXPECT_EQ(record.latitude, latitude);
    double previous = 0;
    for (int i = 1; i <= 1501; ++i) {
        ASSERT_TRUE(Nearest_GetRecord(object, i, record));
        EXPECT_GE(record.distance, previous);
        previous = record.distance;
    }
    EXPECT_EQ(Nearest_GetNumberOfRecordsReturned(object), 1501);
    EXPECT_FALSE(Nearest_GetRecord(object, 1502, record));
    ASSERT_TRUE(Nearest_GetRecord(object, 0, record));
    EXPECT_EQ(record.text1 + record.text2 + record.text3, L"");
    EXPECT_FALSE(Nearest_GetRecord(object, -1, record));
}

TEST_F(NearestListTest, PointsAddedAfterCountingAreKept) {
    ASSERT_TRUE(Nearest_StartList(object, L"PE13 4PZ", 100, longitude, latitude, box));
    std::vector<std::wstring> names;
    for (const int i : {3, 1, 4, 2}) {
        EXPECT_TRUE(Nearest_AddToList(object, longitude, latitude + i * 0.01, std::to_wstring(i), L"", L""));
        EXPECT_EQ(Nearest_GetNumberOfRecordsReturned(object), static_cast<std::int32_t>(names.size()) + 1);
        names.push_back(std::to_wstring(i));
    }
    std::sort(names.begin(), names.end());
    for (int i = 1; i <= 4; ++i) {
        NearestRecord record;
        ASSERT_TRUE(Nearest_GetRecord(object, i, record));
        EXPECT_EQ(record.text1, names[static_cast<std::size_t>(i) - 1]);
    }
}

TEST_F(NearestListTest, OutOfOrderCallsFailQuietly) {
    NearestRecord record;
    EXPECT_FALSE(Nearest_AddToList(object, 0, 0, L"", L"", L""));
    EXPECT_FALSE(Nearest_AddToList(object, 50, 50, L"", L"", L"")); // also a point that is out of reach
    EXPECT_EQ(Nearest_GetNumberOfRecordsReturned(object), 0);
    EXPECT_FALSE(Nearest_GetRecord(object, 0, record));
    ASSERT_TRUE(Nearest_StartList(object, L"PE13 4PZ", 5, longitude, latitude, box));
    Nearest_AddToList(object, longitude, latitude, L"kept", L"", L"");
    double otherLongitude = 7, otherLatitude = 7, otherBox = 7;
    EXPECT_FALSE(Nearest_StartList(object, L"NO1 1NE", 5, otherLongitude, otherLatitude, otherBox));
    EXPECT_EQ(otherLongitude, 7);
    EXPECT_EQ(Nearest_GetNumberOfRecordsReturned(object), 1); // the earlier list stays
    Nearest_EndList(object);
    EXPECT_EQ(object.nearest.entries.size(), 1U);
    EXPECT_EQ(object.nearest.count, 1);
}

} // namespace
} // namespace quorvex::lookups
