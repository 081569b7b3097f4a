// Web mode and local mode give the same answers from the same data. They differ by rule in these points only:
// - a house behind a comma filters the list in local mode; the service is asked for the whole postcode,
// - the postcode nearest to a point (GetPostZonAddressLongLat) is found in local data only,
// - what the service says beside its answers (credits, messages, list version, the reason of a refusal) has no
//   counterpart in local data,
// - a web list leaves the identifier of its first line in Address_Id, as every reply's elements are read.
#include "modes/mode_fixture.h"

#include "testing/truth.h"

namespace quorvex::testing {
namespace {

using SameAnswersTest = ModeTest;

struct List {
    bool found = false;
    bool confirmed = false;
    long count = 0;
    std::vector<std::wstring> lines;
    bool operator==(const List&) const = default;
};

List Search(_Quorvex& object, const std::wstring& postcode) {
    List list;
    VARIANT_BOOL found = VARIANT_FALSE, confirmed = VARIANT_FALSE;
    EXPECT_EQ(object.GetFullAddressToList(Text(postcode).Ref(), &found), S_OK);
    object.get_General_confirm(&confirmed);
    object.get_RecordCount(&list.count);
    list.found = found != VARIANT_FALSE;
    list.confirmed = confirmed != VARIANT_FALSE;
    for (Text line; object.GetFullAddressLineForSelection(line.Out()) == S_OK && SysStringLen(line) > 0;) {
        list.lines.push_back(line.Str());
    }
    return list;
}

TEST_F(SameAnswersTest, EveryPostcodesLinesAndRecords) {
    int postcodes = 0, records = 0;
    for (const TsvRow& row : ReadTsv(DataFolder(L"sample") + L"\\truth\\postcodes.tsv")) {
        const std::wstring& postcode = row[0];
        const List web = Search(Web(), postcode);
        const List local = Search(Local(), postcode);
        EXPECT_TRUE(web == local) << postcode << ": " << web.lines.size() << " and " << local.lines.size();
        ++postcodes;
        for (long i = 0; i < static_cast<long>(web.lines.size()); ++i) {
            VARIANT_BOOL webFound = VARIANT_FALSE, localFound = VARIANT_FALSE;
            Web().GetFullAddressRecord(&i, &webFound);
            Local().GetFullAddressRecord(&i, &localFound);
            EXPECT_EQ(webFound, localFound) << postcode << " " << i;
            EXPECT_EQ(ReadAll(Web(), L"Address_"), ReadAll(Local(), L"Address_")) << postcode << " " << i;
            if (webFound == VARIANT_TRUE) ++records;
        }
    }
    EXPECT_GT(postcodes, 600);
    EXPECT_GT(records, 4500);
}

TEST_F(SameAnswersTest, EveryStreetAndPlace) {
    Web().SetHomePostCode(Text(L"AB1 0PA").Ref());
    Local().SetHomePostCode(Text(L"AB1 0PA").Ref());
    int streets = 0, records = 0, distances = 0;
    for (const TsvRow& row : ReadTsv(DataFolder(L"sample") + L"\\truth\\postcodes.tsv")) {
        VARIANT_BOOL web = VARIANT_FALSE, local = VARIANT_FALSE;
        Web().GetThoroughfareAddressRecord(Text(row[0]).Ref(), &web);
        Local().GetThoroughfareAddressRecord(Text(row[0]).Ref(), &local);
        EXPECT_EQ(web, local) << row[0];
        if (web == VARIANT_TRUE) {
            EXPECT_EQ(ReadAll(Web(), L"Address_"), ReadAll(Local(), L"Address_")) << row[0];
            ++streets;
        }
        Web().GetPostZonAddressRecord(Text(row[0]).Ref(), &web);
        Local().GetPostZonAddressRecord(Text(row[0]).Ref(), &local);
        EXPECT_EQ(web, local) << row[0];
        if (web == VARIANT_TRUE) {
            Properties webPlace = ReadAll(Web(), L"PostZon_"), localPlace = ReadAll(Local(), L"PostZon_");
            // Two computers' sines and cosines differ in the last digits of a distance.
            const double distance = std::stod(webPlace[L"PostZon_DistanceToHomePostcode"]);
            EXPECT_NEAR(distance, std::stod(localPlace[L"PostZon_DistanceToHomePostcode"]), 1e-6) << row[0];
            localPlace[L"PostZon_DistanceToHomePostcode"] = webPlace[L"PostZon_DistanceToHomePostcode"];
            EXPECT_EQ(webPlace, localPlace) << row[0];
            if (distance != 0) ++distances;
            ++records;
        }
    }
    EXPECT_GT(streets, 500);
    EXPECT_GT(records, 500);
    EXPECT_GT(distances, 400);
}

TEST_F(SameAnswersTest, TheRulesByWhichTheyDiffer) {
    const List whole = Search(Web(), L"AB1 9AA");
    EXPECT_EQ(Search(Web(), L"AB1 9AA, 112").lines, whole.lines);
    EXPECT_LT(Search(Local(), L"AB1 9AA, 112").lines.size(), whole.lines.size());

    Text postcode;
    EXPECT_EQ(Web().GetPostZonAddressLongLat(-2.133233, 57.181792, nullptr, postcode.Out()), S_OK);
    EXPECT_EQ(postcode.Str(), L"");
    EXPECT_EQ(Local().GetPostZonAddressLongLat(-2.133233, 57.181792, nullptr, postcode.Out()), S_OK);
    EXPECT_EQ(postcode.Str(), L"AB1 0DF");
}

TEST_F(SameAnswersTest, TheTestPostcodeAndTheNearestList) {
    EXPECT_TRUE(Search(Web(), L"ZZ99") == Search(Local(), L"ZZ99"));
    for (_Quorvex* object : {&Web(), &Local()}) {
        VARIANT_BOOL found = VARIANT_FALSE;
        EXPECT_EQ(object->GetFullAddressRecordByAddressID(Text(L"ZZ99_7_F").Ref(), &found), S_OK);
        EXPECT_EQ(found, VARIANT_TRUE);
        EXPECT_EQ(Get(object, L"Address_Line1").result.Str(), L"7 Victoria Rd");
        double km = 40, longitude = 0, latitude = 0, box = 0;
        ASSERT_EQ(object->Nearest_StartList(Text(L"AB1 0DF").Ref(), &km, &longitude, &latitude, &box, &found), S_OK);
        ASSERT_EQ(found, VARIANT_TRUE);
        EXPECT_EQ(longitude, -2.133233);
        EXPECT_EQ(latitude, 57.181792);
        EXPECT_NEAR(box, 0.364, 1e-12);
    }
}

} // namespace
} // namespace quorvex::testing
