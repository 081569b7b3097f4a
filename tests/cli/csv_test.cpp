#include "quorvex/csv.h"
#include "support/error.h"

#include <gtest/gtest.h>

#include <sstream>

namespace quorvex::cli {
namespace {

// All rows of a text, split; the header first.
std::vector<std::vector<std::string>> ReadAll(const std::string& text, std::size_t batchRows = 2) {
    std::istringstream input(text);
    CsvReader reader(input, 0, std::nullopt);
    std::vector<std::vector<std::string>> rows(1);
    if (!reader.ReadHeader(rows[0])) return {};
    for (CsvBatch batch; reader.Next(batch, batchRows);) {
        for (std::size_t i = 0; i < batch.rows.size(); ++i) {
            SplitCsvRow(batch.Row(i), reader.Format().separator, rows.emplace_back());
        }
    }
    return rows;
}

using Rows = std::vector<std::vector<std::string>>;

TEST(Csv, ReadsWhatSpreadsheetsWrite) {
    EXPECT_EQ(ReadAll(""), Rows());
    EXPECT_EQ(ReadAll("a,b"), (Rows{{"a", "b"}}));
    EXPECT_EQ(ReadAll("a,b\r\n1,2\r\n"), (Rows{{"a", "b"}, {"1", "2"}}));
    EXPECT_EQ(ReadAll("a;b\n1;2,5"), (Rows{{"a", "b"}, {"1", "2,5"}}));
    EXPECT_EQ(ReadAll("a\tb\n\t"), (Rows{{"a", "b"}, {"", ""}}));
    EXPECT_EQ(ReadAll("\xEF\xBB\xBF\"a,1\",b\n1,2\n3,4\n5,6\n"),
              (Rows{{"a,1", "b"}, {"1", "2"}, {"3", "4"}, {"5", "6"}}));
    EXPECT_EQ(ReadAll("a,b\n\"1 \"\"x\"\"\",\"two\r\nlines\"\n"), (Rows{{"a", "b"}, {"1 \"x\"", "two\r\nlines"}}));
    EXPECT_EQ(ReadAll("a,b\n5\" pipe,\"\"\n6\"\",x\n"), (Rows{{"a", "b"}, {"5\" pipe", ""}, {"6\"\"", "x"}}));
    EXPECT_EQ(ReadAll("a,b\r1,2\r\r3,4"), (Rows{{"a", "b"}, {"1", "2"}, {""}, {"3", "4"}}));
}

TEST(Csv, RowsAreFoundWhereverTheBlocksOfTheFileEnd) {
    // Quotes, line breaks and CR LF fall on every place around the first block's end.
    for (std::size_t shift = 0; shift < 24; ++shift) {
        std::string text = "a,b\r\n" + std::string((1U << 20) - 20 + shift, 'x') + ",\"q\"\"\r\nz\"\r\n1,2\r\n";
        const Rows rows = ReadAll(text, 1);
        ASSERT_EQ(rows.size(), 3U) << shift;
        EXPECT_EQ(rows[1][1], "q\"\r\nz");
        EXPECT_EQ(rows[2], (std::vector<std::string>{"1", "2"}));
    }
}

TEST(Csv, TellsTheEncoding) {
    const auto utf8 = [](const std::string& text) {
        std::istringstream input(text);
        return CsvReader(input, 0, std::nullopt).Format().utf8;
    };
    EXPECT_TRUE(utf8("a,b\n"));
    EXPECT_TRUE(utf8("caf\xC3\xA9,b\n"));
    EXPECT_FALSE(utf8("caf\xE9,b\n"));
    // A letter of two bytes that the first block's end cuts in two.
    EXPECT_TRUE(utf8(std::string((1U << 20) - 1, 'x') + "\xC3\xA9"));
    EXPECT_THROW(utf8(std::string("\xFF\xFE\x61\0", 4)), support::Error);
}

TEST(Csv, SaysThatAQuoteIsNeverClosed) {
    std::istringstream input("a,b\n1,\"2\n3,4\n");
    CsvReader reader(input, 0, std::nullopt);
    std::vector<std::string> names;
    reader.ReadHeader(names);
    CsvBatch batch;
    ASSERT_TRUE(reader.Next(batch, 10));
    EXPECT_EQ(batch.rows.size(), 1U);
    EXPECT_TRUE(batch.unclosedQuote);

    std::istringstream endless("a,b\n\"" + std::string(CsvReader::kLongestRow + 1, 'x'));
    CsvReader other(endless, 0, std::nullopt);
    other.ReadHeader(names);
    EXPECT_THROW(other.Next(batch, 10), support::Error);
}

TEST(Csv, WrittenFieldsAreReadBack) {
    for (const std::string field : {"", "plain", "a,b", "say \"x\"", "two\nlines", "\""}) {
        std::string row;
        AppendCsvField(row, field, ',');
        std::vector<std::string> fields;
        SplitCsvRow(row, ',', fields);
        EXPECT_EQ(fields, std::vector<std::string>{field});
    }
}

} // namespace
} // namespace quorvex::cli
