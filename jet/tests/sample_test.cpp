#include "catalog.h"
#include "jet_support.h"

#include "format/sort_key.h"
#include "format/text_codec.h"
#include "tables/index_scan.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace jet {
namespace {

using namespace testing;

constexpr const char* kFiles[] = {"PAF_FULL.dat", "PAF_THOURGHFARE.dat", "PAF_POSTZON.dat"};

/// Plain text from the stored, scrambled one.
class Substitution {
  public:
    Substitution() {
        const Bytes bytes = ReadBytes(Sample("PAF_SUBSTITUTION.txt"));
        const std::u16string text = FromUtf8(std::string(bytes.begin(), bytes.end()));
        for (std::size_t i = 0; i + 2 < text.size(); i += 3) map_[text[i]] = text[i + 1];
    }
    std::u16string Plain(std::u16string text) const {
        for (char16_t& c : text) {
            const char16_t upper = c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
            const auto found = map_.find(upper);
            c = found == map_.end() ? upper : found->second;
        }
        return text;
    }

  private:
    std::map<char16_t, char16_t> map_;
};

void CompareAddresses(const char* file, const char* table, const char* truth) {
    const Substitution substitution;
    Database db = Database::Open(Sample(file), kPassword);
    std::map<std::string, std::pair<std::string, std::string>> found;
    Cursor cursor = db.OpenTable(Wide(table)).Rows();
    while (cursor.Next()) {
        const Value address = cursor.Current().Get(1);
        const auto* text = std::get_if<std::u16string>(&address);
        const auto [at, added] =
            found.emplace(Show(cursor.Current().Get(0)),
                          std::pair(Show(cursor.Current().Get(2)), text ? ToUtf8(substitution.Plain(*text)) : "\\N"));
        EXPECT_TRUE(added) << at->first;
    }
    const auto rows = ReadTruth(truth);
    EXPECT_EQ(found.size(), rows.size());
    for (const auto& row : rows) {
        ASSERT_TRUE(found.contains(row[0])) << row[0];
        EXPECT_EQ(found[row[0]].first, row[1]) << row[0];
        EXPECT_EQ(found[row[0]].second, row[2]) << row[0];
    }
}

TEST(SampleTest, AddressFilesHoldTheirTruthRowByRow) {
    CompareAddresses("PAF_FULL.dat", "paf_fulladdress", "rows_full.tsv");
    CompareAddresses("PAF_THOURGHFARE.dat", "PAF_StreetAddress", "rows_street.tsv");
}

TEST(SampleTest, PostZonHoldsItsTruthRowByRow) {
    Database db = Database::Open(Sample("PAF_POSTZON.dat"), kPassword);
    const auto truth = ReadTruth("postzon.tsv");
    std::map<std::string, std::vector<std::string>> found;
    Cursor cursor = db.Select(u"SELECT * FROM PAF_PostZon");
    while (cursor.Next()) {
        std::vector<std::string> row;
        for (const Value& value : Values(cursor.Current(), cursor.definition())) {
            row.push_back(IsNull(value) ? "" : Show(value));
        }
        found[row[0]] = row;
    }
    EXPECT_EQ(found.size(), truth.size());
    for (const auto& row : truth) {
        ASSERT_TRUE(found.contains(row[0])) << row[0];
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string& name = ToUtf8(cursor.definition().columns[i].name);
            if (name == "PZ_Lat" || name == "PZ_Long") {
                ASSERT_EQ(found[row[0]][i].empty(), row[i].empty()) << row[0];
                if (row[i].empty()) continue;
                EXPECT_EQ(std::stod(found[row[0]][i]), std::stod(row[i])) << row[0];
            } else {
                EXPECT_EQ(found[row[0]][i], row[i]) << row[0] << " " << name;
            }
        }
    }
}

TEST(SampleTest, EveryKeyIsFoundThroughItsIndexAndNoDeletedOneIs) {
    std::size_t most = 0;
    for (const auto& row : ReadTruth("rows_full.tsv")) {
        Database db = Database::Open(Sample("PAF_FULL.dat"), kPassword);
        Cursor cursor = db.Select(u"SELECT * From [PAF_FULLAddress] WHERE [FT_Postcode]='" + FromUtf8(row[0]) + u"';");
        ASSERT_TRUE(cursor.usesIndex());
        ASSERT_TRUE(cursor.Next()) << row[0];
        EXPECT_EQ(Show(cursor.Current().Get(0)), row[0]);
        cursor.Current().Get(1);
        EXPECT_FALSE(cursor.Next());
        // The longest memo is stored over several pages of its own.
        if (row[2].size() < 4000) most = std::max(most, static_cast<std::size_t>(db.PagesRead()));
    }
    EXPECT_LE(most, 12U);
    const std::map<std::string, std::pair<const char*, const char*>> places = {
        {"full", {"PAF_FULL.dat", "PAF_FULLAddress"}},
        {"street", {"PAF_THOURGHFARE.dat", "PAF_StreetAddress"}},
        {"postzon", {"PAF_POSTZON.dat", "PAF_PostZon"}}};
    for (const auto& row : ReadTruth("deleted.tsv")) {
        for (const auto& [kind, place] : places) {
            if (row[1].find(kind) == std::string::npos) continue;
            Database db = Database::Open(Sample(place.first), kPassword);
            const std::u16string column = kind == "postzon" ? u"PZ_Postcode" : u"FT_Postcode";
            Cursor cursor = db.Select(u"SELECT * FROM " + Wide(place.second) + u" WHERE (" + column + u"='" +
                                      FromUtf8(row[0]) + u"')");
            EXPECT_FALSE(cursor.Next()) << row[0] << " in " << kind;
        }
    }
}

