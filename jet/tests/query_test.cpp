#include "jet_support.h"

#include "format/text_codec.h"
#include "jet/memory_storage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace jet {
namespace {

using namespace testing;

TEST(QueryTest, FormsInUseAreRead) {
    const Query box = ParseQuery(
        u"SELECT PAF_PostZon.* FROM PAF_PostZon WHERE (((PZ_Long)>-0.1) and ((PZ_Long)<1E-2) and ((PZ_Lat)>51) and "
        u"((PZ_Lat)<+.5));");
    ASSERT_EQ(box.conditions.size(), 4U);
    EXPECT_EQ(std::get<double>(box.conditions[0].literal), -0.1);
    EXPECT_EQ(std::get<double>(box.conditions[1].literal), 0.01);
    EXPECT_EQ(box.conditions[1].op, CompareOp::kLess);
    EXPECT_EQ(std::get<double>(box.conditions[3].literal), 0.5);
    const Query key = ParseQuery(u"select *\tFROM [PAF_PostZon]  WHERE (PZ_Postcode='O''Brien');");
    EXPECT_EQ(std::get<std::u16string>(key.conditions[0].literal), u"O'Brien");
    EXPECT_EQ(ParseQuery(u"SELECT * From Version").table, u"Version");
    EXPECT_EQ(ParseQuery(u"SELECT * From [T x] WHERE [T x].[c d] <> ''").conditions[0].table, u"T x");
}

TEST(QueryTest, AnythingElseIsAnErrorThatNamesThePlace) {
    const auto place = [](std::u16string_view text) {
        try {
            ParseQuery(text);
        } catch (const Error& error) {
            const std::string what = error.what();
            EXPECT_EQ(error.code(), ErrorCode::kQuerySyntax);
            return std::stoi(what.substr(what.rfind(' ') + 1));
        }
        return 0;
    };
    EXPECT_EQ(place(u"SELECT * FROM T WHERE K='O'Brien';"), 28);
    EXPECT_EQ(place(u"SELECT * FROM T WHERE K='O"), 25);
    EXPECT_EQ(place(u"SELECT a FROM T"), 10);
    EXPECT_EQ(place(u"SELECT * FROM T, U"), 16);
    EXPECT_EQ(place(u"SELECT * FROM T WHERE a=1 OR b=2"), 27);
    EXPECT_EQ(place(u"SELECT * FROM T WHERE a=1,5"), 26);
    EXPECT_EQ(place(u"SELECT * FROM T WHERE a=b"), 25);
    EXPECT_EQ(place(u"SELECT * FROM T WHERE (a=1"), 27);
    EXPECT_EQ(place(u"SELECT * FROM T WHERE a=1.2.3"), 25);
    EXPECT_EQ(place(u"SELECT * FROM T; DROP"), 18);
    EXPECT_EQ(place(u"SELECT U.* FROM T"), 8);
    EXPECT_EQ(place(u""), 1);
    EXPECT_GT(place(u"SELECT * FROM T WHERE " + std::u16string(1000, u'(')), 0);
}

TEST(QueryTest, WrongNamesAndTypesAreRefused) {
    Database db = Database::Open(Sample("PAF_FULL.dat"), kPassword);
    const auto code = [&](std::u16string_view text) { return CodeOf([&] { db.Select(text); }); };
    EXPECT_EQ(code(u"SELECT * FROM Nothing"), ErrorCode::kNoSuchTable);
    EXPECT_EQ(code(u"SELECT * FROM MSysNothing\u3042"), ErrorCode::kNoSuchTable);
    EXPECT_EQ(code(u"SELECT * FROM Version WHERE Nothing=1"), ErrorCode::kNoSuchColumn);
    EXPECT_EQ(code(u"SELECT * FROM Version WHERE PAF.ID=1"), ErrorCode::kNoSuchColumn);
    EXPECT_EQ(code(u"SELECT * FROM PAF_FULLAddress WHERE FT_Postcode=5"), ErrorCode::kTypeMismatch);
    EXPECT_EQ(code(u"SELECT * FROM Version WHERE ID='1'"), ErrorCode::kTypeMismatch);
}

TEST(QueryTest, TextIsComparedWithoutCaseAndTrailingBlanks) {
    Database db = Database::Open(Sample("PAF_FULL.dat"), kPassword);
    for (const char16_t* key : {u"cr2 9aa", u"CR2 9AA  ", u"Cr2 9aA"}) {
        Cursor cursor = db.Select(u"SELECT * FROM PAF_FULLAddress WHERE FT_Postcode='" + std::u16string(key) + u"'");
        EXPECT_TRUE(cursor.Next());
        EXPECT_FALSE(cursor.Next());
    }
    EXPECT_FALSE(db.Select(u"SELECT * FROM PAF_FULLAddress WHERE FT_Postcode='CR29AA'").Next());
    EXPECT_FALSE(db.Select(u"SELECT * FROM PAF_FULLAddress WHERE FT_Postcode='\u3042'").Next());
    // Without an index, over every row, to the same answer.
    Cursor scan = db.Select(u"SELECT * FROM PAF_FULLAddress WHERE FT_Update='20260131' AND FT_Postcode>='cr2 9aa' AND "
                            u"FT_Postcode<='CR2 9AA'");
    EXPECT_FALSE(scan.usesIndex());
    EXPECT_TRUE(scan.Next());
    EXPECT_FALSE(scan.Next());
}

TEST(QueryTest, RangesByIndexGiveWhatAScanGivesInIndexOrder) {
    Database db = Database::Open(Sample("PAF_POSTZON.dat"), kPassword);
    std::mt19937 random(3);
    std::size_t found = 0;
    const Table table = db.OpenTable(u"PAF_PostZon");
    const std::size_t lat = *table.definition().FindColumn(u"PZ_Lat");
    const std::size_t lon = *table.definition().FindColumn(u"PZ_Long");
    for (int round = 0; round < 60; ++round) {
        const double west = -6 + static_cast<double>(random() % 6000) / 1000;
        const double south = 50 + static_cast<double>(random() % 7000) / 1000;
        const double size = round % 2 == 0 ? 0.2 : 3;
        const auto number = [](double value) { return Wide(Show(value)); };
        Cursor cursor = db.Select(u"SELECT PAF_PostZon.* FROM PAF_PostZon WHERE (((PZ_Long)>" + number(west) +
                                  u") and ((PZ_Long)<=" + number(west + size) + u") and ((PZ_Lat)>" + number(south) +
                                  u") and ((PZ_Lat)<" + number(south + size) + u"));");
        EXPECT_TRUE(cursor.usesIndex());
        std::vector<RowId> byIndex;
        double last = -1000;
        while (cursor.Next()) {
            const double here = std::get<double>(cursor.Current().Get(lon));
            EXPECT_GE(here, last);
            last = here;
            byIndex.push_back(cursor.Current().id());
        }
        std::vector<RowId> byScan;
        Cursor all = table.Rows();
        while (all.Next()) {
            const Value x = all.Current().Get(lon);
            const Value y = all.Current().Get(lat);
            if (IsNull(x) || IsNull(y)) continue;
            const double a = std::get<double>(x);
            const double b = std::get<double>(y);
            if (a > west && a <= west + size && b > south && b < south + size) byScan.push_back(all.Current().id());
        }
        std::sort(byIndex.begin(), byIndex.end());
        EXPECT_EQ(byIndex, byScan);
        found += byScan.size();
    }
    EXPECT_GT(found, 100U);
}

TEST(QueryTest, FindGivesTheFirstMatchInTableOrder) {
    MemoryStorage storage;
    OpenOptions options;
    options.storage = &storage;
    Database db = Database::Create("db", u"", options);
    TableSpec wanted{u"T", {{.name = u"K", .length = 10}}, {{.name = u"K", .columns = {u"K"}}}};
    Table table = db.CreateTable(wanted);
    std::vector<RowId> ids;
    for (const char16_t* key : {u"b", u"A", u"B ", u"a"}) ids.push_back(table.Insert({{Assignment{0, key}}}));
    EXPECT_EQ(table.FindFirst(u"[K]='B'"), ids[0]);
    EXPECT_EQ(table.FindFirst(u"K='a'"), ids[1]);
    EXPECT_EQ(table.FindFirst(u"K='c'"), std::nullopt);
    table.Delete(ids[1]);
    EXPECT_EQ(table.FindFirst(u"K='a'"), ids[3]);
}

TEST(TextTest, StoredFormsAreRead) {
    const auto decode = [](Bytes bytes) { return ToUtf8(DecodeText(bytes)); };
    EXPECT_EQ(decode({0xFF, 0xFE, 'O', 'n', 'e'}), "One");
    EXPECT_EQ(decode({'a', 0}), "a");
    EXPECT_EQ(decode({0xFF, 0xFE, 'a', 0, 0x07, 0x01, 0, 'b'}), "a\u0107b");
    EXPECT_EQ(decode({0xFF, 0xFE, 'a', 0, 0x07}), "a");
    EXPECT_EQ(decode({'a', 0, 'b'}), "a");
    EXPECT_EQ(EncodeText(u"One", true), (Bytes{0xFF, 0xFE, 'O', 'n', 'e'}));
    EXPECT_EQ(EncodeText(u"On", true).size(), 4U);
    EXPECT_EQ(EncodeText(std::u16string(1025, u'x'), true).size(), 2050U);
    EXPECT_EQ(EncodeText(u"\u0107aa", true).size(), 6U);
}

} // namespace
} // namespace jet
