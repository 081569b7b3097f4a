#include "jet_support.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <memory>

namespace jet {
namespace {

using namespace testing;

constexpr char kField = '\x01';
constexpr char kRecord = '\x02';

/// A table's rows as the program mdb-export writes them; fields of text or number.
std::vector<std::vector<std::string>> Export(const std::filesystem::path& path, const std::string& table) {
    const std::string command = "mdb-export -H -Q -d '\x01' -R '\x02' '" + path.string() + "' '" + table + "'";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::vector<std::vector<std::string>> rows;
    std::vector<std::string> row(1);
    for (int c = std::fgetc(pipe.get()); c != EOF; c = std::fgetc(pipe.get())) {
        if (c == kRecord) {
            rows.push_back(row);
            row.assign(1, "");
        } else if (c == kField) {
            row.emplace_back();
        } else {
            row.back() += static_cast<char>(c);
        }
    }
    return rows;
}

void CompareWithExport(const std::filesystem::path& path, const std::string& name) {
    Database db = Database::Open(path, kPassword);
    const Table table = db.OpenTable(Wide(name));
    const TableDef& def = table.definition();
    // Its order of moved rows is another one, so rows are matched by their first column.
    std::map<std::string, std::vector<std::string>> exported;
    for (const auto& row : Export(path, name)) EXPECT_TRUE(exported.emplace(row[0], row).second) << row[0];
    Cursor cursor = table.Rows();
    std::size_t count = 0;
    while (cursor.Next()) {
        const std::string key = Show(cursor.Current().Get(0));
        ASSERT_TRUE(exported.contains(key)) << key;
        const std::vector<std::string>& row = exported[key];
        ASSERT_EQ(row.size(), def.columns.size());
        for (std::size_t k = 0; k < def.columns.size(); ++k) {
            const Value value = cursor.Current().Get(k);
            if (const auto* number = std::get_if<double>(&value)) {
                EXPECT_NEAR(std::stod(row[k]), *number, 1e-9) << key;
            } else {
                EXPECT_EQ(row[k], IsNull(value) ? "" : Show(value)) << key;
            }
        }
        ++count;
    }
    EXPECT_EQ(count, exported.size());
    EXPECT_GT(count, 0U);
}

class ExportTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (std::system("mdb-export --version > /dev/null 2>&1") != 0) {
            GTEST_SKIP() << "mdb-export (Debian package mdbtools) is not installed";
        }
    }
};

TEST_F(ExportTest, SampleFilesReadAsAnIndependentReaderReadsThem) {
    CompareWithExport(Sample("PAF_FULL.dat"), "PAF_FULLAddress");
    CompareWithExport(Sample("PAF_THOURGHFARE.dat"), "PAF_StreetAddress");
    CompareWithExport(Sample("PAF_POSTZON.dat"), "PAF_PostZon");
    CompareWithExport(Sample("PAF_POSTZON.dat"), "Version");
}

TEST_F(ExportTest, WrittenFilesAreReadByAnIndependentReader) {
    Folder folder;
    const auto path = folder / "written.dat";
    {
        Database db = Database::Create(path, kPassword);
        TableSpec wanted{u"T",
                         {{.name = u"K", .length = 10},
                          {.name = u"M", .type = ColumnType::kMemo},
                          {.name = u"D", .type = ColumnType::kDouble},
                          {.name = u"N", .type = ColumnType::kLong}},
                         {{.name = u"PrimaryKey", .columns = {u"K"}, .primary = true}}};
        Table table = db.CreateTable(wanted);
        db.Begin();
        for (int i = 0; i < 500; ++i) {
            table.Insert({{Assignment{0, Wide(std::to_string(i))},
                           Assignment{1, std::u16string(static_cast<std::size_t>(i), u'm')}, Assignment{2, i / 8.0},
                           Assignment{3, i - 250}}});
        }
        Cursor cursor = table.Rows();
        for (std::size_t i = 0; cursor.Next(); ++i) {
            // Longer memos, moved rows, freed rows.
            if (i % 5 == 0) table.Update(cursor.Current().id(), {{Assignment{1, std::u16string(i * 20, u'\u0107')}}});
            if (i % 7 == 0) table.Delete(cursor.Current().id());
        }
    }
    CompareWithExport(path, "T");
}

} // namespace
} // namespace jet