TEST(SampleTest, EveryStoredIndexEntryEqualsTheKeyMadeFromItsRow) {
    std::size_t entries = 0;
    for (const char* file : kFiles) {
        Database db = Database::Open(Sample(file), kPassword);
        for (const auto& [name, page] : Catalog(Insides::PagerOf(db)).AllTables()) {
            const Table table = db.OpenTable(name);
            const TableDef& def = table.definition();
            ASSERT_EQ(def.page, page);
            for (const Index& index : def.indexes) {
                IndexScan scan(*Insides::PagerOf(db), def.page, index.root, {{}, kBeforeAllRows});
                while (scan.Next()) {
                    const Row row = table.Fetch(scan.Row());
                    Bytes key;
                    for (const IndexColumn& part : index.columns) {
                        AppendKey(key, def.columns[part.column], row.Get(part.column), part.ascending);
                    }
                    ASSERT_EQ(scan.Key(), key) << file << " " << ToUtf8(name) << " " << ToUtf8(index.name);
                    ++entries;
                }
            }
        }
    }
    EXPECT_GT(entries, 3000U);
}

TEST(SampleTest, KeysOfKnownValuesAreTheKnownBytes) {
    const auto hex = [](ColumnType type, const Value& value, bool ascending = true) {
        Column column;
        column.type = type;
        Bytes key;
        AppendKey(key, column, value, ascending);
        std::string text;
        for (const Byte byte : key) {
            text += "0123456789ABCDEF"[byte >> 4];
            text += "0123456789ABCDEF"[byte & 15];
        }
        return text;
    };
    const auto text = [&](std::u16string value, bool ascending = true) {
        return hex(ColumnType::kText, std::move(value), ascending);
    };
    EXPECT_EQ(hex(ColumnType::kLong, -1), "7F7FFFFFFF");
    EXPECT_EQ(hex(ColumnType::kLong, 1, false), "807FFFFFFE");
    EXPECT_EQ(hex(ColumnType::kDouble, -1.5), "7F4007FFFFFFFFFFFF");
    EXPECT_EQ(hex(ColumnType::kDouble, 51.501364, false), "803FB63FD34DF04DDA");
    EXPECT_EQ(hex(ColumnType::kDouble, -0.0), hex(ColumnType::kDouble, 0.0));
    EXPECT_EQ(hex(ColumnType::kText, Value()), "00");
    EXPECT_EQ(text(u""), "7F0100");
    EXPECT_EQ(text(u"Ab 1"), "7F4A4C07380100");
    EXPECT_EQ(text(u"Ab 1", false), "80B5B3F8C7FEFF00");
    EXPECT_EQ(text(u"O'Brien"), "7F644C6959516201010101800B068000");
    EXPECT_EQ(text(u"O'Brien", false), "809BB396A6AE9DFEFEFEFE7FF4F97FFF00");
    EXPECT_EQ(text(u"co-op"), "7F4D64646601010101800F068200");
    EXPECT_EQ(text(u"Z\u00FCrich"), "7F786F69594D5701021300");
    EXPECT_EQ(text(u"\u00E4\u00E4kk\u00F6si\u00E4"), "7F4A4A5C5C646B594A01131302021302021300");
    EXPECT_EQ(text(u"5-7 St. John's"), "7F4044076B6D1C075B6457626B01010101800B0682803306800"
                                       "0");
}

TEST(SampleTest, PackageOfAnotherShapeIsRead) {
    Database db = Database::Open(Sample("PAF_THOURGHFARE.dat"), kPassword);
    EXPECT_EQ(db.TableNames().size(), 2U);
    Cursor version = db.Select(u"SELECT * FROM [Version] WHERE [ID]=2");
    ASSERT_TRUE(version.Next());
    EXPECT_EQ(Show(version.Current().Get(1)), "20251231");
    EXPECT_EQ(db.OpenTable(u"PAF_STREETADDRESS").CountRows(), 612U);
}

} // namespace
} // namespace jet
